#pragma once

#include <string>

/// A library that comes into the process while it runs. Unloads it when it goes.
/// THREAD: one at a time.
class CLoadedLibrary {
 public:
  CLoadedLibrary() = default;
  ~CLoadedLibrary();
  CLoadedLibrary(const CLoadedLibrary&) = delete;
  CLoadedLibrary& operator=(const CLoadedLibrary&) = delete;

  /// False, with the loader's reason, when the file cannot be loaded. Once per object.
  bool load(const std::string& path, std::string& reason);
  /// Null when there is none of that name. REQUIRES: load was true.
  void* symbol(const char* name) const;

 private:
  void* handle_ = nullptr;
};

/// A library of this installation: in the library folder of the build tree or of the installation
/// that the program belongs to. Empty when it is not there; `tried` lists the places.
std::string FindOwnLibrary(const std::string& name, std::string& tried);
