// Construction of GF(2^m) and its two operations.
//
// The constructor checks p(x) (degree, monic, an odd number of terms so that
// x + 1 does not divide it), fills exp2IntTable with the powers of alpha,
// derives int2ExpTable, and runs a self-check that reports but never stops.
//
// Table-file robustness: the file is read as plain decimal integers. An
// entry that cannot be read (short or malformed file) is stored as 0, the
// integer form of the zero element, and so is a value outside 0 .. 2^m-1.
// int2ExpTable starts all zero (alpha^0) before the inverse is filled in.
// Every table entry therefore stays in range, so add() never indexes outside
// the tables, whatever the file held; such a field is simply not GF(2^m).
#include "gf/gf2m.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iostream>

namespace {

void fatal(const char* what) {
  std::cout << what << std::endl;
  std::cout << "Exiting, ..." << std::endl;
  std::exit(-1);
}

}  // namespace

GF2m::GF2m(int m_, const int* p, int degP_, const char* tableFile) {
  m = m_;
  degP = degP_;
  N = 1 << m;
  PP.reset(new int[degP + 1]);
  std::copy(p, p + degP + 1, PP.get());
  checkPolynomial(p);
  exp2IntTable.reset(new int[N]());
  int2ExpTable.reset(new int[N]());
  if (!tableFile || !readPowersFromFile(tableFile)) computePowers(p);
  finishTables();
  selfCheck();
}

GF2m::GF2m(int m_, const int* p, int degP_, const int* exp2Table, int tableLength) {
  m = m_;
  degP = degP_;
  N = 1 << m;
  PP.reset(new int[degP + 1]);
  std::copy(p, p + degP + 1, PP.get());
  checkPolynomial(p);
  exp2IntTable.reset(new int[N]());
  int2ExpTable.reset(new int[N]());
  if (exp2Table && tableLength >= N - 1) {
    for (int i = 0; i < N - 1; ++i)
      exp2IntTable[i] = (exp2Table[i] >= 0 && exp2Table[i] < N) ? exp2Table[i] : 0;
  } else {
    computePowers(p);
  }
  finishTables();
  selfCheck();
}

GF2m::GF2m(GF2m* other) {
  m = other->getM();
  N = other->getN();
  degP = other->getdegP();
  PP.reset(new int[m + 1]);
  other->getPP(PP.get(), m);
  exp2IntTable.reset(new int[N]);
  int2ExpTable.reset(new int[N]);
  other->getExp2IntConversionTable(exp2IntTable.get(), N);
  other->getInt2ExpConversionTable(int2ExpTable.get(), N);
}

GF2m::~GF2m() = default;

GF* GF2m::clone() { return new GF2m(this); }

int GF2m::add(int a, int b) { return int2ExpTable[exp2IntTable[a] ^ exp2IntTable[b]]; }

int GF2m::multiply(int a, int b) {
  if (a == N - 1 || b == N - 1) return N - 1;
  return (a + b) % (N - 1);
}

void GF2m::checkPolynomial(const int* p) const {
  if (m != degP) {
    std::cout << "Polynomial p(x) does not generate GF(" << "2" << "^" << m << ")" << std::endl;
    std::cout << "Exiting, ..." << std::endl;
    std::exit(-1);
  }
  if (p[0] == 0) fatal("Polynomial p(x) is not monic");
  int terms = 0;
  for (int i = 0; i <= degP; ++i) terms += p[i];
  if (terms % 2 == 0 && m >= 2) fatal("Polynomial p(x) is not prime");
}

void GF2m::computePowers(const int* p) {
  // alpha^(i+1) = x * alpha^i mod p(x): shift left, and when the x^m term
  // appears replace it by the lower terms of p(x). This is exactly the
  // remainder of x^(i+1) by p(x) that findRemainderGF2 would compute, at
  // O(m) per power instead of O(2^m m).
  int reduction = 0;
  for (int j = 1; j <= degP; ++j)
    if (p[j] == 1) reduction |= 1 << (degP - j);
  const int top = 1 << degP;
  int value = 1;
  for (int i = 0; i < N - 1; ++i) {
    exp2IntTable[i] = value;
    value <<= 1;
    if (value & top) value = (value ^ top) ^ reduction;
  }
}

bool GF2m::readPowersFromFile(const char* tableFile) {
  std::ifstream in(tableFile);
  if (!in.is_open()) return false;
  for (int i = 0; i < N - 1; ++i) {
    long long v = 0;
    if (!(in >> v)) {
      std::fill(exp2IntTable.get() + i, exp2IntTable.get() + N - 1, 0);
      break;
    }
    exp2IntTable[i] = (v >= 0 && v < N) ? static_cast<int>(v) : 0;
  }
  return true;
}

void GF2m::finishTables() {
  for (int i = 0; i < N - 1; ++i) int2ExpTable[exp2IntTable[i]] = i;
  exp2IntTable[N - 1] = 0;
  int2ExpTable[0] = N - 1;
}

void GF2m::selfCheck() {
  for (int i = 0; i < N - 1; ++i)
    if (multiply(multInverse(i), i) != getOne()) std::cout << "GF field operation problems" << std::endl;
  for (int i = 0; i < N; ++i)
    if (add(additiveInverse(i), i) != getZero()) std::cout << "GF field operation problems" << std::endl;
}

void GF2m::findRemainderGF2(const int* a, int lenA, const int* p, int degP_, int* rem) {
  std::copy(a, a + degP_, rem);
  for (int k = degP_; k < lenA; ++k) {
    const int lead = rem[0];
    std::copy(rem + 1, rem + degP_, rem);
    rem[degP_ - 1] = a[k];
    if (lead == 1)
      for (int j = 0; j < degP_; ++j) rem[j] ^= p[j + 1];
  }
}

void GF2m::findPrim2to10(int* out) {
  int c[3] = {getOne(), 0, 0};
  for (int a = 0; a <= N - 2; ++a) {
    for (int b = 0; b <= N - 2; ++b) {
      c[1] = a;
      c[2] = b;
      if (irreducible(c, 2) && primitive(c, 2)) {
        std::copy(c, c + 3, out);
        return;
      }
    }
  }
}
