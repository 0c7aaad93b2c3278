// The packed-bit codec: a GF(2^15) field and the flash adapter's code for
// one codeword length, used through its packed engine directly.
#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <vector>

#include "bch/bch.h"
#include "bch/bchEngine.h"
#include "bch/chaseDecoder.h"
#include "gf/exp2Int15.h"
#include "gf/gf2m.h"
#include "quilPackedBCH.h"

namespace quil {

namespace {

constexpr int kFieldDegree = 15;
constexpr int kLongestCodeword = (1 << kFieldDegree) - 1;
constexpr int kMaxT = 128;  // beyond it the generator no longer has 15*t bits

GF2m* makeField() {
  int coefficients[16] = {};
  coefficients[0] = coefficients[14] = coefficients[15] = 1;  // x^15 + x + 1
  return new GF2m(kFieldDegree, coefficients, kFieldDegree, exp2Int15.data(), kExp2Int15Size);
}

}  // namespace

struct PackedBCH::State {
  State(int k, int t) : field(makeField()), code(field.get(), 0, t, 1, k), engine(code.packedEngine()) {
    if (engine != nullptr) chase = std::make_unique<ChaseDecoder>(*engine, 1);
    syndromes.assign(2 * t, 0);
    lambda.assign(2 * t + 1, 0);
    positions.assign(t + 1, 0);
  }
  std::unique_ptr<GF2m> field;
  BCH code;
  BchEngine* engine;
  std::unique_ptr<ChaseDecoder> chase;
  std::vector<int> syndromes, lambda, positions;
  std::vector<float> reliability;
};

PackedBCH::PackedBCH(int dataBits, int t) {
  if (dataBits < 1 || t < 1 || t > kMaxT || dataBits > kLongestCodeword - kFieldDegree * t)
    throw std::invalid_argument("PackedBCH: need dataBits >= 1, 1 <= t <= 128, dataBits + 15*t <= 32767");
  state = std::make_unique<State>(dataBits, t);
  if (state->engine == nullptr) throw std::logic_error("PackedBCH: the field is not supported");
}

PackedBCH::~PackedBCH() = default;

int PackedBCH::dataBits() const { return state->engine->messageLength(); }
int PackedBCH::correctionPower() const { return state->engine->correctionPower(); }
int PackedBCH::parityBits() const { return state->engine->parityLength(); }
int PackedBCH::dataBytes() const { return (dataBits() + 7) / 8; }
int PackedBCH::parityBytes() const { return (parityBits() + 7) / 8; }

void PackedBCH::encode(const uint8_t* data, uint8_t* parity) { state->engine->encodeParity(data, dataBits(), parity); }

DecodeResult PackedBCH::decode(uint8_t* data, uint8_t* parity, int* errorPositions) {
  State& s = *state;
  const int k = dataBits(), n = k + parityBits();
  // The engine reads exactly k data and 15t parity bits, never the tails.
  int count = 0;
  const int ok =
      s.engine->decode(data, k, parity, -1, false, s.syndromes.data(), s.lambda.data(), s.positions.data(), count);
  if (ok == 0) return {DecodeStatus::Uncorrectable, 0};
  if (count == 0) return {DecodeStatus::Clean, 0};
  // Degree p is codeword bit n-1-p; ascending degrees give descending bits.
  for (int e = 0; e < count; ++e) {
    const int bit = n - 1 - s.positions[e];
    uint8_t* byte = bit < k ? &data[bit / 8] : &parity[(bit - k) / 8];
    const int offset = bit < k ? bit % 8 : (bit - k) % 8;
    *byte = static_cast<uint8_t>(*byte ^ (0x80 >> offset));
    if (errorPositions) errorPositions[count - 1 - e] = bit;
  }
  return {DecodeStatus::Corrected, count};
}

DecodeResult PackedBCH::decodeSoft(uint8_t* data, uint8_t* parity, const float* reliability, int positions,
                                   int* errorPositions) {
  ChaseDecoder& chase = *state->chase;
  const ChaseDecoder::Outcome outcome = chase.decode(data, parity, reliability, positions);
  if (outcome == ChaseDecoder::Outcome::Failed) return {DecodeStatus::Uncorrectable, 0};
  if (outcome == ChaseDecoder::Outcome::Clean) return {DecodeStatus::Clean, 0};
  const std::vector<int>& flips = chase.flips();
  if (errorPositions) std::copy(flips.begin(), flips.end(), errorPositions);
  return {DecodeStatus::Corrected, static_cast<int>(flips.size())};
}

DecodeResult PackedBCH::decodeLlr(const float* llr, uint8_t* data, uint8_t* parity, int positions,
                                  int* errorPositions) {
  const int k = dataBits(), n = k + parityBits();
  std::vector<float>& reliability = state->reliability;
  reliability.resize(n);
  std::fill(data, data + dataBytes(), 0);
  std::fill(parity, parity + parityBytes(), 0);
  for (int i = 0; i < n; ++i) {
    reliability[i] = std::fabs(llr[i]);
    if (llr[i] < 0.0f) {
      uint8_t* byte = i < k ? &data[i / 8] : &parity[(i - k) / 8];
      *byte = static_cast<uint8_t>(*byte | (0x80 >> (i < k ? i % 8 : (i - k) % 8)));
    }
  }
  return decodeSoft(data, parity, reliability.data(), positions, errorPositions);
}

}  // namespace quil
