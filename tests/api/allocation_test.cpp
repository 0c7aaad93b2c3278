// Steady-state encoding and decoding allocate nothing: global operator new
// is counted in this test executable, and a second round of calls over the
// same configuration must not call it.
#include <atomic>
#include <cstdlib>
#include <new>
#include <random>
#include <vector>

#include "api/FlashBCH.h"
#include "quilPackedBCH.h"
#include "support/testutil.h"

namespace {
std::atomic<long> g_allocations{0};
}

// The replacements pair malloc with free themselves; GCC cannot see that
// the library's news and deletes meet here.
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"

void* operator new(std::size_t size) {
  ++g_allocations;
  if (void* p = std::malloc(size ? size : 1)) return p;
  throw std::bad_alloc();
}
void operator delete(void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }

namespace {

using V = std::vector<int>;

TEST(Allocation, NoneInSteadyStateEncodeAndDecode) {
  FlashBCH codec;
  V lengths{8192, 8000, 8192, 100};
  const int t = 40, stored = 600;
  codec.init(4, lengths.data(), t, false, true, -1, 0, 0);
  const int dataBits = 8192 + 8000 + 8192 + 100;
  std::mt19937 rng(3);
  V data(dataBits), block(dataBits + 4 * stored), out(dataBits), results(4);
  for (int& x : data) x = static_cast<int>(rng() & 1);
  quil::PackedBCH packed(8192, t);
  std::vector<uint8_t> bytes(packed.dataBytes(), 0x5A), parity(packed.parityBytes());
  int positions[64];

  for (int round = 0; round < 2; ++round) {
    const long before = g_allocations.load();
    codec.encode_au(data.data(), block.data());
    // Clean, correctable and uncorrectable codewords in one block.
    for (int e = 0; e < t; ++e) block[8192 + stored + 37 * e] ^= 1;
    for (int e = 0; e < t + 3; ++e) block[2 * (8192 + stored) + 8000 + 11 * e] ^= 1;
    codec.decode_au(block.data(), out.data(), results.data());
    packed.encode(bytes.data(), parity.data());
    bytes[5] ^= 0x11;
    packed.decode(bytes.data(), parity.data(), positions);
    if (round == 1) {
      EXPECT_EQ(g_allocations.load() - before, 0);
    }
  }
  EXPECT_EQ(results, (V{0, 0, 1, 0}));
}

}  // namespace
