#include "session/PluginLibrary.h"

#include <cstdlib>

namespace {

constexpr std::int32_t MESSAGE_APPLICATION = 1;
constexpr std::int32_t RESOURCE_LEGAL_TEXT = 4;

}  // namespace

CPluginLibrary::CPluginLibrary(const std::string& path) : path_(path) {
  std::string reason;
  if (!library_.load(path, reason))
    throw CPluginError("plug-in " + path + " cannot be loaded: " + reason);
  versionEntry_ = reinterpret_cast<decltype(versionEntry_)>(symbol("_QTX_PluginVersion"));
  createEntry_ = reinterpret_cast<decltype(createEntry_)>(symbol("_Create"));
  resourceEntry_ = reinterpret_cast<decltype(resourceEntry_)>(symbol("_Resource"));
  messageEntry_ = reinterpret_cast<decltype(messageEntry_)>(symbol("_SendTheMessage"));
  for (const char* name : {"_Properties", "_WriteProperties", "_ReadProperties"}) symbol(name);
}

void* CPluginLibrary::symbol(const char* name) const {
  void* found = library_.symbol(name);
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
  std::string tried;
  const std::string found = FindOwnLibrary(name, tried);
  if (found.empty()) throw CPluginError("plug-in " + name + " not found; tried " + tried);
  return found;
}
