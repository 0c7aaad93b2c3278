#include "atomicFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <stdexcept>

namespace flashbch {

namespace {

std::string directoryOf(const std::string& path) {
  const size_t slash = path.find_last_of('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

std::string temporaryBeside(const std::string& path) {
  const size_t slash = path.find_last_of('/');
  const std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
  return directoryOf(path) + "/." + name + ".tmp" + std::to_string(::getpid());
}

[[noreturn]] void fail(const std::string& what, const std::string& path, int error) {
  throw std::runtime_error("cannot " + what + " " + path + ": " + std::strerror(error));
}

}  // namespace

void writeFileAtomically(const std::string& path, const std::string& content) {
  const std::string temporary = temporaryBeside(path);
  const int fd = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
  if (fd < 0) fail("create", temporary, errno);
  const char* at = content.data();
  size_t left = content.size();
  int error = 0;
  while (left > 0 && error == 0) {
    const ssize_t written = ::write(fd, at, left);
    if (written < 0 && errno != EINTR) error = errno;
    if (written > 0) at += written, left -= static_cast<size_t>(written);
  }
  if (error == 0 && ::fsync(fd) != 0) error = errno;
  if (::close(fd) != 0 && error == 0) error = errno;
  if (error == 0 && std::rename(temporary.c_str(), path.c_str()) != 0) error = errno;
  if (error != 0) {
    std::remove(temporary.c_str());
    fail("write", path, error);
  }
  // The rename itself reaches the disk with the directory.
  const int dir = ::open(directoryOf(path).c_str(), O_RDONLY | O_CLOEXEC);
  if (dir >= 0) {
    ::fsync(dir);
    ::close(dir);
  }
}

void checkDirectoryWritable(const std::string& path) {
  const std::string temporary = temporaryBeside(path);
  const int fd = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
  if (fd < 0) fail("write in the directory of", path, errno);
  ::close(fd);
  std::remove(temporary.c_str());
}

}  // namespace flashbch
