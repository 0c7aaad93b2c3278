// The exported C interface: thin forwarders to the one FlashBCH instance,
// made safe outside the ordinary calling order (see include/quilFlashBCH.h).
#include "quilFlashBCH.h"

#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <vector>

#include "Tools/utilities.h"
#include "api/FlashBCH.h"
#include "api/libraryState.h"
#include "randgen/randgen.h"

IFlashBCH* g_pFlashBCH = nullptr;
Random_Number_Generator* rg = nullptr;
bool g_DebugEnabled = true;

void EnableDebug(bool enabled) { g_DebugEnabled = enabled; }
bool IsDebugEnabled() { return g_DebugEnabled; }

namespace {

constexpr int kFieldDegree = 15;
constexpr int kLongestCodeword = (1 << kFieldDegree) - 1;
constexpr int kMaxT = 128;  // beyond it the generator no longer has 15*t bits
constexpr unsigned kChannelSeed = 12345;

bool g_configured = false;
// Elements per block on each side of the codec, set by a successful init.
long long g_dataBits = 0;
long long g_blockBits = 0;
// Holds a copy of a caller's array reduced to bits, grown on demand.
std::vector<int> g_reduced;

bool layoutIsUsable(int numCodewords, const int* dataLengths, int t) {
  if (numCodewords < 1 || dataLengths == nullptr || t < 0 || t > kMaxT) return false;
  const int storedParity = (kFieldDegree * t + 7) / 8 * 8;  // 15t rounded up to whole bytes
  long long blockBits = 0;
  for (int i = 0; i < numCodewords; ++i) {
    if (dataLengths[i] < 1 || dataLengths[i] > kLongestCodeword - kFieldDegree * t) return false;
    blockBits += dataLengths[i] + storedParity;
  }
  // The adapter addresses a block with int offsets.
  return blockBits <= std::numeric_limits<int>::max();
}

// The array itself when every element is 0 or 1 (the ordinary case, found by
// one pass), otherwise a copy with every element reduced to its lowest bit,
// so that the codec's arithmetic only ever sees bits.
int* asBits(int* values, long long count) {
  unsigned stray = 0;
  for (long long i = 0; i < count; ++i) stray |= static_cast<unsigned>(values[i]) & ~1u;
  if (stray == 0) return values;
  g_reduced.resize(static_cast<size_t>(count));
  for (long long i = 0; i < count; ++i) g_reduced[static_cast<size_t>(i)] = values[i] & 1;
  return g_reduced.data();
}

Random_Number_Generator& channelGenerator() {
  if (!rg) rg = new MT_Rand_Gen(kChannelSeed);
  return *rg;
}

}  // namespace

extern "C" {

int quilCreateFlashBCH(void) {
  EnableDebug(false);
  delete g_pFlashBCH;
  g_pFlashBCH = nullptr;
  g_configured = false;
  // Both parts are built before either is published, so a failure leaves
  // no instance behind a result of -1.
  std::unique_ptr<IFlashBCH> codec;
  std::unique_ptr<Random_Number_Generator> generator;
  try {
    codec.reset(create_flashBCH());
    generator = std::make_unique<MT_Rand_Gen>(kChannelSeed);
  } catch (...) {
    return -1;
  }
  if (!codec) return -1;
  delete rg;
  rg = generator.release();
  g_pFlashBCH = codec.release();
  return 0;
}

int quilInitializeFlashBCH(int numCodewords, int* dataLengths, int t) {
  if (!g_pFlashBCH || !layoutIsUsable(numCodewords, dataLengths, t)) return -1;
  try {
    g_pFlashBCH->init(numCodewords, dataLengths, t, false, true, -1, 0, 0);
  } catch (...) {
    // init releases the previous configuration first, so none is left.
    g_configured = false;
    return -1;
  }
  g_configured = true;
  g_dataBits = 0;
  for (int i = 0; i < numCodewords; ++i) g_dataBits += dataLengths[i];
  g_blockBits = g_dataBits + static_cast<long long>(numCodewords) * g_pFlashBCH->get_parity_length();
  return 0;
}

int quilReleaseFlashBCH(void) {
  if (!g_pFlashBCH) return -1;
  delete g_pFlashBCH;
  g_pFlashBCH = nullptr;
  g_configured = false;
  return 0;
}

void quilFlashBCHVersion(char* buf) { std::memcpy(buf, "1.0.1", 6); }

int quilGetParityLength(void) {
  if (!g_pFlashBCH || !g_configured) return -1;
  return g_pFlashBCH->get_parity_length();
}

int quilEncodeBCH(int* in, int* out) {
  if (!g_pFlashBCH || !g_configured) return -1;
  try {
    g_pFlashBCH->encode_au(asBits(in, g_dataBits), out);
  } catch (...) {
    return -1;
  }
  return 0;
}

int quilDecodeBCH(int* in, int* out) {
  if (!g_pFlashBCH || !g_configured) return -1;
  try {
    return g_pFlashBCH->decode_au(asBits(in, g_blockBits), out, nullptr);
  } catch (...) {
    return -1;
  }
}

void quilGenerateRandomBits(int* out, int n, int seed) {
  Random_Number_Generator& gen = channelGenerator();
  gen.initialize(static_cast<unsigned int>(seed));
  for (int i = 0; i < n; ++i) out[i] = gen.uniform() > 0.5 ? 1 : 0;
}

void quilAddGaussianNoise(int* bits, double* out, int n, double snrDb, int seed) {
  Random_Number_Generator& gen = channelGenerator();
  gen.initialize(static_cast<unsigned int>(seed));
  const double a = std::pow(10.0, -snrDb / 20.0);
  for (int i = 0; i < n; ++i) out[i] = (1 - 2 * (bits[i] & 1)) + 2 * a * gen.normal();
}

void quilSwapData(int* in, int n, int* out, int wordBits, int groupBits, int doByteSwap, int doBitSwap) {
  byte_and_bit_swap(in, n, out, wordBits, groupBits, doByteSwap, doBitSwap);
}

}  // extern "C"
