#include "support/LoadedLibrary.h"

#include <dlfcn.h>

#include <filesystem>

CLoadedLibrary::~CLoadedLibrary() {
  if (handle_) dlclose(handle_);
}

bool CLoadedLibrary::load(const std::string& path, std::string& reason) {
  handle_ = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (handle_) return true;
  const char* text = dlerror();
  reason = text ? text : "unknown reason";
  return false;
}

void* CLoadedLibrary::symbol(const char* name) const {
  return dlsym(handle_, name);
}

std::string FindOwnLibrary(const std::string& name, std::string& tried) {
  namespace fs = std::filesystem;
  std::error_code error;
  const fs::path program = fs::read_symlink("/proc/self/exe", error);
  const fs::path folder = program.parent_path().parent_path() / "lib";
  for (const fs::path& place : {folder / name, folder / "stabilize" / name}) {
    if (fs::exists(place, error)) return place.string();
    tried += (tried.empty() ? "" : ", ") + place.string();
  }
  return {};
}
