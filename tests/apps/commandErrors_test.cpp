// Requests a hostile user might make of the command line: a misspelt
// command, inputs that are not regular files, and a run that exhausts memory.
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fcntl.h>

#include <fstream>
#include <string>

#include "commands.h"
#include "flashbchRunner.h"

namespace {

TEST(CommandErrors, RefusedWithTheCulpritNamed) {
  qfbtest::ScratchDir dir;
  ASSERT_EQ(::mkfifo("pipe", 0600), 0);
  struct Case {
    std::string args, message;
  } cases[] = {
      {"frobnicate --t 3",
       "flashbch: unknown command 'frobnicate' (the commands are simulate, encode, decode, info, uber, nand, ldpc)"},
      // A FIFO without a writer would block the open, /dev/zero never ends.
      {"encode --layout 1x8 --t 1 pipe -o image.bin",
       "flashbch encode: pipe: not a regular file; the input must be a regular file"},
      {"decode --layout 1x8 --t 1 /dev/zero -o data.bin",
       "flashbch decode: /dev/zero: not a regular file; the input must be a regular file"},
  };
  for (const Case& c : cases) flashbchtest::expectRefused(c.args, c.message);
}

#if defined(__SANITIZE_ADDRESS__)
#define QFB_ADDRESS_LIMIT_WORKS 0  // the sanitizer's shadow memory needs an unbounded address space
#else
#define QFB_ADDRESS_LIMIT_WORKS 1
#endif

TEST(CommandErrors, OutOfMemoryIsOneLineAndStatus3) {
  if (!QFB_ADDRESS_LIMIT_WORKS) GTEST_SKIP() << "address-space limits do not apply under AddressSanitizer";
  qfbtest::ScratchDir dir;
  std::ofstream("data.bin", std::ios::binary) << std::string(16 << 20, '\x33');
  // A child whose address space has 4 MiB to spare reads a 16 MiB input.
  const pid_t child = ::fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    const int err = ::open("stderr.txt", O_WRONLY | O_CREAT | O_TRUNC, 0600);
    ::dup2(err, STDERR_FILENO);
    long pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    const rlim_t bytes = static_cast<rlim_t>(pages) * static_cast<rlim_t>(::sysconf(_SC_PAGESIZE)) + (4 << 20);
    const rlimit limit{bytes, bytes};
    ::setrlimit(RLIMIT_AS, &limit);
    char* argv[] = {const_cast<char*>("flashbch"), const_cast<char*>("encode"), const_cast<char*>("--layout"),
                    const_cast<char*>("1x8192"), const_cast<char*>("--t"), const_cast<char*>("1"),
                    const_cast<char*>("data.bin"), const_cast<char*>("-o"), const_cast<char*>("image.bin"), nullptr};
    ::_exit(flashbch::runCommandLine(9, argv));
  }
  int status = 0;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 3) << "raw status " << status;
  EXPECT_EQ(qfbtest::readFile("stderr.txt"),
            "flashbch encode: out of memory; try a smaller layout, fewer threads or a smaller file\n");
  EXPECT_FALSE(std::filesystem::exists("image.bin"));
}

}  // namespace
