// Code12_13_v2: a rate-12/13 run-length-limited code built from three
// lookup tables of 9-bit patterns and a 1/(1+D^2) precoder.
//
// A 12-bit word u0..u11 keeps its first two bits and maps the other ten to
// eleven code bits c2..c12 by the first route that applies:
//   Table1  the 8 bits u4..u11 index 193 nine-bit patterns; c0..c3 = u0..u3,
//           c4..c12 = the pattern, and c2..c12 are precoded from reset.
//           3088 words.
//   Table2  for u4 = u5 = 1, u3 and u6..u11 index 108 patterns that meet the
//           constraints from start states 1, 2 and 3 but not 0; c2c3 = 00 and
//           the pattern, then a flip chosen by u0u1 and u2 moves c2c3 to a
//           tag that the decoder reads back. 864 words.
//   Table3  for u3..u7 all 1, u2 and u8..u11 index 32 patterns good from
//           state 0 only; c2c3 = 11 plus the pattern, tagged by a flip chosen
//           by u0u1. 128 words.
//   escape  the 16 words left (u3..u10 = 11110111); c4..c12 = 507, a pattern
//           no table holds, with u11 carried in c3, precoded like Table1.
// The decoder tries the routes in that order on the received word: Table1
// and the escape on the unprecoded word, Table2 and Table3 on the word with
// the flip named by its tag c2c3 undone.
//
// A codeword is invalid when no route places it: its unprecoded bits 4..12
// are in no table and are not the escape pattern, and neither tag-corrected
// form is in Table2 or Table3. decode() maps such a word to u0u1 followed by
// ten zeros.
//
// The tables depend on nothing but the rules that build them, so they are
// computed once per process and copied into each object.
#pragma once

#include "Tools/precoder.h"

class Code12_13_v2 {
 public:
  static constexpr int Table1Size = 256;
  static constexpr int Table2Size = 128;
  static constexpr int Table3Size = 32;
  static constexpr int EscapePattern = 507;

  // Which route placed a word; the value returned by encode() and decode().
  enum Route { Invalid = -1, Escape = 0, ViaTable1 = 1, ViaTable2 = 2, ViaTable3 = 3 };

  Code12_13_v2();
  Code12_13_v2(const Code12_13_v2&) = default;
  Code12_13_v2& operator=(const Code12_13_v2&) = default;
  ~Code12_13_v2() = default;

  // in12 -> out13; returns the route taken.
  int encode(int* in12, int* out13);
  // in13 -> out12; returns the route that placed the codeword, or Invalid.
  int decode(int* in13, int* out12);
  // flag := 1 when no route places the codeword (see above), else 0.
  void invalidCodewordFlag(int* in13, int& flag);

  // Fills the three tables by their construction rules (evaluated once per
  // process, then copied).
  void table_build();
  // Writes "table.txt": each table's name, then one line per slot with the
  // slot index, two blanks and the nine bits of its value. An unused slot
  // holds -1 and is written as the low nine bits of -1, 111111111, a
  // pattern no table uses.
  void table_write() const;

  const int* getTable1() const { return Table1; }
  const int* getTable2() const { return Table2; }
  const int* getTable3() const { return Table3; }

  // First index i < size with table[i] == value, else -1.
  static int lookup_word(int value, const int* table, int size);
  // lookup_word of the 9-bit pattern bits9 (most significant first).
  static int lookup_codeword(const int* bits9, const int* table, int size);
  // The n low bits of v (two's complement), most significant first.
  static void dec2bin(int v, int* bits, int n);
  // The value of n bits, most significant first; any nonzero entry counts
  // as 1.
  static int bin2dec(const int* bits, int n);
  static void flip(int* bits, int n);
  // Inverts bits[i] for every i with i % 2 == parity.
  static void flipInterleave(int* bits, int n, int parity);

 private:
  int Table1[Table1Size];
  int Table2[Table2Size];
  int Table3[Table3Size];
  Precoder precoder;
};
