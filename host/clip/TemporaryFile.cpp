#include "TemporaryFile.h"

#include <unistd.h>

#include <atomic>
#include <filesystem>

#include "clip/ClipReader.h"

namespace fs = std::filesystem;

CTemporaryFile::CTemporaryFile(const std::string& finalPath) : finalPath_(finalPath) {
  static std::atomic<unsigned> serial{0};
  const fs::path target(finalPath);
  path_ =
      (target.parent_path() / ("." + target.stem().string() + ".tmp-" + std::to_string(getpid()) +
                               "-" + std::to_string(serial++) + target.extension().string()))
          .string();
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
