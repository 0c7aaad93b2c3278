// The powers of the primitive element alpha of GF(2^15), alpha a root of
// x^15 + x + 1: entry i (0 <= i <= 32766) is alpha^i as a 15-bit integer in
// polynomial basis (bit j = coefficient of x^j); entry 32767 is 0, the
// integer form of the zero element. The codec's field is built from it.
#pragma once

#include <array>

constexpr int kExp2Int15Size = 32768;

extern const std::array<int, kExp2Int15Size> exp2Int15;
