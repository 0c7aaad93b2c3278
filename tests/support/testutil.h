// Helpers shared by the test executables.
//
// Fatal paths in the library print their message on standard output (or
// standard error) and then end the process. GoogleTest's death tests only
// capture standard error, so EXPECT_EXIT_PRINTS points standard output at
// standard error inside the child before running the statement, and then
// compares the child's whole output with the exact expected text.
//
// Tests that create files work inside a private scratch directory, so that
// ctest may run them in parallel without two tests sharing a file name.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <unistd.h>

#define EXPECT_EXIT_PRINTS(statement, status, text)                                   \
  EXPECT_EXIT(                                                                        \
      {                                                                               \
        std::fflush(stdout);                                                          \
        ::dup2(STDERR_FILENO, STDOUT_FILENO);                                         \
        statement;                                                                    \
      },                                                                              \
      ::testing::ExitedWithCode(status), ::testing::Eq(std::string(text)))

namespace qfbtest {

// Makes a fresh directory under the system temp dir, changes into it, and on
// destruction changes back and removes it with everything inside.
class ScratchDir {
 public:
  ScratchDir() {
    std::string pattern = (std::filesystem::temp_directory_path() / "qfbtest.XXXXXX").string();
    if (!::mkdtemp(pattern.data())) std::abort();
    path_ = pattern;
    previous_ = std::filesystem::current_path();
    std::filesystem::current_path(path_);
  }
  ~ScratchDir() {
    std::error_code ec;
    std::filesystem::current_path(previous_, ec);
    std::filesystem::permissions(path_, std::filesystem::perms::owner_all,
                                 std::filesystem::perm_options::add, ec);
    std::filesystem::remove_all(path_, ec);
  }
  ScratchDir(const ScratchDir&) = delete;
  ScratchDir& operator=(const ScratchDir&) = delete;

  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
  std::filesystem::path previous_;
};

inline std::string readFile(const std::string& name) {
  std::ifstream in(name, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

inline void writeFile(const std::string& name, const std::string& text) {
  std::ofstream out(name, std::ios::binary);
  out << text;
}

}  // namespace qfbtest
