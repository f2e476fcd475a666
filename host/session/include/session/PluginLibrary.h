#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

#include "ToolObj/ToolObject.h"
#include "support/LoadedLibrary.h"
#include "toolkit/Application.h"

/// A plug-in that cannot be used; the message names file, entry point and reason.
class CPluginError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// A loaded plug-in: its entry points, its version, its one tool. Unloading destroys the tool.
/// THREAD: the user-interface thread.
class CPluginLibrary {
 public:
  /// Loads the file and looks up all seven entry points. Throws CPluginError.
  explicit CPluginLibrary(const std::string& path);

  const std::string& path() const { return path_; }
  /// "major.minor.release.build".
  std::string version() const;
  /// The plug-in's legal text; empty when it has none.
  std::string legalText() const;
  /// Hands the host's application object over. It must stay until the plug-in is unloaded.
  void handOverApplication(TApplication* application);
  /// The plug-in's tool, owned by the plug-in. Throws CPluginError when it makes none.
  CToolObject* createTool(const std::string& name);

  /// Where the plug-in of this installation lies: STABILIZE_PLUGIN, else beside the program in the
  /// build tree's or the installation's library folder. Throws CPluginError naming what was tried.
  static std::string find(const std::string& name);

 private:
  void* symbol(const char* name) const;

  std::string path_;
  CLoadedLibrary library_;
  std::string (*versionEntry_)(std::int32_t*) = nullptr;
  CToolObject* (*createEntry_)(std::string) = nullptr;
  void* (*resourceEntry_)(std::int32_t) = nullptr;
  std::int32_t (*messageEntry_)(std::int32_t, void*) = nullptr;
};
