#include <cstdint>
#include <cstdio>
#include <memory>
#include <new>
#include <string>

#include "support/Memory.h"
#include "support/Threads.h"
#include "tool/StabilizerTool.h"
#include "toolkit/Application.h"
#include "ui/StabilizerForm.h"

// The exported names are the hosts' contract, leading underscore included; do not change.

namespace {

// What a version resource says elsewhere. An absent file version reads as "Unknown".
struct SVersionResource {
  const char* fileVersion;
  const char* legalCopyright;
  const char* legalTradeMarks;
  const char* companyName;
};
constexpr SVersionResource versionResource = {
    STAB_VERSION,
    "Copyright the Stabilize authors",
    "Stabilize",
    "The Stabilize authors",
};

constexpr const char* TOOL_NAME = "Stabilize";
constexpr const char* TOOL_NAMES[] = {TOOL_NAME, ""};

struct SLibrary {
  std::int32_t version[4] = {-1, -1, -1, -1};
  char* legalText = nullptr;
  char* trademarkText = nullptr;
  char* companyText = nullptr;
  CStabilizerTool* tool = nullptr;
  TApplication* savedApplication = nullptr;
};
constinit SLibrary library;

void readVersion() {
  const std::string text = *versionResource.fileVersion ? versionResource.fileVersion : "Unknown";
  std::int32_t* v = library.version;
  std::sscanf(text.c_str(), "%d.%d.%d.%d", &v[0], &v[1], &v[2], &v[3]);
  library.legalText = QTXstrdup(versionResource.legalCopyright);
  library.trademarkText = QTXstrdup(versionResource.legalTradeMarks);
  library.companyText = QTXstrdup(versionResource.companyName);
}

void freeText(char*& text) {
  QTXfree(text);
  text = nullptr;
}

__attribute__((constructor)) void onLoad() {
  library.savedApplication = Application();
  if (!library.legalText) readVersion();
}

// Runs before the library's static objects are destroyed and its code goes away. `toolShutdown` has
// ended the tool's threads; only their last instructions are waited for. A thread still at work
// could not be: the loader's lock, which is held here, is one that it may come to need.
__attribute__((destructor)) void onUnload() {
  BThreadWaitForAll();
  delete library.tool;
  library.tool = nullptr;
  if (library.savedApplication) SetApplication(library.savedApplication);
  freeText(library.legalText);
  freeText(library.companyText);
  freeText(library.trademarkText);
}

std::unique_ptr<IStabilizerWindow> makeWindow(CStabilizerTool& tool) {
  return std::make_unique<TStabilizerForm>(tool);
}

// The contract hands texts out as untyped pointers; the host must not write to them.
void* untyped(const void* resource) {
  return const_cast<void*>(resource);
}

}  // namespace

extern "C" {

/// "1.2.0.0"; the four numbers also go to `numbers` unless it is null.
std::string _QTX_PluginVersion(std::int32_t* numbers) {
  std::string text;
  for (int i = 0; i < 4; ++i) {
    if (numbers) numbers[i] = library.version[i];
    if (i > 0) text += '.';
    text += std::to_string(library.version[i]);
  }
  return text;
}

/// The one tool, once, for its exact name; else null. The library owns it until it is unloaded.
CToolObject* _Create(std::string name) {
  if (name != TOOL_NAME || library.tool) return nullptr;
  try {
    library.tool = new CStabilizerTool(name, makeWindow);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
  return library.tool;
}

std::int32_t _Properties() {
  return 1;
}

std::int32_t _WriteProperties(std::string, std::string) {
  return 1;
}

std::int32_t _ReadProperties(std::string, std::string) {
  return 1;
}

/// Texts stay the library's and are void once it is unloaded.
void* _Resource(std::int32_t number) {
  switch (number) {
    case 1: return untyped(TOOL_NAMES);
    case 2: return reinterpret_cast<void*>(std::intptr_t{1});
    case 3: return untyped(TOOL_NAME);
    case 4: return library.legalText;
    case 5: return library.trademarkText;
    case 6: return library.companyText;
    default: return nullptr;
  }
}

/// Message 1 hands over the host's application object; null changes nothing. 1: unknown message.
std::int32_t _SendTheMessage(std::int32_t message, void* data) {
  if (message != 1) return 1;
  if (!data) return 0;
  if (!library.savedApplication) library.savedApplication = Application();
  SetApplication(static_cast<TApplication*>(data));
  return 0;
}

}  // extern "C"
