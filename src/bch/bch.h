// BCH: a binary BCH code over GF(2^m), shortened to k message bits.
//
// The code has the 2t consecutive roots alpha^b .. alpha^(b+2t-1) (b = 1, or
// b = 0 for t = 1, which adds the root 1 and with it an overall parity
// check). Its generator g(x) is the product of (x + alpha^e) over the union
// R of the cyclotomic cosets of those exponents modulo 2^m - 1, so the number
// of parity bits is r = |R| and every coefficient of g lies in GF(2).
//
// Word order. At the interface a word's element 0 is its highest-degree
// coefficient: a codeword is the k message bits followed by the n-k parity
// bits. Inside the algorithms a word is indexed by degree, so interface
// index i is degree n-1-i; array_rev converts between the two.
//
// Decoding: syndromes S_j = r(alpha^(b+j)), j = 0..2t-1; Berlekamp-Massey
// turns them into the error locator Lambda(x) = prod (1 + alpha^p x) over
// the error degrees p; the Chien search finds p as the exponents whose
// inverse alpha^-p is a root, checks that the root count matches the
// locator's degree, and flips those bits. A failed decode leaves the word
// exactly as received. For t <= 3 the locator may instead be solved in
// closed form from the syndromes (decodeForSmallT), and decodeRS decodes the
// word as Reed-Solomon symbols through an owned RSECC over the same field.
//
// Field elements are ints in exponent form (alpha^e = e, one = 0,
// zero = 2^m - 1). Decoder results are 1 (clean or corrected) or 0 (failed).
//
// Speed. Over a genuine field (see FieldTables) the code runs on a
// BchEngine: packed words, table-driven division by g(x), syndromes from the
// remainder, a degree-bounded Berlekamp-Massey and root finding by the trace
// algorithm. Every member still returns and stores exactly what the plain
// algorithms (kept in bch.cpp) compute; they remain the path for other
// fields, for over-long codes and for words with entries other than 0 and 1
// where the plain arithmetic differs from binary arithmetic (the encoders).
// The Reed-Solomon decoder is built on the first RS-mode decode.
//
// Fatal conditions print one line and end the process with exit(-1).
#pragma once

#include <cstdint>
#include <memory>
#include <set>
#include <vector>

class BchEngine;
class GF;
class RSECC;

class BCH {
 public:
  // With k != 0 the passed n is ignored and n = k + r; with k == 0 the code
  // length is n and k = n - r. Only b = 1, and b = 0 with t = 1, exist.
  // gf is borrowed and must outlive the code.
  BCH(GF* gf, int n, int t, int b, int k);
  // The same code, sharing the engine's length-independent tables with
  // tablesFrom when that code has the same field, t and b (the flash adapter
  // keeps one code per data length).
  BCH(GF* gf, int n, int t, int b, int k, const BCH* tablesFrom);
  ~BCH();
  BCH(const BCH&) = delete;
  BCH& operator=(const BCH&) = delete;

  // msg: k bits; cw: n bits, the message followed by the parity.
  void encode(int* msg, int* cw);
  // The n-k parity bits that encode appends to msg.
  void encode_parity(const int* msg, int* parityBits);
  // rem[0..degG-1] = a(x) mod g(x) over GF(2); a has degA+1 bits and g is a
  // generator of degree degG, both in degree order.
  void findRemainderGF2(int* a, int degA, int* g, int degG, int* rem);

  // r: n bits in degree order. Writes S[0..2t-1] and the parity member;
  // true when r is a codeword.
  bool computeSyndromes(int* r, int* S);
  // cw: n bits in interface order, left unchanged.
  bool isCodeword(int* cw);
  // Copies the first len stored syndromes; len may not exceed n-k.
  void returnSyndromes(int* out, int len);

  // Lambda[0..2t] = error locator of S aiming at tLimit errors (-1 or more
  // than t: t; 0 or other negatives: Lambda = 1).
  void BMA(int* S, int* Lambda, int tLimit);
  // Copies the first len entries of the stored locator; len may not exceed 2t+1.
  void returnLambda(int* out, int len);

  // in, out: n bits each in interface order, not overlapping. tLimit: -1
  // corrects up to t errors, 1..t fewer, 0 copies in without decoding.
  int decode(int* in, int* out, bool rsMode, int tLimit);
  // Leaves syndromes, parity and lambda describing in (lambda all zero for
  // a clean word), except with tLimit 0, which leaves them untouched.
  int decodeBCH(int* in, int* out, int tLimit);
  // word: n bits in degree order, corrected in place only on success.
  int chienSearch(int* locator, int* word);
  // Closed-form locator for tLimit (or t when -1) of 1, 2 or 3; tLimit must
  // not exceed t. Three uncorrectable cases return 0 with out left in degree
  // order. Does not write lambda.
  int decodeForSmallT(int* in, int* out, int tLimit);
  // Bits as the symbols one and zero of the owned Reed-Solomon code (2t
  // parity symbols, roots alpha^0 .. alpha^(2t-1)); a symbol that comes back
  // as anything but one is a 0 bit. Writes none of the stored results.
  int decodeRS(int* in, int* out, int tLimit);

  // The packed-bit engine, or null when the plain algorithms apply.
  BchEngine* packedEngine() const { return engine.get(); }

  // out = in with numErrors distinct bits flipped at positions drawn from
  // ran1(&seed); numErrors above n is fatal (nothing is written, the seed
  // is untouched), and 0 or less copies the word.
  void injectHardErrors(int* in, int* out, int numErrors, long& seed);

 protected:
  GF* gf;
  int n;
  int k;
  int t;
  int b;
  // The three arrays live in the storage vectors below; the pointers are
  // views into them.
  int* genPoly;  // n-k+1 bits, degree order
  std::unique_ptr<RSECC> rsecc;
  int parity;      // overall parity of the last word whose syndromes were computed; -1 before
  int* syndromes;  // n-k entries (at least 5), the first 2t of them computed; zero when fresh
  int* lambda;     // 2t+1 entries, the last locator of decodeBCH; zero when fresh

 private:
  void buildGeneratorInField(const std::set<int>& roots);
  // Packs an n-bit word (interface order, or degree order when reversed)
  // into the message and parity buffers; true when all entries are 0 or 1.
  bool packWord(const int* word, bool degreeOrder);
  // Weight parity of the packed word.
  int packedWeightParity() const;
  // The parity member's fold (parity + v) % 2 over the word in array order.
  static int parityFold(const int* word, int length);
  bool plainSyndromes(int* r, int* S);
  void plainBMA(int* S, int* Lambda, int tLimit);
  int plainChienSearch(int* locator, int* word, int d);

  std::vector<int> genPolyStorage, syndromeStorage, lambdaStorage;
  std::unique_ptr<BchEngine> engine;
  std::vector<uint8_t> packedMessage, packedParity;
  std::vector<int> errorPositions;
};
