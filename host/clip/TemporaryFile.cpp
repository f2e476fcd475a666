#include "TemporaryFile.h"

#include <unistd.h>

#include <atomic>
#include <filesystem>

#include "clip/ClipReader.h"

namespace fs = std::filesystem;

CTemporaryFile::CTemporaryFile(const std::string& finalPath) : finalPath_(finalPath) {
  static std::atomic<unsigned> serial{0};
  const fs::path target(finalPath);
  std::string name(".");
  name.append(target.stem().string()).append(".tmp-").append(std::to_string(getpid()));
  name.append("-").append(std::to_string(serial++)).append(target.extension().string());
  path_ = (target.parent_path() / name).string();
}

CTemporaryFile::~CTemporaryFile() {
  std::error_code ignored;
  if (!committed_) fs::remove(path_, ignored);
}

void CTemporaryFile::commit() {
  std::error_code error;
  fs::rename(path_, finalPath_, error);
  if (error) throw CClipError(finalPath_ + ": " + error.message());
  committed_ = true;
}
