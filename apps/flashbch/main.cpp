// Placeholder front end until the full command line lands: builds the
// codec's field GF(2^15) and prints a few facts about it.
#include <chrono>
#include <cstdio>

#include "gf/exp2Int15.h"
#include "gf/gf2m.h"

int main() {
  int p[16] = {1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 1};
  const auto start = std::chrono::steady_clock::now();
  GF2m field(15, p, 15, exp2Int15.data(), kExp2Int15Size);
  const auto built = std::chrono::steady_clock::now();
  std::printf("GF(2^%d) from x^15 + x + 1: %d elements, zero = %d, one = %d\n", field.getM(),
              field.getN(), field.getZero(), field.getOne());
  std::printf("alpha^15 = %d, alpha^32766 = %d, alpha^100 * alpha^32700 = alpha^%d\n", field.exp2Int(15),
              field.exp2Int(32766), field.multiply(100, 32700));
  std::printf("built in %.3f ms\n", std::chrono::duration<double, std::milli>(built - start).count());
  return 0;
}
