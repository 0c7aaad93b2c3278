#include "blockLayout.h"

#include <cerrno>
#include <cstdlib>

#include "usageError.h"

namespace flashbch {

namespace {

bool parsePositive(const std::string& text, long& value) {
  if (text.empty() || text[0] < '0' || text[0] > '9') return false;
  char* end = nullptr;
  errno = 0;
  value = std::strtol(text.c_str(), &end, 10);
  return errno == 0 && end == text.c_str() + text.size() && value > 0;
}

constexpr long kMaxCodewords = 4096;

}  // namespace

std::int64_t BlockLayout::blockDataBits() const {
  std::int64_t sum = 0;
  for (int k : dataBits) sum += k;
  return sum;
}

std::int64_t BlockLayout::blockStoredBits() const {
  return blockDataBits() + std::int64_t{codewords()} * storedParityBits();
}

std::int64_t BlockLayout::storedOffset(int i) const {
  std::int64_t at = 0;
  for (int j = 0; j < i; ++j) at += storedBits(j);
  return at;
}

std::int64_t BlockLayout::dataOffset(int i) const {
  std::int64_t at = 0;
  for (int j = 0; j < i; ++j) at += dataBits[j];
  return at;
}

std::string BlockLayout::describe() const {
  bool equal = true;
  for (int k : dataBits) equal = equal && k == dataBits.front();
  if (equal && !dataBits.empty()) return std::to_string(codewords()) + "x" + std::to_string(dataBits.front());
  std::string text;
  for (int k : dataBits) text += (text.empty() ? "" : ",") + std::to_string(k);
  return text;
}

std::vector<int> parseLayout(const std::string& text) {
  std::vector<int> dataBits;
  std::string::size_type start = 0;
  while (start <= text.size()) {
    auto comma = text.find(',', start);
    if (comma == std::string::npos) comma = text.size();
    const std::string item = text.substr(start, comma - start);
    const auto x = item.find('x');
    long count = 1, bits = 0;
    const bool ok = x == std::string::npos
                        ? parsePositive(item, bits)
                        : parsePositive(item.substr(0, x), count) && parsePositive(item.substr(x + 1), bits);
    if (!ok)
      throw UsageError("--layout: cannot read '" + item + "' in '" + text +
                       "'; accepted: DATABITS or COUNTxDATABITS items separated by commas, e.g. 4x8192");
    if (count > kMaxCodewords - static_cast<long>(dataBits.size()))
      throw UsageError("--layout: more than " + std::to_string(kMaxCodewords) + " codewords in '" + text + "'");
    if (bits > kLongestCodeword)
      throw UsageError("--layout: " + std::to_string(bits) + " data bits is outside the accepted range 1 .. " +
                       std::to_string(kLongestCodeword - kFieldDegree) +
                       " (data + 15*t <= " + std::to_string(kLongestCodeword) + ")");
    dataBits.insert(dataBits.end(), static_cast<size_t>(count), static_cast<int>(bits));
    start = comma + 1;
  }
  return dataBits;
}

BlockLayout makeLayout(const std::vector<int>& dataBits, int t, bool wholeBytes) {
  if (t < 1 || t > kMaxT)
    throw UsageError("--t: " + std::to_string(t) + " is outside the accepted range 1 .. " + std::to_string(kMaxT));
  BlockLayout layout;
  layout.dataBits = dataBits;
  layout.t = t;
  const int longestData = kLongestCodeword - layout.parityBits();
  for (int i = 0; i < layout.codewords(); ++i) {
    if (dataBits[i] > longestData)
      throw UsageError("--layout: codeword " + std::to_string(i) + " has " + std::to_string(dataBits[i]) +
                       " data bits; with t = " + std::to_string(t) + " the accepted range is 1 .. " +
                       std::to_string(longestData) + " (data + 15*t <= " + std::to_string(kLongestCodeword) + ")");
    if (wholeBytes && dataBits[i] % 8 != 0)
      throw UsageError("--layout: codeword " + std::to_string(i) + " has " + std::to_string(dataBits[i]) +
                       " data bits; page images need whole bytes (a multiple of 8)");
  }
  return layout;
}

}  // namespace flashbch
