// The layout of a flash block as the codec stores it: codewords, each its
// data bits, then 15*t parity bits, then zero padding to whole bytes.
//
// On the command line a layout is a comma-separated list of items, each
// either DATABITS (one codeword) or COUNTxDATABITS (COUNT equal codewords):
// "4x8192", "8192,8192,4096", "2x8192,1024".
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace flashbch {

constexpr int kFieldDegree = 15;
constexpr int kLongestCodeword = (1 << kFieldDegree) - 1;  // 32767 bits in GF(2^15)
constexpr int kMaxT = 128;                                 // the adapter's parity is 15*t only up to here

struct BlockLayout {
  std::vector<int> dataBits;  // per codeword
  int t = 0;

  int codewords() const { return static_cast<int>(dataBits.size()); }
  int parityBits() const { return kFieldDegree * t; }
  int storedParityBits() const { return (parityBits() + 7) / 8 * 8; }
  // Bits a codeword occupies in the block, padding included.
  int storedBits(int i) const { return dataBits[i] + storedParityBits(); }
  // The length of the (shortened) BCH codeword: data plus parity.
  int codeLength(int i) const { return dataBits[i] + parityBits(); }
  std::int64_t blockDataBits() const;
  std::int64_t blockStoredBits() const;
  // Index of the first bit of codeword i in the block and in its data.
  std::int64_t storedOffset(int i) const;
  std::int64_t dataOffset(int i) const;
  // "4x8192" when all codewords are equal, else the explicit list.
  std::string describe() const;
};

// Throws UsageError naming --layout when the text cannot be read.
std::vector<int> parseLayout(const std::string& text);
// Checks t (1 .. kMaxT) and that every codeword fits the field; when
// wholeBytes, also that every data length is a multiple of 8. Throws
// UsageError naming the flag at fault.
BlockLayout makeLayout(const std::vector<int>& dataBits, int t, bool wholeBytes);

}  // namespace flashbch
