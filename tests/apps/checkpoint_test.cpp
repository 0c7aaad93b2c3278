// Checkpoints: exact round trips, refusal of any damaged or foreign file,
// the option checks, and replacement that never exposes a partial file.
#include "checkpoint.h"

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <limits>

#include "checkpointFile.h"
#include "flashbchRunner.h"
#include "support/testutil.h"

namespace {

using namespace flashbch;
using flashbchtest::messageOf;

SettingsFingerprint fingerprint(const std::string& t) {
  SettingsFingerprint f;
  f.add("layout", "4x8192");
  f.add("t", t);
  f.add("rber", "0x1.0624dd2f1a9fcp-10 0x1.0624dd2f1a9fcp-9");
  return f;
}

Checkpoint sample() {
  Checkpoint c;
  c.settings = fingerprint("40");
  c.points.push_back({0, true, 17, 1.25, {17000, 68000, std::numeric_limits<std::int64_t>::max(), -3}, {}});
  c.points.push_back({1, false, 4, 0.1, {4000, 0}, {0.1, -std::numeric_limits<double>::denorm_min(), 1e308, -0.0}});
  return c;
}

TEST(Checkpoint, RoundTripsBitForBit) {
  const Checkpoint c = sample();
  const Checkpoint back = Checkpoint::parse(c.serialize(), "test");
  EXPECT_EQ(back.settings.fields(), c.settings.fields());
  EXPECT_TRUE(back.points == c.points);
  EXPECT_TRUE(std::signbit(back.points.at(1).reals.at(3)));
  EXPECT_EQ(back.serialize(), c.serialize());
}

TEST(Checkpoint, Crc32MatchesTheStandardCheckValue) { EXPECT_EQ(crc32("123456789"), 0xCBF43926u); }

TEST(Checkpoint, RefusesEveryTruncationAndEveryFlippedBit) {
  const std::string text = sample().serialize();
  for (size_t length = 0; length < text.size(); ++length) {
    const std::string why = messageOf([&] { Checkpoint::parse(text.substr(0, length), "--resume: f"); });
    EXPECT_EQ(why.rfind("--resume: f: ", 0), 0u) << length << ": " << why;
  }
  for (size_t at = 0; at < text.size(); ++at)
    for (int bit = 0; bit < 8; ++bit) {
      std::string bad = text;
      bad[at] = static_cast<char>(bad[at] ^ (1 << bit));
      EXPECT_NE(messageOf([&] { Checkpoint::parse(bad, "f"); }), "(accepted)") << at << "/" << bit;
    }
}

TEST(Checkpoint, NamesWhatIsWrongWithAFile) {
  const std::string text = sample().serialize();
  const std::string body = text.substr(0, text.rfind("crc32 "));
  const auto sealed = [](const std::string& b) {
    char line[32];
    std::snprintf(line, sizeof line, "crc32 %08x\n", static_cast<unsigned>(crc32(b)));
    return b + line;
  };
  std::string newer = body;
  newer.replace(newer.find(" 1\n"), 3, " 2\n");
  const struct {
    std::string text, message;
  } cases[] = {
      {"", "f: the file is empty"},
      {"a,b\n1,2\n", "f: not a flashbch checkpoint"},
      {text.substr(0, text.size() - 4), "f: the file is truncated (its closing checksum line is missing)"},
      {body, "f: the file is truncated (its closing checksum line is missing)"},
      {body + "crc32 00000000\n", "f: the file is corrupt (its checksum does not match its content)"},
      {sealed(newer), "f: written in checkpoint format '2'; this flashbch reads format 1"},
      {sealed(body + "point 2 running rounds x\n"), "f: line 7 cannot be read: point 2 running rounds x"},
      {sealed(body + "point 3 running rounds 0 seconds 0x0p+0 counts 0 reals 0\n"), "f: its points are out of order"},
  };
  for (const auto& c : cases) EXPECT_EQ(messageOf([&] { Checkpoint::parse(c.text, "f"); }), c.message);
}

TEST(Checkpoint, NamesTheFirstDifferentSetting) {
  SettingsFingerprint shorter;
  shorter.add("layout", "4x8192");
  SettingsFingerprint renamed = shorter;
  renamed.add("seed", "1");
  const struct {
    SettingsFingerprint commandLine;
    std::string difference;
  } cases[] = {
      {fingerprint("40"), ""},
      {fingerprint("32"), "t is 40 in the checkpoint, 32 on the command line"},
      {shorter, "t is set in the checkpoint but not on this command line"},
      {renamed, "the checkpoint has t where this command line has seed"},
  };
  for (const auto& c : cases) EXPECT_EQ(fingerprint("40").firstDifference(c.commandLine), c.difference);
  EXPECT_EQ(shorter.firstDifference(fingerprint("40")), "t is set on this command line but not in the checkpoint");
}

TEST(CheckpointFile, ChecksItsOptions) {
  qfbtest::ScratchDir scratch;
  qfbtest::writeFile("old.ckpt", sample().serialize());
  const struct {
    CheckpointOptions options;
    std::string message;
  } cases[] = {
      {{"run.ckpt", "", "0"}, "--checkpoint-every: '0' is not a number of seconds greater than 0"},
      {{"run.ckpt", "", "nan"}, "--checkpoint-every: 'nan' is not a number of seconds greater than 0"},
      {{"run.ckpt", "", "10s"}, "--checkpoint-every: '10s' is not a number of seconds greater than 0"},
      {{"", "", "30"}, "--checkpoint-every: needs --checkpoint FILE (or --resume FILE)"},
      {{"", "gone.ckpt", ""}, "--resume: cannot read gone.ckpt: No such file or directory"},
      {{"no/such/dir/run.ckpt", "", ""}, "--checkpoint: cannot write no/such/dir/run.ckpt "
                                         "(No such file or directory)"},
      {{"run.ckpt", "", "0.5"}, "(accepted)"},
      {{"", "old.ckpt", ""}, "(accepted)"},
  };
  for (const auto& c : cases) EXPECT_EQ(messageOf([&] { CheckpointFile{c.options}; }), c.message);

  // Resuming keeps checkpointing to the same file unless told otherwise.
  EXPECT_EQ(CheckpointFile({"", "old.ckpt", ""}).path(), "old.ckpt");
  EXPECT_EQ(CheckpointFile({"new.ckpt", "old.ckpt", ""}).path(), "new.ckpt");
  const CheckpointFile resumed({"", "old.ckpt", ""});
  EXPECT_EQ(resumed.resume(fingerprint("40"))->points.size(), 2u);
  EXPECT_EQ(messageOf([&] { resumed.resume(fingerprint("32")); }),
            "--resume: old.ckpt was written with other settings: t is 40 in the checkpoint, 32 on the command line");
  EXPECT_FALSE(CheckpointFile({"run.ckpt", "", ""}).resume(fingerprint("40")).has_value());
}

TEST(CheckpointFile, ReplacesTheOldFileOnlyWhenTheNewOneIsWhole) {
  qfbtest::ScratchDir scratch;
  CheckpointFile file({"run.ckpt", "", "1000"});
  EXPECT_FALSE(file.due());
  EXPECT_EQ(file.write(sample()), "");
  // A reader that opened the old file keeps reading all of the old content:
  // the new one arrives under a new inode, not by rewriting the old.
  std::ifstream reader("run.ckpt", std::ios::binary);
  Checkpoint next = sample();
  next.points.pop_back();
  EXPECT_EQ(file.write(next), "");
  const std::string seen((std::istreambuf_iterator<char>(reader)), std::istreambuf_iterator<char>());
  EXPECT_EQ(seen, sample().serialize());
  EXPECT_EQ(qfbtest::readFile("run.ckpt"), next.serialize());
  // No temporary file is left behind.
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator("."), std::filesystem::directory_iterator()), 1);

  // A write that cannot finish reports why and leaves the old file alone.
  std::filesystem::create_directory("blocked");
  CheckpointFile blocked({"blocked/run.ckpt", "", ""});
  std::filesystem::create_directory("blocked/run.ckpt");
  std::filesystem::create_directory("blocked/run.ckpt/inside");
  EXPECT_NE(blocked.write(next).find("blocked/run.ckpt is not a regular file"), std::string::npos);
  EXPECT_TRUE(std::filesystem::is_directory("blocked/run.ckpt/inside"));
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator("blocked"), std::filesystem::directory_iterator()), 1);
}

}  // namespace
