#include "WholeFile.h"

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "DpxHeader.h"
#include "clip/ClipReader.h"

namespace {

/// Walks from chunk to chunk (length, name, content, check sum) to the one that ends the file.
bool HasAllPngChunks(std::ifstream& file, std::uint64_t size) {
  std::uint64_t at = 8;
  for (;;) {
    unsigned char head[8];
    file.seekg(static_cast<std::streamoff>(at));
    if (!file.read(reinterpret_cast<char*>(head), sizeof head)) return false;
    at += 12 + (static_cast<std::uint64_t>(head[0]) << 24 | head[1] << 16 | head[2] << 8 | head[3]);
    if (at > size) return false;
    if (std::memcmp(head + 4, "IEND", 4) == 0) return true;
  }
}

}  // namespace

void RequireWholeFile(const std::string& path, const std::string& extension) {
  if (extension == "dpx") {
    const CDpxHeader header(path);
    return;
  }
  if (extension != "png") return;
  std::error_code error;
  const std::uint64_t size = std::filesystem::file_size(path, error);
  std::ifstream file(path, std::ios::binary);
  if (error || !file || !HasAllPngChunks(file, size))
    throw CClipError(path + ": truncated, the end of the file is missing");
}
