// The table is generated at compile time by its rule: multiply by x (shift
// left by one) and, when the x^15 term appears, replace it by x + 1 (clear
// bit 15, XOR 3). It is constant-initialised, so it lives in read-only data
// and costs nothing at load time.
#include "gf/exp2Int15.h"

namespace {

constexpr std::array<int, kExp2Int15Size> makeExp2Int15() {
  std::array<int, kExp2Int15Size> table{};
  int value = 1;
  for (int i = 0; i < kExp2Int15Size - 1; ++i) {
    table[i] = value;
    value <<= 1;
    if (value & 0x8000) value = (value & 0x7fff) ^ 3;
  }
  table[kExp2Int15Size - 1] = 0;
  return table;
}

}  // namespace

constexpr std::array<int, kExp2Int15Size> kExp2Int15 = makeExp2Int15();
static_assert(kExp2Int15[15] == 3 && kExp2Int15[32765] == 24577 && kExp2Int15[32766] == 16385,
              "alpha^i table does not follow x^15 = x + 1");

const std::array<int, kExp2Int15Size> exp2Int15 = kExp2Int15;
