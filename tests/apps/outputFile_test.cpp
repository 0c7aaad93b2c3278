// Output files are replaced atomically: a failed write keeps the previous
// file whole, a vetted path is left untouched, and decode checks every output
// before writing any.
#include "outputFile.h"

#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "flashbchRunner.h"

namespace {

using flashbch::checkWritable;
using flashbch::writeOutputFile;
using flashbchtest::messageOf;

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
  const pid_t child = ::fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    ::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{64, 64};
    ::setrlimit(RLIMIT_FSIZE, &limit);
    const std::string message = messageOf([] { writeOutputFile("--csv", "table.csv", std::string(4096, 'x')); });
    ::_exit(message == "--csv: cannot write table.csv (File too large)" ? 3 : 4);
  }
  int status = 0;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 3) << "raw status " << status;
  EXPECT_EQ(qfbtest::readFile("table.csv"), "previous\n");
  EXPECT_EQ(filesIn(dir.path()), 1);
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

}  // namespace
