#include "Tools/utilities/dump.h"

#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <sstream>
#include <stdexcept>
#include <string>

namespace tools {

namespace {

const char kMagic[8] = {'Q', 'F', 'B', 'D', 'U', 'M', 'P', '1'};
enum : uint8_t { kInt64 = 1, kDouble = 2 };

std::string formatDouble(double v) {
  if (std::isnan(v)) return "nan";
  if (std::isinf(v)) return v > 0 ? "inf" : "-inf";
  char buf[40];
  std::snprintf(buf, sizeof buf, "%.17g", v);
  return buf;
}

[[noreturn]] void fail(const std::string& where, const std::string& what) {
  throw std::runtime_error("dump: " + where + ": " + what);
}

// The header line and the count it announces; values follow one per line.
size_t readHeader(std::istream& in, const char* type, int& line) {
  std::string text;
  line = 1;
  if (!std::getline(in, text)) fail("line 1", "missing header");
  std::istringstream header(text);
  std::string tag, t, extra;
  unsigned long long count = 0;
  if (!(header >> tag >> t >> count) || tag != "qfb-dump" || (header >> extra))
    fail("line 1", "header is not 'qfb-dump <type> <count>'");
  if (t != type) fail("line 1", "holds " + t + " values, not " + type);
  return static_cast<size_t>(count);
}

template <typename T, typename Parse>
std::vector<T> readTextValues(std::istream& in, const char* type, Parse parse) {
  int line = 0;
  const size_t count = readHeader(in, type, line);
  std::vector<T> values;
  std::string text;
  while (std::getline(in, text)) {
    ++line;
    if (values.size() == count) {
      if (text.find_first_not_of(" \t\r") != std::string::npos) fail("line " + std::to_string(line), "extra value");
      continue;
    }
    const size_t b = text.find_first_not_of(" \t"), e = text.find_last_not_of(" \t\r");
    if (b == std::string::npos) fail("line " + std::to_string(line), "empty line");
    const std::string token = text.substr(b, e - b + 1);
    char* end = nullptr;
    errno = 0;
    const T v = parse(token.c_str(), &end);
    if (*end != '\0' || errno == ERANGE) fail("line " + std::to_string(line), "'" + token + "' is not a " + type);
    values.push_back(v);
  }
  if (values.size() != count)
    fail("line " + std::to_string(line), "ends after " + std::to_string(values.size()) + " of " +
                                             std::to_string(count) + " values");
  return values;
}

void putLittleEndian(std::ostream& out, uint64_t v) {
  char b[8];
  for (int i = 0; i < 8; ++i) b[i] = static_cast<char>((v >> (8 * i)) & 0xFF);
  out.write(b, 8);
}

bool getLittleEndian(std::istream& in, uint64_t& v) {
  unsigned char b[8];
  if (!in.read(reinterpret_cast<char*>(b), 8)) return false;
  v = 0;
  for (int i = 7; i >= 0; --i) v = (v << 8) | b[i];
  return true;
}

void writeBinary(std::ostream& out, uint8_t type, const uint64_t* words, size_t count) {
  out.write(kMagic, 8);
  out.put(static_cast<char>(type));
  putLittleEndian(out, count);
  for (size_t i = 0; i < count; ++i) putLittleEndian(out, words[i]);
}

std::vector<uint64_t> readBinary(std::istream& in, uint8_t type) {
  char magic[8];
  if (!in.read(magic, 8) || std::memcmp(magic, kMagic, 8) != 0) fail("byte 0", "not a binary dump");
  const int t = in.get();
  if (t != type) fail("byte 8", "type byte " + std::to_string(t) + ", expected " + std::to_string(type));
  uint64_t count = 0;
  if (!getLittleEndian(in, count)) fail("byte 9", "truncated count");
  std::vector<uint64_t> words;
  for (uint64_t i = 0; i < count; ++i) {  // grows with what is really there
    uint64_t w = 0;
    if (!getLittleEndian(in, w))
      fail("byte " + std::to_string(17 + 8 * i), "ends after " + std::to_string(i) + " of " + std::to_string(count) +
                                                     " values");
    words.push_back(w);
  }
  if (in.peek() != std::char_traits<char>::eof()) fail("byte " + std::to_string(17 + 8 * count), "trailing bytes");
  return words;
}

}  // namespace

void writeTextDump(std::ostream& out, const std::vector<int64_t>& values) {
  out << "qfb-dump int64 " << values.size() << '\n';
  for (int64_t v : values) out << v << '\n';
}

void writeTextDump(std::ostream& out, const std::vector<double>& values) {
  out << "qfb-dump double " << values.size() << '\n';
  for (double v : values) out << formatDouble(v) << '\n';
}

std::vector<int64_t> readTextDumpInt64(std::istream& in) {
  return readTextValues<int64_t>(in, "int64", [](const char* s, char** end) {
    return static_cast<int64_t>(std::strtoll(s, end, 10));
  });
}

std::vector<double> readTextDumpDouble(std::istream& in) {
  return readTextValues<double>(in, "double", [](const char* s, char** end) {
    const double v = std::strtod(s, end);
    if (errno == ERANGE && std::fabs(v) < 1.0) errno = 0;  // subnormal results are exact values we wrote
    return v;
  });
}

void writeHexDump(std::ostream& out, const void* data, size_t bytes) {
  const auto* p = static_cast<const uint8_t*>(data);
  char buf[32];
  for (size_t at = 0; at < bytes; at += 16) {
    const size_t len = bytes - at < 16 ? bytes - at : 16;
    std::snprintf(buf, sizeof buf, "%08zx ", at);
    out << buf;
    std::string ascii;
    for (size_t i = 0; i < 16; ++i) {
      if (i < len) {
        std::snprintf(buf, sizeof buf, " %02x", p[at + i]);
        out << buf;
        ascii += std::isprint(p[at + i]) ? static_cast<char>(p[at + i]) : '.';
      } else {
        out << "   ";
      }
    }
    out << "  |" << ascii << "|\n";
  }
}

std::vector<uint8_t> readHexDump(std::istream& in) {
  std::vector<uint8_t> bytes;
  std::string text;
  int line = 0;
  while (std::getline(in, text)) {
    ++line;
    const std::string where = "line " + std::to_string(line);
    const size_t bar = text.find("  |");
    std::istringstream fields(text.substr(0, bar));
    std::string offset;
    if (!(fields >> offset)) fail(where, "missing offset");
    char* end = nullptr;
    const unsigned long long at = std::strtoull(offset.c_str(), &end, 16);
    if (*end != '\0' || at != bytes.size()) fail(where, "offset " + offset + " does not follow the previous line");
    std::string hex;
    int count = 0;
    while (fields >> hex) {
      if (hex.size() != 2 || !std::isxdigit(static_cast<unsigned char>(hex[0])) ||
          !std::isxdigit(static_cast<unsigned char>(hex[1])) || ++count > 16)
        fail(where, "'" + hex + "' is not one of at most 16 hex bytes");
      bytes.push_back(static_cast<uint8_t>(std::strtoul(hex.c_str(), nullptr, 16)));
    }
    if (count == 0) fail(where, "no bytes");
  }
  return bytes;
}

void writeBinaryDump(std::ostream& out, const std::vector<int64_t>& values) {
  std::vector<uint64_t> w(values.begin(), values.end());
  writeBinary(out, kInt64, w.data(), w.size());
}

void writeBinaryDump(std::ostream& out, const std::vector<double>& values) {
  std::vector<uint64_t> w(values.size());
  for (size_t i = 0; i < values.size(); ++i) std::memcpy(&w[i], &values[i], 8);
  writeBinary(out, kDouble, w.data(), w.size());
}

std::vector<int64_t> readBinaryDumpInt64(std::istream& in) {
  const std::vector<uint64_t> w = readBinary(in, kInt64);
  return std::vector<int64_t>(w.begin(), w.end());
}

std::vector<double> readBinaryDumpDouble(std::istream& in) {
  const std::vector<uint64_t> w = readBinary(in, kDouble);
  std::vector<double> v(w.size());
  for (size_t i = 0; i < w.size(); ++i) std::memcpy(&v[i], &w[i], 8);
  return v;
}

}  // namespace tools
