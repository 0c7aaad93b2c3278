#include "outputFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "usageError.h"

namespace flashbch {

namespace {

std::string directoryOf(const std::string& path) {
  const size_t slash = path.find_last_of('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

std::string baseName(const std::string& path) {
  const size_t slash = path.find_last_of('/');
  return slash == std::string::npos ? path : path.substr(slash + 1);
}

// A hidden sibling of the target, unique by mkstemp; the descriptor is
// returned open and the name written to name.
int createTemporary(const std::string& path, std::string& name) {
  std::string pattern = directoryOf(path) + "/." + baseName(path) + ".XXXXXX";
  std::vector<char> buffer(pattern.begin(), pattern.end());
  buffer.push_back('\0');
  const int fd = ::mkstemp(buffer.data());
  if (fd >= 0) name.assign(buffer.data());
  return fd;
}

// The mode a newly created file would get (0666 less the umask), or the
// target's own permission bits when it exists, so that replacing a file
// keeps who may read it.
mode_t modeFor(const std::string& path) {
  struct stat st;
  if (::stat(path.c_str(), &st) == 0) return st.st_mode & 07777;
  const mode_t mask = ::umask(0);
  ::umask(mask);
  return 0666 & ~mask;
}

[[noreturn]] void cannotWrite(const std::string& flag, const std::string& path, int error) {
  throw UsageError(flag + ": cannot write " + path + " (" + std::strerror(error) + ")");
}

// The target must be a regular file or absent: renaming over a directory
// fails, and a device or FIFO would be replaced by a regular file.
void checkTarget(const std::string& flag, const std::string& path) {
  struct stat st;
  if (::stat(path.c_str(), &st) == 0 && !S_ISREG(st.st_mode))
    throw UsageError(flag + ": " + path + " is not a regular file");
}

}  // namespace

void checkWritable(const std::string& flag, const std::string& path) {
  if (path.empty()) return;
  checkTarget(flag, path);
  std::string temporary;
  const int fd = createTemporary(path, temporary);
  if (fd < 0) cannotWrite(flag, path, errno);
  ::close(fd);
  ::unlink(temporary.c_str());
}

void writeOutputFile(const std::string& flag, const std::string& path, const std::string& content) {
  checkTarget(flag, path);
  std::string temporary;
  const int fd = createTemporary(path, temporary);
  if (fd < 0) cannotWrite(flag, path, errno);
  int error = 0;
  if (::fchmod(fd, modeFor(path)) != 0) error = errno;
  for (size_t done = 0; error == 0 && done < content.size();) {
    const ssize_t n = ::write(fd, content.data() + done, content.size() - done);
    if (n < 0 && errno == EINTR) continue;
    if (n < 0) error = errno;
    else done += static_cast<size_t>(n);
  }
  if (error == 0 && ::fsync(fd) != 0) error = errno;
  if (::close(fd) != 0 && error == 0) error = errno;
  if (error == 0 && std::rename(temporary.c_str(), path.c_str()) != 0) error = errno;
  if (error != 0) {
    ::unlink(temporary.c_str());
    cannotWrite(flag, path, error);
  }
  // The rename reaches the disk with the directory's own entry; without
  // this a crash could bring back the previous file (or none).
  const int directory = ::open(directoryOf(path).c_str(), O_RDONLY | O_CLOEXEC);
  if (directory >= 0) {
    ::fsync(directory);
    ::close(directory);
  }
}

}  // namespace flashbch
