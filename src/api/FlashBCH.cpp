#include "api/FlashBCH.h"

#include <algorithm>
#include <cmath>

#include "bch/bch.h"
#include "gf/exp2Int15.h"
#include "gf/gf2m.h"

IFlashBCH* create_flashBCH() { return new FlashBCH(); }

FlashBCH::FlashBCH() {
  // x^15 + x + 1, leading coefficient first. The field is handed the stored
  // table of powers in memory, so creation touches no file.
  int coefficients[16] = {};
  coefficients[0] = coefficients[14] = coefficients[15] = 1;
  field = new GF2m(m, coefficients, 15, exp2Int15.data(), kExp2Int15Size);
}

FlashBCH::~FlashBCH() {
  cleanGFBCH();
  reset();
}

void FlashBCH::cleanGFBCH() {
  // The cached codes borrow the field; they must go first.
  codesByLength.clear();
  delete field;
  field = nullptr;
}

void FlashBCH::reset() {
  delete[] dataLengths;
  dataLengths = nullptr;
  code = nullptr;
  codesByLength.clear();
  if (syndromes) {
    for (int i = 0; i < numCodewords; ++i) delete[] syndromes[i];
    delete[] syndromes;
    syndromes = nullptr;
  }
  if (lambdas) {
    for (int i = 0; i < numCodewords; ++i) delete[] lambdas[i];
    delete[] lambdas;
    lambdas = nullptr;
  }
}

void FlashBCH::init(int numCodewords_, int* dataLengths_, int t_, bool bypass_, bool byteAlignParity_,
                    int tDecode_, int lengthUnit_, int placement_) {
  reset();
  numCodewords = numCodewords_;
  bypass = bypass_;
  t = t_;
  dataLengths = new int[std::max(numCodewords, 0)];
  tDecode = tDecode_;
  byteAlignParity = byteAlignParity_;
  placement = placement_;
  lengthUnit = lengthUnit_;
  if (tDecode > t) tDecode = t;
  if (tDecode == -1) tDecode = t;
  std::copy(dataLengths_, dataLengths_ + std::max(numCodewords, 0), dataLengths);

  parityLen = t * m;
  const int rounded = static_cast<int>(8 * std::ceil(m * (t * 0.125)));
  padBits = rounded - parityLen;
  storedParityLen = byteAlignParity ? rounded : parityLen;
  if (bypass) storedParityLen = 0;

  syndromes = new int*[std::max(numCodewords, 0)];
  lambdas = new int*[std::max(numCodewords, 0)];
  for (int i = 0; i < numCodewords; ++i) {
    syndromes[i] = new int[std::max(2 * t, 0)]();
    lambdas[i] = new int[lambdaLength()]();
  }
}

int FlashBCH::messageLength(int index) const {
  const int len = dataLengths[index];
  if (lengthUnit == 0) return len;
  const double L = lengthUnit;
  return static_cast<int>(std::floor((len + L - 1) / L) * L);
}

BCH* FlashBCH::codeFor(int k) {
  std::unique_ptr<BCH>& slot = codesByLength[k];
  if (!slot) slot = std::make_unique<BCH>(field, 0, t, 1, k);
  return slot.get();
}

void FlashBCH::encode(int* in, int* out, int index) {
  const int len = dataLengths[index];
  if (bypass || t == 0) {
    std::copy(in, in + len, out);
    return;
  }
  const int k = messageLength(index);
  const int fill = k - len;
  code = codeFor(k);
  message.assign(k, 0);
  codeword.assign(static_cast<size_t>(k) + storedParityLen, 0);
  if (placement == 0) std::copy(in, in + len, message.begin() + fill);
  if (placement == 1) std::copy(in, in + len, message.begin());
  code->encode(message.data(), codeword.data());
  if (placement == 1) {
    std::copy(codeword.begin(), codeword.begin() + len, out);
    std::copy(codeword.begin() + k, codeword.begin() + k + parityLen, out + len);
  } else {
    std::copy(codeword.begin() + fill, codeword.begin() + fill + len + parityLen, out);
  }
  std::fill(out + len + parityLen, out + len + storedParityLen, 0);
  code = nullptr;
}

int FlashBCH::decode(int* in, int* out, int index) {
  const int len = dataLengths[index];
  if (bypass || t == 0) {
    std::copy(in, in + len, out);
    return 0;
  }
  const int k = messageLength(index);
  const int fill = k - len;
  codeword.assign(static_cast<size_t>(k) + parityLen, 0);
  received.assign(static_cast<size_t>(k) + storedParityLen, 0);
  if (placement == 1) {
    // The stored parity is taken from the start of the input (the data),
    // not from the parity that follows it; kept as the established reading.
    std::copy(in, in + len, received.begin());
    std::copy(in, in + storedParityLen, received.begin() + k);
  } else {
    std::copy(in, in + len + storedParityLen, received.begin() + fill);
  }
  code = codeFor(k);
  const int corrected = code->decode(received.data(), codeword.data(), false, tDecode);
  const int result = corrected == 0 ? 1 : 0;

  if (tDecode == 0) {
    // A decoder told not to decode computes nothing; a fresh code object
    // would then report its initial contents, the zero element throughout.
    std::fill(syndromes[index], syndromes[index] + 2 * t, 0);
    std::fill(lambdas[index], lambdas[index] + lambdaLength(), 0);
  } else {
    code->returnSyndromes(syndromes[index], 2 * t);
    code->returnLambda(lambdas[index], lambdaLength());
    for (int j = 0; j < 2 * t; ++j) syndromes[index][j] = field->exp2Int(syndromes[index][j]);
    for (int j = 0; j < lambdaLength(); ++j) lambdas[index][j] = field->exp2Int(lambdas[index][j]);
  }
  const int start = placement == 1 ? 0 : fill;
  std::copy(codeword.begin() + start, codeword.begin() + start + len, out);
  code = nullptr;
  return result;
}

void FlashBCH::encode_au(int* in, int* out) {
  int a = 0, b = 0;
  for (int i = 0; i < numCodewords; ++i) {
    encode(in + a, out + b, i);
    a += dataLengths[i];
    b += dataLengths[i] + storedParityLen;
  }
}

int FlashBCH::decode_au(int* in, int* out, int* results) {
  int a = 0, b = 0, sum = 0;
  for (int i = 0; i < numCodewords; ++i) {
    const int r = decode(in + a, out + b, i);
    if (results) results[i] = r;
    sum += r;
    a += dataLengths[i] + storedParityLen;
    b += dataLengths[i];
  }
  return sum;
}

int FlashBCH::get_parity_length() { return storedParityLen; }

void FlashBCH::getSyndromes(int** out) {
  for (int i = 0; i < numCodewords; ++i) std::copy(syndromes[i], syndromes[i] + 2 * t, out[i]);
}

void FlashBCH::getLambda(int** out) {
  for (int i = 0; i < numCodewords; ++i) std::copy(lambdas[i], lambdas[i] + lambdaLength(), out[i]);
}
