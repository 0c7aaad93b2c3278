// Dumps of vectors and memory regions that read back exactly.
//
// Text vector dump: a header line "qfb-dump <type> <count>" (type int64 or
// double), then one value per line; doubles are written with 17 significant
// digits, enough to round-trip every finite value, and inf / nan as such.
//
// Hex dump of a memory region: lines of
//   "OOOOOOOO  hh hh .. hh  |ascii|"
// with an 8-digit hexadecimal offset, up to 16 bytes in hex and the same
// bytes as printable ASCII ('.' for the rest); the reader takes the hex
// bytes and checks that the offsets run on.
//
// Binary vector dump: the 8 bytes "QFBDUMP1", one type byte (1 = int64,
// 2 = double), the count as 8 bytes little-endian, then the values as 8
// bytes each, little-endian (doubles as their IEEE-754 bit pattern), so a
// file reads the same on every target.
//
// Readers throw std::runtime_error naming the line or byte offset of the
// first fault; they never read past the end of their input.
#pragma once

#include <cstdint>
#include <istream>
#include <ostream>
#include <vector>

namespace tools {

void writeTextDump(std::ostream& out, const std::vector<int64_t>& values);
void writeTextDump(std::ostream& out, const std::vector<double>& values);
std::vector<int64_t> readTextDumpInt64(std::istream& in);
std::vector<double> readTextDumpDouble(std::istream& in);

void writeHexDump(std::ostream& out, const void* data, size_t bytes);
std::vector<uint8_t> readHexDump(std::istream& in);

void writeBinaryDump(std::ostream& out, const std::vector<int64_t>& values);
void writeBinaryDump(std::ostream& out, const std::vector<double>& values);
std::vector<int64_t> readBinaryDumpInt64(std::istream& in);
std::vector<double> readBinaryDumpDouble(std::istream& in);

}  // namespace tools
