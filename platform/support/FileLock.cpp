#include "support/FileLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "support/ErrorReport.h"
#include "support/Files.h"

namespace {

void tell(const std::string& what, int cause) {
  theError.set(-cause, "Can't lock " + what + ": " + std::system_category().message(cause));
}

std::string markerOf(const std::string& file) {
  const std::string folder = GetFilePath(file);
  return folder + "." + file.substr(folder.size()) + ".lock";
}

struct flock wholeFile() {
  struct flock lock {};
  lock.l_type = F_WRLCK;
  lock.l_whence = SEEK_SET;
  return lock;
}

/// Whether the descriptor's file still stands under its name: its last holder may just have removed
/// it.
bool stands(int descriptor, const std::string& path) {
  struct stat opened {
  }, named{};
  return ::fstat(descriptor, &opened) == 0 && ::lstat(path.c_str(), &named) == 0 &&
         opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

/// An open and locked marker, or -1 with the cause in errno.
int claim(const std::string& marker) {
  for (;;) {
    const int descriptor =
        ::open(marker.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0666);
    if (descriptor < 0) return -1;
    struct flock lock = wholeFile();
    const bool locked = ::fcntl(descriptor, F_OFD_SETLK, &lock) == 0;
    const int cause = errno;
    if (locked && stands(descriptor, marker)) return descriptor;
    ::close(descriptor);
    errno = cause;
    if (!locked) return -1;
  }
}

}  // namespace

CFolderLock::CFolderLock(const std::string& file) {
  std::string folder = GetFilePath(file);
  if (folder.empty()) folder = ".";
  descriptor_ = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  do {
    held_ = descriptor_ >= 0 && ::flock(descriptor_, LOCK_EX) == 0;
  } while (!held_ && descriptor_ >= 0 && errno == EINTR);
  if (!held_) tell("folder " + folder, errno);
}

CFolderLock::~CFolderLock() {
  if (descriptor_ >= 0) ::close(descriptor_);
}

CFileClaim::CFileClaim(const std::string& file)
    : marker_(markerOf(file)), descriptor_(claim(marker_)) {
  if (descriptor_ < 0) tell("file " + file, errno);
}

CFileClaim::~CFileClaim() {
  if (descriptor_ < 0) return;
  ::unlink(marker_.c_str());  // before the lock goes: the next one makes a marker of its own
  ::close(descriptor_);
}

bool CFileClaim::isClaimed(const std::string& file) {
  const int descriptor =
      ::open(markerOf(file).c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
  if (descriptor < 0) return errno != ENOENT;  // a marker that is not ours to open is somebody's
  struct flock lock = wholeFile();
  const bool claimed = ::fcntl(descriptor, F_OFD_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
  ::close(descriptor);
  return claimed;
}
