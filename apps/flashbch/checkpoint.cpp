#include "checkpoint.h"

#include <array>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <sstream>

#include "usageError.h"

namespace flashbch {

namespace {

const char* const kMagic = "flashbch checkpoint ";
const char* const kChecksumTag = "crc32 ";

// Remainders of every byte value by the reflected polynomial 0xEDB88320.
std::array<std::uint32_t, 256> makeCrcTable() {
  std::array<std::uint32_t, 256> table{};
  for (std::uint32_t byte = 0; byte < 256; ++byte) {
    std::uint32_t r = byte;
    for (int bit = 0; bit < 8; ++bit) r = (r >> 1) ^ (0xEDB88320u & (0u - (r & 1u)));
    table[byte] = r;
  }
  return table;
}

std::string hexFloat(double value) {
  char buffer[64];
  std::snprintf(buffer, sizeof buffer, "%a", value);
  return buffer;
}

std::string checksumLine(std::uint32_t crc) {
  char line[32];
  std::snprintf(line, sizeof line, "%s%08" PRIx32 "\n", kChecksumTag, crc);
  return line;
}

// Reads the fields of one point line; false on anything malformed.
bool readPoint(std::istringstream& in, PointState& p) {
  std::string state, word, seconds;
  if (!(in >> p.point >> state) || p.point < 0 || (state != "finished" && state != "running")) return false;
  p.finished = state == "finished";
  if (!(in >> word >> p.rounds) || word != "rounds" || p.rounds < 0) return false;
  if (!(in >> word >> seconds) || word != "seconds") return false;
  char* end = nullptr;
  p.seconds = std::strtod(seconds.c_str(), &end);
  if (*end != '\0') return false;
  std::int64_t n = 0;
  if (!(in >> word >> n) || word != "counts" || n < 0 || n > 1 << 24) return false;
  p.counts.resize(static_cast<size_t>(n));
  for (auto& c : p.counts)
    if (!(in >> c)) return false;
  if (!(in >> word >> n) || word != "reals" || n < 0 || n > 1 << 24) return false;
  p.reals.resize(static_cast<size_t>(n));
  for (auto& r : p.reals) {
    if (!(in >> word)) return false;
    r = std::strtod(word.c_str(), &end);
    if (*end != '\0') return false;
  }
  return !(in >> word);
}

}  // namespace

std::uint32_t crc32(const std::string& bytes) {
  static const std::array<std::uint32_t, 256> table = makeCrcTable();
  std::uint32_t r = 0xFFFFFFFFu;
  for (unsigned char c : bytes) r = (r >> 8) ^ table[(r ^ c) & 0xFFu];
  return r ^ 0xFFFFFFFFu;
}

void SettingsFingerprint::add(const std::string& name, const std::string& value) {
  if (name.empty() || name.find_first_of(" \n") != std::string::npos || value.find('\n') != std::string::npos)
    throw std::invalid_argument("settings fingerprint: bad field '" + name + "'");
  fields_.emplace_back(name, value);
}

std::string SettingsFingerprint::firstDifference(const SettingsFingerprint& commandLine) const {
  const auto& other = commandLine.fields_;
  for (size_t i = 0; i < fields_.size() || i < other.size(); ++i) {
    if (i == other.size()) return fields_[i].first + " is set in the checkpoint but not on this command line";
    if (i == fields_.size()) return other[i].first + " is set on this command line but not in the checkpoint";
    if (fields_[i].first != other[i].first)
      return "the checkpoint has " + fields_[i].first + " where this command line has " + other[i].first;
    if (fields_[i].second != other[i].second)
      return fields_[i].first + " is " + fields_[i].second + " in the checkpoint, " + other[i].second +
             " on the command line";
  }
  return "";
}

bool PointState::operator==(const PointState& o) const {
  // Bit-for-bit, which is what a round trip through the file must keep.
  auto same = [](double a, double b) { return hexFloat(a) == hexFloat(b); };
  if (point != o.point || finished != o.finished || rounds != o.rounds || !same(seconds, o.seconds) ||
      counts != o.counts || reals.size() != o.reals.size())
    return false;
  for (size_t i = 0; i < reals.size(); ++i)
    if (!same(reals[i], o.reals[i])) return false;
  return true;
}

std::string Checkpoint::serialize() const {
  std::ostringstream out;
  out << kMagic << kFormatVersion << '\n';
  for (const auto& [name, value] : settings.fields()) out << "setting " << name << ' ' << value << '\n';
  for (const PointState& p : points) {
    out << "point " << p.point << (p.finished ? " finished" : " running") << " rounds " << p.rounds << " seconds "
        << hexFloat(p.seconds) << " counts " << p.counts.size();
    for (std::int64_t c : p.counts) out << ' ' << c;
    out << " reals " << p.reals.size();
    for (double r : p.reals) out << ' ' << hexFloat(r);
    out << '\n';
  }
  const std::string body = out.str();
  return body + checksumLine(crc32(body));
}

Checkpoint Checkpoint::parse(const std::string& text, const std::string& where) {
  const auto refuse = [&](const std::string& why) -> UsageError { return UsageError(where + ": " + why); };
  if (text.empty()) throw refuse("the file is empty");
  if (text.compare(0, std::string(kMagic).size(), kMagic) != 0) throw refuse("not a flashbch checkpoint");

  // The checksum line closes the file; without it the file was cut short.
  const size_t last = text.size() >= 2 ? text.rfind('\n', text.size() - 2) : std::string::npos;
  const std::string tail = last == std::string::npos ? "" : text.substr(last + 1);
  if (text.back() != '\n' || tail.size() != checksumLine(0).size() || tail.compare(0, 6, kChecksumTag) != 0)
    throw refuse("the file is truncated (its closing checksum line is missing)");
  const std::string body = text.substr(0, last + 1);
  if (tail != checksumLine(crc32(body))) throw refuse("the file is corrupt (its checksum does not match its content)");

  std::istringstream lines(body);
  std::string line;
  std::getline(lines, line);
  if (line != kMagic + std::to_string(kFormatVersion))
    throw refuse("written in checkpoint format '" + line.substr(std::string(kMagic).size()) +
                 "'; this flashbch reads format " + std::to_string(kFormatVersion));
  Checkpoint checkpoint;
  for (int number = 2; std::getline(lines, line); ++number) {
    std::istringstream in(line);
    std::string kind;
    in >> kind;
    bool ok = false;
    if (kind == "setting") {
      std::string name, value;
      ok = static_cast<bool>(in >> name);
      in.get();
      std::getline(in, value);
      if (ok) checkpoint.settings.add(name, value);
    } else if (kind == "point") {
      PointState p;
      ok = readPoint(in, p);
      checkpoint.points.push_back(std::move(p));
    }
    if (!ok) throw refuse("line " + std::to_string(number) + " cannot be read: " + line);
  }
  // Points come in order, and only the last may still be running.
  const auto& points = checkpoint.points;
  for (size_t i = 0; i < points.size(); ++i)
    if (points[i].point != static_cast<int>(i) || (!points[i].finished && i + 1 != points.size()))
      throw refuse("its points are out of order");
  return checkpoint;
}

}  // namespace flashbch
