// Checkpoint: what a simulation has finished, enough to continue it later
// and end with exactly the table an uninterrupted run prints.
//
// It holds the settings that decide the results (a fingerprint: named
// fields, compared one by one), every finished point's tally, and the
// running tally of the current point after its last whole round. Tallies
// are opaque arrays of integers and doubles: the simulation decides what
// they mean, the checkpoint only keeps them exactly (integers in decimal,
// doubles as hexadecimal floating point, which reads back bit for bit).
//
// The file is text, one record a line:
//   flashbch checkpoint 1
//   setting NAME VALUE...
//   point INDEX finished|running rounds R seconds S counts N c1..cN reals M r1..rM
//   crc32 XXXXXXXX
// The last line is the CRC-32 (IEEE 802.3, reflected, as in zlib) of every
// byte before it, so a file cut short or damaged anywhere is refused.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace flashbch {

class SettingsFingerprint {
 public:
  // Names are single words (the flag that sets the value, without dashes);
  // values are one line of text.
  void add(const std::string& name, const std::string& value);
  const std::vector<std::pair<std::string, std::string>>& fields() const { return fields_; }
  // Empty when the fields are the same; otherwise the first difference,
  // e.g. "t is 40 in the checkpoint, 32 on the command line".
  std::string firstDifference(const SettingsFingerprint& commandLine) const;

 private:
  std::vector<std::pair<std::string, std::string>> fields_;
};

struct PointState {
  int point = 0;
  bool finished = false;
  std::int64_t rounds = 0;  // whole rounds in the tally
  double seconds = 0.0;     // spent on the point so far
  std::vector<std::int64_t> counts;
  std::vector<double> reals;
  bool operator==(const PointState& other) const;
};

struct Checkpoint {
  static constexpr int kFormatVersion = 1;
  SettingsFingerprint settings;
  std::vector<PointState> points;

  std::string serialize() const;
  // Throws UsageError naming `where` (flag and file) when the text is not a
  // whole checkpoint of this format.
  static Checkpoint parse(const std::string& text, const std::string& where);
};

// CRC-32 as used in the file's last line.
std::uint32_t crc32(const std::string& bytes);

}  // namespace flashbch
