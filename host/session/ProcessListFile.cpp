#include "session/ProcessListFile.h"

#include <filesystem>

#include "support/ErrorReport.h"
#include "support/FileLock.h"
#include "support/Files.h"

namespace fs = std::filesystem;

namespace {

constexpr std::size_t LARGEST_FILE = std::size_t{16} << 20;

std::string realPathOf(const std::string& path) {
  std::error_code error;
  const fs::path real = fs::weakly_canonical(fs::absolute(path), error);
  return error ? path : real.string();
}

}  // namespace

CProcessListFile::CProcessListFile(const std::string& path)
    : path_(path), real_(realPathOf(path)) {}

bool CProcessListFile::exists() const {
  std::error_code ignored;
  return fs::symlink_status(real_, ignored).type() != fs::file_type::not_found;
}

CProcessList CProcessListFile::load(bool create) const {
  if (create && !exists()) return {};
  std::string text;
  if (!ReadFileWhole(real_, text, LARGEST_FILE)) throw CProcessListError(theError.getMessage());
  try {
    return CProcessList::FromText(text);
  } catch (const CProcessListError& error) {
    throw CProcessListError(path_ + ": " + error.what());
  }
}

CProcessList CProcessListFile::read() const {
  const bool beingRun = isBeingRun();  // first: one that ends now has stored its states
  CProcessList list = load(false);
  for (const SQueuedShot& shot : list.shots())
    if (shot.state == EShotState::running && !beingRun)
      list.find(shot.number)->state = EShotState::interrupted;
  return list;
}

void CProcessListFile::change(const std::function<void(CProcessList&)>& edit, bool create) const {
  const CFolderLock lock(real_);
  if (!lock.isHeld()) throw CProcessListError(theError.getMessage());
  CProcessList list = load(create);
  try {
    edit(list);
  } catch (const CProcessListError& error) {
    throw CProcessListError(path_ + ": " + error.what());
  }
  const std::string text = list.toText();
  if (text.size() > LARGEST_FILE)
    throw CProcessListError(path_ + ": the list would be larger than 16 MiB; begin a new one");
  if (!WriteFileWhole(real_, text)) throw CProcessListError(theError.getMessage());
}

bool CProcessListFile::isBeingRun() const {
  return CFileClaim::isClaimed(real_);
}
