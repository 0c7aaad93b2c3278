#include "api/FlashBCH.h"

#include <algorithm>
#include <cmath>

#include "bch/bch.h"
#include "bch/bchEngine.h"
#include "bch/packedBits.h"
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

  // Build every code now, and size the scratch for the longest.
  int longest = 0;
  if (!bypass && t > 0)
    for (int i = 0; i < numCodewords; ++i) {
      const int k = messageLength(i);
      if (k < 1) continue;
      codeFor(k);
      longest = std::max(longest, k);
    }
  packedData.assign(packedbits::bytesFor(longest) + 8, 0);
  packedParity.assign(packedbits::bytesFor(std::max(parityLen, storedParityLen)) + 8, 0);
  engineSyndromes.assign(std::max(2 * t, 0), 0);
  engineLambda.assign(std::max(2 * t + 1, 0), 0);
  errorPositions.assign(std::max(t + 1, 0), 0);

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
  const auto found = codesByLength.find(k);
  if (found != codesByLength.end()) return found->second.get();
  // Codes of every length share the tables that depend only on t.
  const BCH* sibling = codesByLength.empty() ? nullptr : codesByLength.begin()->second.get();
  std::unique_ptr<BCH>& slot = codesByLength[k];
  slot = std::make_unique<BCH>(field, 0, t, 1, k, sibling);
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
  if (encodePacked(in, out, len, k)) {
    code = nullptr;
    return;
  }
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
  code = codeFor(k);
  int packedResult = 0;
  if (decodePacked(in, out, index, len, k, fill, packedResult)) {
    code = nullptr;
    return packedResult;
  }
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

bool FlashBCH::encodePacked(const int* in, int* out, int len, int k) {
  BchEngine* engine = code->packedEngine();
  if (engine == nullptr || engine->parityLength() != parityLen) return false;
  // Leading fill (placement 0) is left out: leading zeros do not change
  // the remainder. Trailing fill (placement 1) is packed as zeros.
  uint8_t* data = packedData.data();
  if (!packedbits::packInts(in, len, data)) return false;  // the plain encoder's arithmetic differs
  int bits = len;
  if (placement == 1) {
    std::fill(data + packedbits::bytesFor(len), data + packedbits::bytesFor(k), 0);
    bits = k;
  } else if (placement != 0) {
    return false;
  }
  engine->encodeParity(data, bits, packedParity.data());
  std::copy(in, in + len, out);
  packedbits::unpackInts(packedParity.data(), parityLen, out + len);
  std::fill(out + len + parityLen, out + len + storedParityLen, 0);
  return true;
}

bool FlashBCH::decodePacked(const int* in, int* out, int index, int len, int k, int fill, int& result) {
  BchEngine* engine = code->packedEngine();
  if (engine == nullptr || engine->parityLength() != parityLen || (placement != 0 && placement != 1)) return false;
  std::copy(in, in + len, out);
  if (tDecode == 0) {
    // A decoder told not to decode computes nothing; a fresh code object
    // would then report its initial contents, the zero element throughout.
    std::fill(syndromes[index], syndromes[index] + 2 * t, 0);
    std::fill(lambdas[index], lambdas[index] + lambdaLength(), 0);
    result = 0;
    return true;
  }
  // Non-zero entries count as ones, as in the plain syndrome pass. The
  // parity of a placement-1 word is read from the start of the input.
  uint8_t* data = packedData.data();
  packedbits::packInts(in, len, data);
  int bits = len;
  if (placement == 1) {
    std::fill(data + packedbits::bytesFor(len), data + packedbits::bytesFor(k), 0);
    bits = k;
  }
  packedbits::packInts(placement == 1 ? in : in + len, parityLen, packedParity.data());
  int count = 0;
  const int corrected = engine->decode(data, bits, packedParity.data(), tDecode, false, engineSyndromes.data(),
                                       engineLambda.data(), errorPositions.data(), count);
  result = corrected == 0 ? 1 : 0;
  // Error degree p is word index n-1-p; the data sit at word indices
  // fill..fill+len-1 (placement 0) or 0..len-1 (placement 1).
  const int n = k + parityLen;
  const int first = placement == 1 ? 0 : fill;
  for (int e = 0; e < count; ++e) {
    const int at = n - 1 - errorPositions[e] - first;
    if (at >= 0 && at < len) out[at] = (out[at] + 1) % 2;
  }
  for (int j = 0; j < 2 * t; ++j) syndromes[index][j] = field->exp2Int(engineSyndromes[j]);
  for (int j = 0; j < lambdaLength(); ++j) lambdas[index][j] = field->exp2Int(engineLambda[j]);
  return true;
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
