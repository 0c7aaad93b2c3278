// Reed-Solomon code construction over GF(2^m): the generator polynomial,
// the list search's stored schedule, the run-length-limited wrapping of
// symbol streams and the bit <-> symbol packing. Encoding, syndromes,
// decoding within the bound and one error beyond it live in rsEncoder.cpp,
// rsSyndromes.cpp, rsErrorsAndErasures.cpp and rsBeyondBound.cpp.
#include "rsecc/rsecc.h"

#include <algorithm>
#include <fstream>
#include <iostream>

#include "Tools/code30_31nrz_v2.h"
#include "gf/gf.h"
#include "rsecc/rseccFatal.h"

using rsecc_detail::fatal;

namespace {

// The list decoder's stored schedule: each row is a zero-terminated list of
// (a, b) pairs, a in 1..6 and b in 1..2.
const int kScheduleRows = 70;
const int kScheduleCols = 24;
const int kSchedulePairs[kScheduleRows][kScheduleCols] = {
    {1, 1},
    {4, 2},
    {2, 1},
    {5, 1},
    {3, 1},
    {4, 2, 4, 1},
    {6, 1},
    {5, 1, 5, 2},
    {1, 1, 6, 1},
    {1, 1, 2, 1},
    {2, 1, 3, 1},
    {4, 2, 4, 1, 1, 1},
    {4, 2, 4, 1, 2, 1},
    {2, 1, 5, 1},
    {3, 1, 1, 1},
    {4, 2, 4, 1, 5, 1},
    {5, 1, 5, 2, 6, 1},
    {3, 1, 4, 1},
    {2, 1, 5, 1, 5, 2},
    {5, 1, 5, 2, 3, 1},
    {6, 1, 2, 1},
    {4, 2, 4, 1, 5, 1, 5, 2},
    {5, 1, 5, 2, 1, 1},
    {3, 1, 4, 1, 4, 2},
    {2, 1, 5, 1, 5, 2, 3, 1},
    {5, 1, 5, 2, 6, 1, 2, 1},
    {1, 1, 2, 1, 3, 1},
    {5, 1, 5, 2, 6, 1, 3, 1},
    {1, 1, 2, 1, 6, 1},
    {4, 2, 4, 1, 5, 1, 5, 2, 2, 1},
    {5, 1, 5, 2, 1, 1, 2, 1},
    {1, 1, 2, 1, 4, 1},
    {5, 1, 5, 2, 1, 1, 3, 1},
    {2, 1, 5, 1, 5, 2, 3, 1, 1, 1},
    {4, 2, 4, 1, 5, 1, 5, 2, 2, 1, 3, 1},
    {2, 1, 5, 1, 5, 2, 3, 1, 6, 1},
    {1, 1, 2, 1, 4, 1, 4, 2},
    {4, 2, 4, 1, 5, 1, 5, 2, 2, 1, 6, 1},
    {6, 1, 3, 1},
    {4, 2, 4, 1, 5, 1, 5, 2, 1, 1},
    {4, 2, 4, 1, 5, 1, 5, 2, 6, 1},
    {6, 1, 4, 1},
    {3, 1, 4, 1, 4, 2, 1, 1},
    {4, 2, 4, 1, 5, 1, 5, 2, 3, 1},
    {3, 1, 4, 1, 4, 2, 2, 1},
    {5, 1, 5, 2, 1, 1, 6, 1},
    {6, 1, 4, 1, 4, 2},
    {4, 2, 4, 1, 5, 1, 5, 2, 1, 1, 6, 1},
    {3, 1, 4, 1, 4, 2, 6, 1},
    {4, 2, 4, 1, 5, 1, 5, 2, 1, 1, 2, 1},
    {6, 1, 3, 1, 2, 1},
    {4, 2, 4, 1, 5, 1, 5, 2, 3, 1, 1, 1},
    {6, 1, 3, 1, 1, 1},
    {4, 2, 4, 1, 5, 1, 5, 2, 3, 1, 6, 1},
    {6, 1, 4, 1, 4, 2, 1, 1},
    {5, 1, 5, 2, 1, 1, 6, 1, 3, 1},
    {6, 1, 4, 1, 4, 2, 2, 1},
    {5, 1, 5, 2, 1, 1, 6, 1, 2, 1},
    {1, 1, 2, 1, 4, 1, 4, 2, 6, 1},
    {4, 2, 4, 1, 5, 1, 5, 2, 1, 1, 2, 1, 6, 1},
    {1, 1, 2, 1, 4, 1, 4, 2, 3, 1},
    {4, 2, 4, 1, 5, 1, 5, 2, 1, 1, 2, 1, 3, 1},
    {3, 1, 4, 1, 4, 2, 6, 1, 1, 1},
    {4, 2, 4, 1, 5, 1, 5, 2, 3, 1, 6, 1, 1, 1},
    {3, 1, 4, 1, 4, 2, 6, 1, 2, 1},
    {4, 2, 4, 1, 5, 1, 5, 2, 3, 1, 6, 1, 2, 1},
    {6, 1, 3, 1, 1, 1, 2, 1},
    {5, 1, 5, 2, 1, 1, 6, 1, 2, 1, 3, 1},
    {1, 1, 2, 1, 4, 1, 4, 2, 3, 1, 6, 1},
    {4, 2, 4, 1, 5, 1, 5, 2, 1, 1, 2, 1, 3, 1, 6, 1},
};

}  // namespace

RSECC::RSECC(GF* field, int t_, int nParity_, bool maskInput_, int b0_)
    : gf(field->clone()), t(t_), b0(b0_), maskInput(maskInput_) {
  nParity = nParity_;
  if (nParity == -1) {
    nParity = 2 * t;
  } else if (nParity < 2 * t) {
    std::cout << "RSECC::RSECC: _nPritySymbols is less than the 2*t" << std::endl;
  }
  genPoly.assign(nParity + 1, gf->getZero());
  buildGenerator(nParity, genPoly.data());

  listWork.assign(4 * t > 0 ? 4 * t : 0, std::vector<int>(3 * t + 2 > 0 ? 3 * t + 2 : 0, 0));
  if (nParity_ != -1 && nParity_ > 2 * t) {
    trueValidityTest = true;
    std::cout << "ADV ECC::USING TRUE VALIDITY TEST" << std::endl;
  }
  listStepsPerError = 2;
  readSchedule();
  rll = std::make_unique<Code30_31nrz_v2>();
  eccRll = true;
  listParamA = 16;
  listParamB = 18;
  listParamC = 34;
  listParamD = 27;
  listParamE = 27;
  useUpperSyndromes = 0;
  listDebug = false;
  syndromes.assign(nParity > 0 ? nParity : 0, gf->getZero());
}

RSECC::~RSECC() = default;

// g = (x + alpha^b0) ... (x + alpha^(b0+degree-1)), leading first, degree+1 entries.
// The root exponents are handed to multiply() unreduced.
void RSECC::buildGenerator(int degree, int* g) {
  const int one = gf->getOne();
  g[0] = one;
  if (degree < 1) return;
  g[1] = b0;
  std::vector<int> product(degree + 1);
  for (int i = 2; i <= degree; ++i) {
    const int factor[2] = {one, b0 + i - 1};
    gf->polyMult(g, i - 1, factor, 1, product.data(), i);
    std::copy(product.begin(), product.begin() + i + 1, g);
  }
}

void RSECC::readSchedule() {
  scheduleKind = 3;
  scheduleRows = kScheduleRows;
  scheduleCols = kScheduleCols;
  schedule.assign(scheduleRows, std::vector<int>());
  for (int r = 0; r < scheduleRows; ++r)
    schedule[r].assign(kSchedulePairs[r], kSchedulePairs[r] + scheduleCols);
}

std::vector<int> RSECC::getSchedule() const {
  std::vector<int> flat;
  for (const std::vector<int>& row : schedule) flat.insert(flat.end(), row.begin(), row.end());
  return flat;
}

void RSECC::getGenPoly(int* out, int count) const {
  std::copy(genPoly.begin(), genPoly.begin() + count, out);
}

// One line per generator degree, for the two families of codes with
// t = 16, 18, ..., 36: 2t parity symbols, and 2t+1 (one extra syndrome for
// the validity test).
void RSECC::logValidRsEccGenPoly() {
  std::ofstream out("validRsEccGenPoly.txt", std::ios::out | std::ios::trunc);
  std::vector<int> g(74);
  const char* headers[2] = {"Valid RS ECC generator polynomials, t=16:2:36, AECC off",
                            "Valid RS ECC generator polynomials, t=16:2:36, AECC on"};
  for (int extra = 0; extra < 2; ++extra) {
    out << headers[extra] << "\n";
    for (int d = 32 + extra; d < 76; d += 4) {
      buildGenerator(d, g.data());
      for (int i = 0; i <= d; ++i) out << gf->exp2Int(g[i]) << " ";
      out << "\n";
    }
  }
}

// Whole words go through the block coder; a tail shorter than a word is
// one of the run-length-limited code's partial words.
int RSECC::lrRllEncode(int* in, int nIn, int* out, int /*nOut*/) {
  const int w = rll->getK(), c = rll->getN();
  const int words = nIn / w;
  int result = rll->block_encode(in, out, words, true);
  if (nIn % w != 0) result = rll->encodePartialWord(in + words * w, out + words * c, nIn - words * w, true);
  return result;
}

// The partial codeword's length is derived from the expected output: a
// 10-bit tail was copied as is, any other tail gained one coded bit.
int RSECC::lrRllDecode(int* in, int nIn, int* out, int nOut) {
  const int w = rll->getK(), c = rll->getN();
  const int words = nIn / c;
  if (nIn % c == 0) return rll->block_decode(in, out, words, true);
  int rest = nOut - words * w;
  if (rest != 10) rest += 1;
  rll->block_decode(in, out, words, true);
  return rll->decodePartialCodeword(in + words * c, out + words * w, rest, true);
}

int RSECC::decodeErrorAndUnknownErasure(int* /*cw*/, int /*n*/, int /*nUnknown*/, int /*tUse*/) {
  fatal("RSECC::decodeErrorAndUnknownErasure() has not been finished");
}

bool RSECC::isZeroPoly(const int* p, int count) const {
  for (int i = 0; i < count; ++i)
    if (p[i] != gf->getZero()) return false;
  return true;
}

int RSECC::effectiveT(int tUse) const {
  if (tUse == -1) tUse = t;
  return std::max(0, std::min(tUse, nParity / 2));
}

// ---------------------------------------------------------------------------
// Bit and symbol packing (m bits per symbol, most significant first)

void RSECC::bitStream2symbolStream(const int* bits, int nBits, int* symbols, int nSymbols, int m) {
  for (int i = 0; i < nSymbols; ++i) {
    const int start = i * m, count = std::min(nBits - start, m);
    int value = 0;
    for (int b = 0; b < count; ++b) value = (value << 1) | (bits[start + b] > 0 ? 1 : 0);
    symbols[i] = gf->int2Exp(value);
  }
}

void RSECC::bitStream2symbolStreamReverseOrderInt(const int* values, int /*nValues*/, int* symbols,
                                                  int nSymbols, int m) {
  for (int i = 0; i < nSymbols; ++i) {
    int value = 0;
    for (int b = 0; b < m; ++b) value = (value << 1) | ((values[i * m + b] + 1) / 2);
    symbols[i] = value;
  }
}

void RSECC::symbolStream2bitStream(const int* symbols, int nSymbols, int* bits, int nBits, int m) {
  for (int i = 0; i < nSymbols; ++i) {
    const int start = i * m, count = std::min(nBits - start, m);
    const int value = gf->exp2Int(symbols[i]);
    for (int b = 0; b < count; ++b) bits[start + b] = (value >> (count - 1 - b)) & 1;
  }
}
