#include "session/PluginLibrary.h"

#include <dlfcn.h>

#include <cstdlib>
#include <filesystem>
#include <vector>

namespace {

constexpr std::int32_t MESSAGE_APPLICATION = 1;
constexpr std::int32_t RESOURCE_LEGAL_TEXT = 4;

std::string loaderMessage() {
  const char* text = dlerror();
  return text ? text : "unknown reason";
}

}  // namespace

CPluginLibrary::CPluginLibrary(const std::string& path) : path_(path) {
  library_ = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (!library_) throw CPluginError("plug-in " + path + " cannot be loaded: " + loaderMessage());
  try {
    versionEntry_ = reinterpret_cast<decltype(versionEntry_)>(symbol("_QTX_PluginVersion"));
    createEntry_ = reinterpret_cast<decltype(createEntry_)>(symbol("_Create"));
    resourceEntry_ = reinterpret_cast<decltype(resourceEntry_)>(symbol("_Resource"));
    messageEntry_ = reinterpret_cast<decltype(messageEntry_)>(symbol("_SendTheMessage"));
    for (const char* name : {"_Properties", "_WriteProperties", "_ReadProperties"}) symbol(name);
  } catch (...) {
    dlclose(library_);
    throw;
  }
}

CPluginLibrary::~CPluginLibrary() {
  dlclose(library_);
}

void* CPluginLibrary::symbol(const char* name) const {
  dlerror();
  void* found = dlsym(library_, name);
  if (!found) throw CPluginError("plug-in " + path_ + " lacks the entry point " + name);
  return found;
}

std::string CPluginLibrary::version() const {
  return versionEntry_(nullptr);
}

std::string CPluginLibrary::legalText() const {
  const char* text = static_cast<const char*>(resourceEntry_(RESOURCE_LEGAL_TEXT));
  return text ? text : "";
}

void CPluginLibrary::handOverApplication(TApplication* application) {
  messageEntry_(MESSAGE_APPLICATION, application);
}

CToolObject* CPluginLibrary::createTool(const std::string& name) {
  CToolObject* tool = createEntry_(name);
  if (!tool) throw CPluginError("plug-in " + path_ + " makes no tool named \"" + name + "\"");
  return tool;
}

std::string CPluginLibrary::find(const std::string& name) {
  if (const char* chosen = std::getenv("STABILIZE_PLUGIN")) return chosen;
  std::error_code error;
  const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
  const std::filesystem::path root = program.parent_path().parent_path();
  const std::vector<std::filesystem::path> places = {root / "lib" / name,
                                                     root / "lib" / "stabilize" / name};
  std::string tried;
  for (const std::filesystem::path& place : places) {
    if (std::filesystem::exists(place, error)) return place.string();
    tried += (tried.empty() ? "" : ", ") + place.string();
  }
  throw CPluginError("plug-in " + name + " not found; tried " + tried);
}
