// The flash adapter step by step: for each codeword build the message or
// received word with its zero fill, construct a fresh code for that length,
// run it, copy out, convert the diagnostics to polynomial-basis integers.
#include "support/referenceFlashBch.h"

#include <algorithm>
#include <cmath>

#include "gf/exp2Int15.h"
#include "gf/gf2m.h"
#include "support/referenceBch.h"

ReferenceFlashBCH::ReferenceFlashBCH() {
  int coefficients[16] = {};
  coefficients[0] = coefficients[14] = coefficients[15] = 1;
  field = new GF2m(m, coefficients, 15, exp2Int15.data(), kExp2Int15Size);
}

ReferenceFlashBCH::~ReferenceFlashBCH() { delete field; }

void ReferenceFlashBCH::init(int numCodewords_, const int* dataLengths_, int t_, bool bypass_, bool byteAlign,
                             int tDecode_, int lengthUnit_, int placement_) {
  numCodewords = numCodewords_;
  bypass = bypass_;
  t = t_;
  tDecode = tDecode_;
  placement = placement_;
  lengthUnit = lengthUnit_;
  if (tDecode > t) tDecode = t;
  if (tDecode == -1) tDecode = t;
  dataLengths.assign(dataLengths_, dataLengths_ + numCodewords);
  parityLen = t * m;
  const int rounded = static_cast<int>(8 * std::ceil(m * (t * 0.125)));
  storedParityLen = byteAlign ? rounded : parityLen;
  if (bypass) storedParityLen = 0;
  syndromes.assign(numCodewords, std::vector<int>(2 * t, 0));
  lambdas.assign(numCodewords, std::vector<int>(std::max(2 * tDecode + 1, 0), 0));
}

int ReferenceFlashBCH::messageLength(int index) const {
  const int len = dataLengths[index];
  if (lengthUnit == 0) return len;
  const double L = lengthUnit;
  return static_cast<int>(std::floor((len + L - 1) / L) * L);
}

void ReferenceFlashBCH::encode(const int* in, int* out, int index) {
  const int len = dataLengths[index];
  if (bypass || t == 0) {
    std::copy(in, in + len, out);
    return;
  }
  const int k = messageLength(index);
  const int fill = k - len;
  ReferenceBCH code(field, 0, t, 1, k);
  std::vector<int> message(k, 0), codeword(k + storedParityLen, 0);
  std::copy(in, in + len, message.begin() + (placement == 0 ? fill : 0));
  code.encode(message.data(), codeword.data());
  if (placement == 1) {
    std::copy(codeword.begin(), codeword.begin() + len, out);
    std::copy(codeword.begin() + k, codeword.begin() + k + parityLen, out + len);
  } else {
    std::copy(codeword.begin() + fill, codeword.begin() + fill + len + parityLen, out);
  }
  std::fill(out + len + parityLen, out + len + storedParityLen, 0);
}

int ReferenceFlashBCH::decode(const int* in, int* out, int index) {
  const int len = dataLengths[index];
  if (bypass || t == 0) {
    std::copy(in, in + len, out);
    return 0;
  }
  const int k = messageLength(index);
  const int fill = k - len;
  std::vector<int> result(k + parityLen), received(k + storedParityLen, 0);
  if (placement == 1) {
    std::copy(in, in + len, received.begin());
    std::copy(in, in + storedParityLen, received.begin() + k);
  } else {
    std::copy(in, in + len + storedParityLen, received.begin() + fill);
  }
  ReferenceBCH code(field, 0, t, 1, k);
  const int r = code.decode(received.data(), result.data(), false, tDecode) == 0 ? 1 : 0;
  code.returnSyndromes(syndromes[index].data(), 2 * t);
  code.returnLambda(lambdas[index].data(), 2 * tDecode + 1);
  for (int& s : syndromes[index]) s = field->exp2Int(s);
  for (int& l : lambdas[index]) l = field->exp2Int(l);
  std::copy(result.begin() + (placement == 1 ? 0 : fill), result.begin() + (placement == 1 ? 0 : fill) + len, out);
  return r;
}

void ReferenceFlashBCH::encode_au(const int* in, int* out) {
  for (int i = 0, a = 0, b = 0; i < numCodewords; ++i) {
    encode(in + a, out + b, i);
    a += dataLengths[i];
    b += dataLengths[i] + storedParityLen;
  }
}

int ReferenceFlashBCH::decode_au(const int* in, int* out, int* results) {
  int sum = 0;
  for (int i = 0, a = 0, b = 0; i < numCodewords; ++i) {
    const int r = decode(in + a, out + b, i);
    if (results) results[i] = r;
    sum += r;
    a += dataLengths[i] + storedParityLen;
    b += dataLengths[i];
  }
  return sum;
}

void ReferenceFlashBCH::getSyndromes(int** out) const {
  for (int i = 0; i < numCodewords; ++i) std::copy(syndromes[i].begin(), syndromes[i].end(), out[i]);
}

void ReferenceFlashBCH::getLambda(int** out) const {
  for (int i = 0; i < numCodewords; ++i) std::copy(lambdas[i].begin(), lambdas[i].end(), out[i]);
}
