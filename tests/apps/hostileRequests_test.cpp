// Requests a hostile user might make, and resources that run out. Output
// files are replaced atomically: a failed write keeps the previous file
// whole, a vetted path is left untouched, and decode checks every output
// before writing any. A misspelt command and inputs that are not regular
// files are named; a run that exhausts memory ends with one line.
#include "outputFile.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <string>

#include "commands.h"
#include "flashbchRunner.h"

namespace {

using flashbch::checkWritable;
using flashbch::writeOutputFile;
using flashbchtest::messageOf;

// Runs `body` in a forked child with `resource` limited to `bytes` and its
// standard error in stderr.txt; the child's exit status, or -1 if it did
// not exit.
int exitStatusUnderLimit(int resource, rlim_t bytes, const std::function<int()>& body) {
  const pid_t child = ::fork();
  if (child == 0) {
    ::dup2(::open("stderr.txt", O_WRONLY | O_CREAT | O_TRUNC, 0600), STDERR_FILENO);
    ::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{bytes, bytes};
    ::setrlimit(resource, &limit);
    ::_exit(body());
  }
  int status = 0;
  if (child < 0 || ::waitpid(child, &status, 0) != child) return -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

int filesIn(const std::filesystem::path& dir) {
  return static_cast<int>(std::distance(std::filesystem::directory_iterator(dir), {}));
}

TEST(OutputFile, ReplacesTheTargetKeepingItsMode) {
  qfbtest::ScratchDir dir;
  qfbtest::writeFile("table.csv", "previous content, longer than the new one\n");
  ASSERT_EQ(::chmod("table.csv", 0640), 0);
  writeOutputFile("--csv", "table.csv", "new\n");
  EXPECT_EQ(qfbtest::readFile("table.csv"), "new\n");
  struct stat st {};
  ASSERT_EQ(::stat("table.csv", &st), 0);
  EXPECT_EQ(st.st_mode & 07777, 0640u);
  writeOutputFile("--json", "fresh.json", "{}\n");
  EXPECT_EQ(qfbtest::readFile("fresh.json"), "{}\n");
  EXPECT_EQ(filesIn(dir.path()), 2);  // no temporary left behind
}

TEST(OutputFile, FailedWriteKeepsThePreviousFile) {
  qfbtest::ScratchDir dir;
  qfbtest::writeFile("table.csv", "previous\n");
  // A child under a 64-byte file-size limit tries to write 4 KiB.
  EXPECT_EQ(exitStatusUnderLimit(RLIMIT_FSIZE, 64, [] {
              const std::string why = messageOf([] { writeOutputFile("--csv", "table.csv", std::string(4096, 'x')); });
              return why == "--csv: cannot write table.csv (File too large)" ? 3 : 4;
            }),
            3);
  EXPECT_EQ(qfbtest::readFile("table.csv"), "previous\n");
  EXPECT_EQ(filesIn(dir.path()), 2);  // and the child's stderr.txt
}

TEST(OutputFile, CheckingAPathLeavesItUntouched) {
  qfbtest::ScratchDir dir;
  qfbtest::writeFile("report.json", "kept\n");
  std::filesystem::create_directory("sub");
  checkWritable("--report", "report.json");
  checkWritable("--report", "sub/new.json");
  EXPECT_EQ(qfbtest::readFile("report.json"), "kept\n");
  EXPECT_FALSE(std::filesystem::exists("sub/new.json"));
  EXPECT_EQ(filesIn(dir.path()), 2);
  EXPECT_EQ(filesIn("sub"), 0);
  EXPECT_EQ(messageOf([] { checkWritable("--csv", "sub"); }), "--csv: sub is not a regular file");
  EXPECT_EQ(messageOf([] { checkWritable("--csv", "missing/t.csv"); }),
            "--csv: cannot write missing/t.csv (No such file or directory)");
}

TEST(OutputFile, DecodeRefusingItsOutputKeepsThePreviousReport) {
  qfbtest::ScratchDir dir;
  qfbtest::writeFile("data.bin", std::string(2 * 128, '\x5a'));
  const std::string layout = "--layout 2x1024 --t 5 ";
  ASSERT_EQ(flashbchtest::runFlashbch("encode " + layout + "data.bin -o image.bin").status, 0);
  qfbtest::writeFile("report.json", "previous report\n");
  std::filesystem::create_directory("out");
  flashbchtest::expectRefused("decode " + layout + "image.bin -o out --report report.json",
                              "flashbch decode: --output: out is not a regular file");
  flashbchtest::expectRefused("decode " + layout + "image.bin -o none/data.out --report report.json",
                              "flashbch decode: --output: cannot write none/data.out (No such file or directory)");
  EXPECT_EQ(qfbtest::readFile("report.json"), "previous report\n");
  EXPECT_EQ(filesIn(dir.path()), 6);  // data, image, report, out/ and the captured stdout and stderr
}

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
  long pages = 0;
  std::ifstream("/proc/self/statm") >> pages;
  const rlim_t bytes = static_cast<rlim_t>(pages) * static_cast<rlim_t>(::sysconf(_SC_PAGESIZE)) + (4 << 20);
  EXPECT_EQ(exitStatusUnderLimit(RLIMIT_AS, bytes, [] {
              const char* args[] = {"flashbch", "encode", "--layout", "1x8192", "--t", "1", "data.bin", "-o",
                                    "image.bin", nullptr};
              return flashbch::runCommandLine(9, const_cast<char**>(args));
            }),
            3);
  EXPECT_EQ(qfbtest::readFile("stderr.txt"),
            "flashbch encode: out of memory; try a smaller layout, fewer threads or a smaller file\n");
  EXPECT_FALSE(std::filesystem::exists("image.bin"));
}

}  // namespace
