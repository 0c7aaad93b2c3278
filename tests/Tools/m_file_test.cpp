// Matlab script writer: the exact text of main and collected scripts, the
// continuation chain, escaping, and every message.
#include <filesystem>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include "Tools/M_file.h"
#include "support/testutil.h"

namespace {

using qfbtest::readFile;
namespace fs = std::filesystem;

std::vector<std::string> filesIn(const fs::path& dir) {
  std::vector<std::string> names;
  for (const auto& e : fs::recursive_directory_iterator(dir)) names.push_back(fs::relative(e.path(), dir).string());
  std::sort(names.begin(), names.end());
  return names;
}

TEST(MFile, NamesAndTheDisabledWriter) {
  struct Case { const char* name; std::vector<std::string> files; };
  const Case cases[] = {{"out.m", {"out.m", "outv.m"}}, {"m", {"m.m", "mv.m"}}, {"", {}}, {".m", {}}};
  for (const Case& c : cases) {
    qfbtest::ScratchDir dir;
    {
      M_file mf(c.name, 6, 10, nullptr);
      mf.StartCollecting("v", 2);
      EXPECT_EQ(mf.IsCollecting("v"), !c.files.empty()) << c.name;
      mf.Put("b", true);
    }
    EXPECT_EQ(filesIn(dir.path()), c.files) << c.name;
  }
}

TEST(MFile, PutEscapesTextForMatlab) {
  qfbtest::ScratchDir dir;
  std::ostringstream err;
  {
    M_file mf("main", 6, 2, &err);
    mf.Put("q", std::string("it's"));
    mf.Put("t", "a\tb\n");
    mf.Put("u", "\xc3\xa9");  // UTF-8 bytes are not control characters
    mf.Put("yes", true);
    mf.Put("no", false);
    mf.Put("l", std::vector<std::string>{"x'", "y"});
    mf.Put("cut", std::vector<std::string>{"1", "2", "3"});
    mf.WriteLine("% end");
  }
  EXPECT_EQ(readFile("main.m"),
            "q = ['it''s'];\n"
            "t = ['a' char(9) 'b' char(10) ''];\n"
            "u = ['\xc3\xa9'];\n"
            "yes = 1;\nno = 0;\n"
            "l = {'x'''; 'y'; };\n"
            "cut = {'1'; '2'; };\n"
            "% end\n");
  EXPECT_EQ(err.str(), "Error in M-file::Put() for vector<string>: vector has too many elements, output is truncated.\n");
}

TEST(MFile, CollectedVariableIsSplitIntoAChainAtRowBoundaries) {
  qfbtest::ScratchDir dir;
  {
    M_file mf("run", 4, 6, nullptr);
    mf.Put("a", true);
    mf.StartCollecting("x", 3);
    for (int i = 1; i <= 7; ++i) mf.Append("x", i);
    mf.StartCollecting("y", 2);
    for (double v : {1.0 / 3, std::numeric_limits<double>::quiet_NaN()}) mf.Append("y", v);
    const unsigned char bytes[] = {200, 7, 9};
    for (int rep = 0; rep < 5; ++rep) mf.Append("y", bytes[rep % 3]);
    mf.FinishCollecting("x");
    mf.Append("y", true);
  }  // the destructor finishes y
  EXPECT_EQ(readFile("run.m"), "a = 1;\nrunx\nruny\n");
  EXPECT_EQ(readFile("runx.m"), "x = [\n1 2 3\n4 5 6\n];\nrunxxMx1\nx = [x; xxMx1];\nclear xxMx1;\n");
  EXPECT_EQ(readFile("runxxMx1.m"), "xxMx1 = [\n7 0 0\n];\n");
  EXPECT_EQ(readFile("runy.m"), "y = [\n0.3333 NaN\n200 7\n9 200\n];\nrunyxMx1\ny = [y; yxMx1];\nclear yxMx1;\n");
  EXPECT_EQ(readFile("runyxMx1.m"), "yxMx1 = [\n7 1\n];\n");
}

TEST(MFile, ContinuationsChainAndCallByLastPathComponent) {
  qfbtest::ScratchDir dir;
  fs::create_directory("sub");
  {
    M_file mf("sub/r", 6, 2, nullptr);
    mf.StartCollecting("z", 2);
    int row0[] = {1, 2}, row1[] = {3, 4}, row2[] = {5, 6};
    int* rows[] = {row0, row1, row2};
    mf.Append("z", rows, 3, 2);
    mf.Append("z", rows, 0, 2);
    mf.StartCollecting("c", 0);  // taken as one column
    mf.Append("c", 8);
  }
  EXPECT_EQ(readFile("sub/rc.m"), "c = [\n8\n];\n");
  EXPECT_EQ(readFile("sub/r.m"), "rz\nrc\n");
  EXPECT_EQ(readFile("sub/rz.m"), "z = [\n1 2\n];\nrzxMx1\nz = [z; zxMx1];\nclear zxMx1;\n");
  EXPECT_EQ(readFile("sub/rzxMx1.m"), "zxMx1 = [\n3 4\n];\nrzxMx2\nzxMx1 = [zxMx1; zxMx2];\nclear zxMx2;\n");
  EXPECT_EQ(readFile("sub/rzxMx2.m"), "zxMx2 = [\n5 6\n];\n");
}

TEST(MFile, MessagesForMisuseAndUnopenableFiles) {
  qfbtest::ScratchDir dir;
  std::ostringstream err;
  {
    M_file missing("nodir/a", 6, 4, &err);
    missing.Put("v", true);
    EXPECT_FALSE(missing.IsCollecting("v"));
    M_file lost("nodir/b", 6, 4, nullptr);  // no stream for messages: stays enabled, output lost
    lost.StartCollecting("v", 1);
    EXPECT_TRUE(lost.IsCollecting("v"));
    M_file mf("w", 6, 4, &err);
    EXPECT_FALSE(mf.IsCollecting("u"));
    mf.Append("u", 1.5);
    double r0[] = {1};
    double* rows[] = {r0};
    mf.Append("u", rows, 1, 1);
    mf.FinishCollecting("u");
    mf.StartCollecting("u", 1);
    mf.StartCollecting("u", 1);
    mf.StartCollecting("d/x", 1);
    EXPECT_TRUE(mf.IsCollecting("d/x"));
  }
  EXPECT_EQ(err.str(),
            "Error in M-file constructor: unable to open file nodir/a.m\n"
            "M_file::Append error:  Matlab variable u is not currently being collected.\n"
            "M_file::Append scalar_type** error:  Matlab variable u is not currently being collected.\n"
            "M_file::FinishCollecting error:  Matlab variable u is not currently being collected.\n"
            "M_file::StartCollecting error:  Matlab variable u is already being collected.\n"
            "Error in M-file::StartCollecting: unable to open file wd/x.m\n");
  EXPECT_EQ(readFile("w.m"), "wu\nx\n");
}

TEST(MFileDeathTest, RowWiderThanTheLimitExitsWithStatusOne) {
  qfbtest::ScratchDir dir;
  EXPECT_EXIT_PRINTS(
      {
        M_file mf("wide", 6, 2, &std::cout);
        mf.StartCollecting("v", 3);
        mf.Append("v", 1);
        mf.Append("v", 2);
      },
      1, "Hmmm, I thought ci would be zero at this point, i.e. beginning of a row.\n");
}

}  // namespace
