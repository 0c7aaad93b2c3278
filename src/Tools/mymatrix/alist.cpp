#include "Tools/mymatrix/alist.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <vector>

namespace tools {

namespace {

// Header sizes beyond this are refused before any allocation.
constexpr uint64_t kMaxDimension = uint64_t{1} << 28;

struct Token {
  uint64_t value;
  size_t line;
};

class TokenStream {
 public:
  explicit TokenStream(std::istream& in) {
    std::string digits;
    size_t line = 1, startLine = 1;
    const auto flush = [&] {
      if (digits.empty()) return;
      if (digits.size() > 18) fail(startLine, "number " + digits.substr(0, 24) + "... is too large");
      tokens_.push_back({std::stoull(digits), startLine});
      digits.clear();
    };
    for (int ch; (ch = in.get()) != std::char_traits<char>::eof();) {
      if (std::isdigit(ch)) {
        if (digits.empty()) startLine = line;
        digits += static_cast<char>(ch);
      } else if (std::isspace(ch)) {
        flush();
        if (ch == '\n') ++line;
      } else {
        fail(line, std::string("unexpected character '") + (std::isprint(ch) ? std::string(1, static_cast<char>(ch))
                                                                                : "\\x" + std::to_string(ch)) +
                       "' (only non-negative whole numbers are allowed)");
      }
    }
    flush();
    endLine_ = line;
  }

  [[noreturn]] static void fail(size_t line, const std::string& what) {
    throw AlistError("alist line " + std::to_string(line) + ": " + what);
  }
  size_t remaining() const { return tokens_.size() - next_; }
  size_t line() const { return next_ < tokens_.size() ? tokens_[next_].line : endLine_; }
  const Token& take(const char* what) {
    if (next_ >= tokens_.size()) fail(endLine_, std::string("file ends before ") + what);
    return tokens_[next_++];
  }
  void skipZeros() {
    while (next_ < tokens_.size() && tokens_[next_].value == 0) ++next_;
  }

 private:
  std::vector<Token> tokens_;
  size_t next_ = 0, endLine_ = 1;
};

// Reads `count` weights, each at most `max`; returns them and their sum.
std::vector<size_t> readWeights(TokenStream& ts, size_t count, uint64_t max, const char* what, uint64_t& sum) {
  if (count > ts.remaining()) TokenStream::fail(ts.line(), std::string("file ends before the ") + what);
  std::vector<size_t> w(count);
  sum = 0;
  for (size_t i = 0; i < count; ++i) {
    const Token& t = ts.take(what);
    if (t.value > max)
      TokenStream::fail(t.line, std::string(what) + " " + std::to_string(i + 1) + " is " + std::to_string(t.value) +
                                    ", above the stated maximum " + std::to_string(max));
    w[i] = static_cast<size_t>(t.value);
    sum += t.value;
  }
  return w;
}

// One index list: weight entries in 1..limit, distinct, then optional zeros.
std::vector<size_t> readList(TokenStream& ts, size_t weight, uint64_t limit, const std::string& what) {
  std::vector<size_t> list(weight);
  for (size_t k = 0; k < weight; ++k) {
    const Token& t = ts.take(what.c_str());
    if (t.value == 0 || t.value > limit)
      TokenStream::fail(t.line, what + ": index " + std::to_string(t.value) + " is outside 1 .. " +
                                    std::to_string(limit));
    list[k] = static_cast<size_t>(t.value - 1);
  }
  std::vector<size_t> sorted = list;
  std::sort(sorted.begin(), sorted.end());
  const auto dup = std::adjacent_find(sorted.begin(), sorted.end());
  if (dup != sorted.end()) TokenStream::fail(ts.line(), what + ": index " + std::to_string(*dup + 1) + " is repeated");
  ts.skipZeros();
  return sorted;
}

}  // namespace

SparseBinaryMatrix readAlist(std::istream& in) {
  TokenStream ts(in);
  const Token& nTok = ts.take("the number of columns");
  const Token& mTok = ts.take("the number of rows");
  const uint64_t n = nTok.value, m = mTok.value;
  if (n == 0 || m == 0 || n > kMaxDimension || m > kMaxDimension)
    TokenStream::fail(nTok.line, "size " + std::to_string(n) + " x " + std::to_string(m) +
                                     " (columns x rows) is outside 1 .. " + std::to_string(kMaxDimension));
  const Token& maxColTok = ts.take("the largest column weight");
  const Token& maxRowTok = ts.take("the largest row weight");
  if (maxColTok.value > m || maxRowTok.value > n)
    TokenStream::fail(maxColTok.line, "largest weights " + std::to_string(maxColTok.value) + " " +
                                          std::to_string(maxRowTok.value) + " exceed the matrix size");
  uint64_t colSum = 0, rowSum = 0;
  const std::vector<size_t> colWeights = readWeights(ts, n, maxColTok.value, "column weight", colSum);
  const std::vector<size_t> rowWeights = readWeights(ts, m, maxRowTok.value, "row weight", rowSum);
  if (colSum != rowSum)
    TokenStream::fail(ts.line(), "column weights sum to " + std::to_string(colSum) + ", row weights to " +
                                     std::to_string(rowSum));
  if (colSum + rowSum > ts.remaining())
    TokenStream::fail(ts.line(), "file ends before the " + std::to_string(colSum) + " ones of the index lists");

  std::vector<std::pair<size_t, size_t>> ones;
  ones.reserve(colSum);
  for (size_t j = 0; j < n; ++j)
    for (size_t r : readList(ts, colWeights[j], m, "column " + std::to_string(j + 1))) ones.emplace_back(r, j);
  SparseBinaryMatrix h(m, n, ones);
  for (size_t i = 0; i < m; ++i) {
    const size_t line = ts.line();
    if (readList(ts, rowWeights[i], n, "row " + std::to_string(i + 1)) != h.row(i))
      TokenStream::fail(line, "row " + std::to_string(i + 1) + " disagrees with the column lists");
  }
  if (ts.remaining() != 0) TokenStream::fail(ts.line(), "data after the last row list");
  return h;
}

void writeAlist(std::ostream& out, const SparseBinaryMatrix& h) {
  size_t maxCol = 0, maxRow = 0;
  for (size_t j = 0; j < h.cols(); ++j) maxCol = std::max(maxCol, h.col(j).size());
  for (size_t i = 0; i < h.rows(); ++i) maxRow = std::max(maxRow, h.row(i).size());
  out << h.cols() << ' ' << h.rows() << '\n' << maxCol << ' ' << maxRow << '\n';
  const auto weights = [&out](size_t count, auto list) {
    for (size_t k = 0; k < count; ++k) out << (k ? " " : "") << list(k).size();
    out << '\n';
  };
  weights(h.cols(), [&h](size_t j) -> const std::vector<size_t>& { return h.col(j); });
  weights(h.rows(), [&h](size_t i) -> const std::vector<size_t>& { return h.row(i); });
  const auto lists = [&out](size_t count, size_t pad, auto list) {
    for (size_t k = 0; k < count; ++k) {
      const std::vector<size_t>& l = list(k);
      for (size_t e = 0; e < pad; ++e) out << (e ? " " : "") << (e < l.size() ? l[e] + 1 : 0);
      out << '\n';
    }
  };
  lists(h.cols(), maxCol, [&h](size_t j) -> const std::vector<size_t>& { return h.col(j); });
  lists(h.rows(), maxRow, [&h](size_t i) -> const std::vector<size_t>& { return h.row(i); });
}

}  // namespace tools
