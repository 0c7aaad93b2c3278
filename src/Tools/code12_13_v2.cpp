#include "Tools/code12_13_v2.h"

#include <algorithm>
#include <fstream>
#include <initializer_list>
#include <iostream>
#include <iterator>

namespace {

const int kPrecoderTaps[] = {1, 0, -1};  // 1/(1+D^2)
const int kTable1Capacity = 193;

struct RouteTables {
  int table1[Code12_13_v2::Table1Size];
  int table2[Code12_13_v2::Table2Size];
  int table3[Code12_13_v2::Table3Size];
};

bool any(const int* b, std::initializer_list<int> at) {
  for (int i : at)
    if (b[i]) return true;
  return false;
}

int ones(const int* b, int n) {
  int count = 0;
  for (int i = 0; i < n; ++i) count += b[i];
  return count;
}

// A 9-bit pattern is usable in Table1 when it is dense (>= 5 ones), has a
// one in its first pair and in its last pair, and has a one among both its
// even and its odd positions; together these bound the zero runs across
// word boundaries and within each interleave of the 1/(1+D^2) channel.
bool table1Pattern(const int* b) {
  return ones(b, 9) >= 5 && any(b, {0, 1}) && any(b, {7, 8}) && any(b, {0, 2, 4, 6}) && any(b, {1, 3, 5, 7});
}

// The same kind of test for 11 code bits seen through (1+D^2) from start
// state p: y[i] = x[i+2] ^ x[i] with x = p's two bits followed by c.
bool goodFromState(const int* c, int p) {
  int x[13];
  Code12_13_v2::dec2bin(p, x, 2);
  std::copy(c, c + 11, x + 2);
  int y[11];
  for (int i = 0; i < 11; ++i) y[i] = x[i + 2] ^ x[i];
  return ones(y, 11) >= 5 && any(y, {0, 1, 2, 3}) && any(y, {9, 10}) && any(y, {2, 4, 6, 8}) &&
         any(y, {3, 5, 7, 9});
}

RouteTables buildRouteTables() {
  RouteTables t;
  std::fill(std::begin(t.table1), std::end(t.table1), -1);
  std::fill(std::begin(t.table2), std::end(t.table2), -1);
  std::fill(std::begin(t.table3), std::end(t.table3), -1);

  int b[9];
  int filled = 0;
  for (int v = 0; v < 512 && filled < kTable1Capacity; ++v) {
    Code12_13_v2::dec2bin(v, b, 9);
    if (table1Pattern(b)) t.table1[filled++] = v;
  }

  int c[11];
  int filled2 = 0, filled3 = 0;
  for (int v = 0; v < 2048; ++v) {
    Code12_13_v2::dec2bin(v, c, 11);
    const bool fromZero = goodFromState(c, 0);
    const bool fromOthers = goodFromState(c, 1) && goodFromState(c, 2) && goodFromState(c, 3);
    const bool fromSomeOther = goodFromState(c, 1) || goodFromState(c, 2) || goodFromState(c, 3);
    // Only the low nine bits are stored: Table2 patterns all have c0 = c1 = 0
    // and Table3 patterns c0 = c1 = 1, which the encoder writes as the tag.
    if (fromZero && !fromSomeOther && filled3 < Code12_13_v2::Table3Size) t.table3[filled3++] = v & 511;
    if (!fromZero && fromOthers && filled2 < Code12_13_v2::Table2Size) t.table2[filled2++] = v & 511;
  }
  // Indexes 0 and 64 correspond to u6..u11 = 0, words that Table1 already
  // takes (u4..u11 = 192 is its last index), so they must never match.
  t.table2[0] = -1;
  t.table2[64] = -1;
  return t;
}

const RouteTables& routeTables() {
  static const RouteTables tables = buildRouteTables();
  return tables;
}

// Undoes (or applies: each is an involution) the flip that a tag selects.
void applyFlip(int* bits11, int kind) {
  switch (kind) {
    case 1: Code12_13_v2::flipInterleave(bits11, 11, 1); break;
    case 2: Code12_13_v2::flipInterleave(bits11, 11, 0); break;
    case 3: Code12_13_v2::flip(bits11, 11); break;
    default: break;
  }
}

}  // namespace

Code12_13_v2::Code12_13_v2() : precoder(kPrecoderTaps, 3) { table_build(); }

void Code12_13_v2::table_build() {
  const RouteTables& t = routeTables();
  std::copy(std::begin(t.table1), std::end(t.table1), Table1);
  std::copy(std::begin(t.table2), std::end(t.table2), Table2);
  std::copy(std::begin(t.table3), std::end(t.table3), Table3);
}

void Code12_13_v2::table_write() const {
  std::ofstream file("table.txt");
  int bits[9];
  const auto writeTable = [&](const char* name, const int* table, int size) {
    file << name << "\n";
    for (int i = 0; i < size; ++i) {
      dec2bin(table[i], bits, 9);
      file << i << "  ";
      for (int b : bits) file << b;
      file << "\n";
    }
  };
  writeTable("Table1", Table1, Table1Size);
  file << "\n\n";
  writeTable("Table2", Table2, Table2Size);
  file << "\n\n";
  writeTable("Table3", Table3, Table3Size);
}

int Code12_13_v2::lookup_word(int value, const int* table, int size) {
  for (int i = 0; i < size; ++i)
    if (table[i] == value) return i;
  return -1;
}

int Code12_13_v2::lookup_codeword(const int* bits9, const int* table, int size) {
  return lookup_word(bin2dec(bits9, 9), table, size);
}

void Code12_13_v2::dec2bin(int v, int* bits, int n) {
  const unsigned u = static_cast<unsigned>(v);
  for (int i = 0; i < n; ++i) {
    const int shift = n - 1 - i;
    bits[i] = shift < 32 ? static_cast<int>((u >> shift) & 1u) : (v < 0 ? 1 : 0);
  }
}

int Code12_13_v2::bin2dec(const int* bits, int n) {
  int v = 0;
  for (int i = 0; i < n; ++i) v = 2 * v + (bits[i] != 0 ? 1 : 0);
  return v;
}

void Code12_13_v2::flip(int* bits, int n) {
  for (int i = 0; i < n; ++i) bits[i] = 1 - bits[i];
}

void Code12_13_v2::flipInterleave(int* bits, int n, int parity) {
  for (int i = 0; i < n; ++i)
    if (i % 2 == parity) bits[i] = 1 - bits[i];
}

int Code12_13_v2::encode(int* in, int* out) {
  const int i1 = Table1[bin2dec(in + 4, 8)];
  const int i2 = Table2[(in[3] != 0 ? 64 : 0) + bin2dec(in + 6, 6)];
  const int i3 = Table3[(in[2] != 0 ? 16 : 0) + bin2dec(in + 8, 4)];
  const int state = bin2dec(in, 2);

  if (i1 != -1) {
    std::copy(in, in + 4, out);
    dec2bin(i1, out + 4, 9);
    precoder.reset();
    precoder.precode(out + 2, 11);
    return ViaTable1;
  }
  if (i2 != -1) {
    if (!(in[4] == 1 && in[5] == 1)) std::cout << "ENDEC PROBLEMS" << std::endl;
    out[0] = in[0];
    out[1] = in[1];
    out[2] = out[3] = 0;
    dec2bin(i2, out + 4, 9);
    // The flip turns the tag 00 into 00, 01, 10 or 11, which carries u2 and
    // tells the decoder which flip to undo.
    if (state == 0 || state == 3)
      flipInterleave(out + 2, 11, in[2] != 0 ? 1 : 0);
    else if (in[2] != 0)
      flip(out + 2, 11);
    return ViaTable2;
  }
  if (i3 != -1 && in[3] && in[4] && in[5] && in[6] && in[7]) {
    out[0] = in[0];
    out[1] = in[1];
    out[2] = out[3] = 1;
    dec2bin(i3, out + 4, 9);
    applyFlip(out + 2, state);
    return ViaTable3;
  }
  std::copy(in, in + 3, out);
  out[3] = in[11];
  dec2bin(EscapePattern, out + 4, 9);
  precoder.reset();
  precoder.precode(out + 2, 11);
  return Escape;
}

int Code12_13_v2::decode(int* in, int* out) {
  int unprecoded[13];
  std::copy(in, in + 13, unprecoded);
  precoder.reset();
  precoder.unprecode(unprecoded + 2, 11);
  const int pattern = bin2dec(unprecoded + 4, 9);
  const int r1 = lookup_word(pattern, Table1, Table1Size);
  const bool escape = pattern == EscapePattern;
  if (escape) {
    static const int kEscapedMiddle[] = {1, 1, 1, 1, 0, 1, 1, 1};
    std::copy(unprecoded, unprecoded + 3, out);
    std::copy(std::begin(kEscapedMiddle), std::end(kEscapedMiddle), out + 3);
    out[11] = unprecoded[3];
  }

  // Tag t = c2c3. A Table2 word was tagged from 00, so the flip that maps
  // 00 to t is undone; a Table3 word was tagged from 11.
  const int tag = bin2dec(in + 2, 2);
  int asTable2[13], asTable3[13];
  std::copy(in, in + 13, asTable2);
  std::copy(in, in + 13, asTable3);
  applyFlip(asTable2 + 2, tag);
  applyFlip(asTable3 + 2, 3 - tag);
  const int r2 = lookup_codeword(asTable2 + 4, Table2, Table2Size);
  const int r3 = lookup_codeword(asTable3 + 4, Table3, Table3Size);

  if (r1 != -1) {
    std::copy(in, in + 4, out);
    dec2bin(r1, out + 4, 8);
    return ViaTable1;
  }
  if (r2 != -1) {
    int index[7];
    dec2bin(r2, index, 7);
    out[0] = in[0];
    out[1] = in[1];
    out[2] = (tag == 1 || tag == 3) ? 1 : 0;
    out[3] = index[0];
    out[4] = out[5] = 1;
    std::copy(index + 1, index + 7, out + 6);
    return ViaTable2;
  }
  if (r3 != -1) {
    int index[5];
    dec2bin(r3, index, 5);
    out[0] = in[0];
    out[1] = in[1];
    out[2] = index[0];
    std::fill(out + 3, out + 8, 1);
    std::copy(index + 1, index + 5, out + 8);
    return ViaTable3;
  }
  if (escape) return Escape;
  out[0] = in[0];
  out[1] = in[1];
  std::fill(out + 2, out + 12, 0);
  return Invalid;
}

void Code12_13_v2::invalidCodewordFlag(int* in, int& flag) {
  int scratch[12];
  flag = decode(in, scratch) == Invalid ? 1 : 0;
}
