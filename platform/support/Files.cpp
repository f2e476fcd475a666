#include "support/Files.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <utility>

#include "support/ErrorReport.h"

namespace {

/// A file descriptor that is closed at the latest at the end of its scope.
class CDescriptor {
 public:
  explicit CDescriptor(int descriptor) : descriptor_(descriptor) {}
  ~CDescriptor() { close(); }
  CDescriptor(const CDescriptor&) = delete;
  CDescriptor& operator=(const CDescriptor&) = delete;

  bool isOpen() const { return descriptor_ >= 0; }
  int get() const { return descriptor_; }
  bool close() { return descriptor_ < 0 || ::close(std::exchange(descriptor_, -1)) == 0; }

 private:
  int descriptor_;
};

bool failed(const char* what, const std::string& path, int cause) {
  theError.set(-cause, std::string("Can't ") + what + " file " + path + ": " +
                           std::system_category().message(cause));
  return false;
}

bool readAll(int descriptor, std::string& text, std::size_t limit) {
  char block[65536];
  for (;;) {
    const ssize_t count = ::read(descriptor, block, sizeof block);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return count == 0;
    if (text.size() + static_cast<std::size_t>(count) > limit) {
      errno = EFBIG;
      return false;
    }
    text.append(block, static_cast<std::size_t>(count));
  }
}

bool writeAll(int descriptor, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = ::write(descriptor, text.data(), text.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return false;
    text.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

/// Creates a new file in `folder`; its name does not grow with the target's, so that a target
/// whose name is as long as the file system allows can still be written.
int openTemporary(const std::string& folder, std::string& name) {
  static std::atomic<unsigned> counter{0};
  for (;;) {
    name = folder + ".stabilize-" + std::to_string(getpid()) + "-" + std::to_string(counter++) +
           ".tmp";
    const int descriptor = ::open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (descriptor >= 0 || errno != EEXIST) return descriptor;
  }
}

/// A settings file that is a link stays one: what it points to is replaced.
std::string linkTarget(const std::string& path) {
  std::error_code none;
  if (!std::filesystem::is_symlink(path, none)) return path;
  const auto target = std::filesystem::canonical(path, none);
  return none ? path : target.string();
}

/// An errno when there is something at `target` that must not be replaced, else 0. Renaming would
/// take away a device or a pipe, and does not ask whether a file is write-protected.
int whyNotReplaceable(const std::string& target) {
  struct stat status {};
  if (::stat(target.c_str(), &status) != 0) return errno == ENOENT ? 0 : errno;
  if (S_ISDIR(status.st_mode)) return EISDIR;
  if (!S_ISREG(status.st_mode)) return EINVAL;
  return ::access(target.c_str(), W_OK) == 0 ? 0 : errno;
}

/// Makes the new directory entry durable. Some file systems cannot; the file itself is whole then.
void syncFolder(const std::string& folder) {
  const CDescriptor directory(
      ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (directory.isOpen()) (void)::fsync(directory.get());
}

std::string homeFolder() {
  const char* home = std::getenv("HOME");
  if (home != nullptr && home[0] == '/') return home;
  passwd entry{};
  passwd* found = nullptr;
  char text[4096];
  if (getpwuid_r(getuid(), &entry, text, sizeof text, &found) == 0 && found != nullptr) {
    return entry.pw_dir;
  }
  return "/";
}

std::string baseFolder(const char* variable, const char* underHome) {
  std::string folder;
  const char* set = std::getenv(variable);
  // A relative path in one of these variables is invalid and is to be ignored.
  folder = set != nullptr && set[0] == '/' ? std::string(set) : homeFolder() + underHome;
  while (folder.size() > 1 && folder.back() == '/') folder.pop_back();
  return folder;
}

}  // namespace

bool DoesFileExist(const std::string& path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 && !S_ISDIR(status.st_mode);
}

std::string GetFilePath(const std::string& path) {
  const std::size_t separator = path.find_last_of('/');
  return separator == std::string::npos ? std::string() : path.substr(0, separator + 1);
}

std::string ConfigFolder() {
  return baseFolder("XDG_CONFIG_HOME", "/.config");
}

std::string StateFolder() {
  return baseFolder("XDG_STATE_HOME", "/.local/state");
}

bool ReadFileWhole(const std::string& path, std::string& text, std::size_t limit) {
  // Non-blocking: opening a pipe that nobody writes to must not hang.
  const CDescriptor file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  struct stat status {};
  if (!file.isOpen() || ::fstat(file.get(), &status) != 0) return failed("read", path, errno);
  if (S_ISDIR(status.st_mode)) return failed("read", path, EISDIR);
  if (!S_ISREG(status.st_mode)) return failed("read", path, EINVAL);
  if (std::cmp_greater(status.st_size, limit)) return failed("read", path, EFBIG);
  std::string whole;
  if (!readAll(file.get(), whole, limit)) return failed("read", path, errno);
  text.swap(whole);
  return true;
}

CFileReplacement::CFileReplacement(std::string path)
    : path_(std::move(path)), target_(linkTarget(path_)) {
  if (const int cause = whyNotReplaceable(target_); cause != 0) {
    failed("write", path_, cause);
    return;
  }
  descriptor_ = openTemporary(GetFilePath(target_), temporary_);
  if (!isOpen()) failed("write", path_, errno);
}

CFileReplacement::~CFileReplacement() {
  if (!isOpen()) return;
  (void)close();
  (void)::unlink(temporary_.c_str());
}

bool CFileReplacement::close() {
  return ::close(std::exchange(descriptor_, -1)) == 0;
}

bool CFileReplacement::commit(std::string_view text) {
  struct stat old {};
  if (::stat(target_.c_str(), &old) == 0) (void)::fchmod(descriptor_, old.st_mode & 07777);
  const bool whole = writeAll(descriptor_, text) && ::fsync(descriptor_) == 0 && close() &&
                     ::rename(temporary_.c_str(), target_.c_str()) == 0;
  if (!whole) {
    const int cause = errno;
    if (isOpen()) (void)close();
    (void)::unlink(temporary_.c_str());
    return failed("write", path_, cause);
  }
  syncFolder(GetFilePath(target_));
  return true;
}

bool WriteFileWhole(const std::string& path, std::string_view text) {
  CFileReplacement file(path);
  return file.isOpen() && file.commit(text);
}
