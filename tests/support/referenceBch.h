// ReferenceBCH: the binary BCH code computed the plain way (generator as a
// product of linear factors in field form, bit-serial division, Horner
// syndromes at every root, Berlekamp-Massey over all coefficients, Chien
// search by direct evaluation at every position). It is the oracle that the
// library's BCH and flash adapter must agree with exactly, and the baseline
// of the benchmarks. Members are public so tests can compare them directly.
#pragma once

class GF;
class RSECC;

struct ReferenceBCH {
  ReferenceBCH(GF* gf, int n, int t, int b, int k);
  ~ReferenceBCH();
  ReferenceBCH(const ReferenceBCH&) = delete;
  ReferenceBCH& operator=(const ReferenceBCH&) = delete;

  void encode(int* msg, int* cw);
  void encode_parity(const int* msg, int* parityBits);
  void findRemainderGF2(int* a, int degA, int* g, int degG, int* rem);
  bool computeSyndromes(int* r, int* S);
  bool isCodeword(int* cw);
  void returnSyndromes(int* out, int len);
  void BMA(int* S, int* Lambda, int tLimit);
  void returnLambda(int* out, int len);
  int decode(int* in, int* out, bool rsMode, int tLimit);
  int decodeBCH(int* in, int* out, int tLimit);
  int chienSearch(int* locator, int* word);
  int decodeForSmallT(int* in, int* out, int tLimit);
  int decodeRS(int* in, int* out, int tLimit);

  GF* gf;
  int n;
  int k;
  int t;
  int b;
  int* genPoly = nullptr;
  RSECC* rsecc = nullptr;
  int parity = -1;
  int* syndromes = nullptr;
  int* lambda = nullptr;
};
