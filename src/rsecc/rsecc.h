// RSECC: a Reed-Solomon code over a field GF(2^m) with t correctable symbol
// errors and nParity >= 2t parity symbols.
//
// The generator is g(x) = (x + alpha^b0)(x + alpha^(b0+1))...(x + alpha^(b0+nParity-1));
// a word r(x) is a codeword exactly when r(alpha^(b0+j)) = 0 for j = 0..nParity-1.
// Symbols are field elements in exponent form (zero = q-1, one = 0) and every
// word and polynomial here is stored leading first: in an n-symbol word index
// i holds the coefficient of x^(n-1-i), so the message comes first and the
// parity last, and index i is "position" n-1-i.
//
// Decoding is syndromes -> Berlekamp-Massey (errors only, or started from the
// erasure locator) -> Chien search -> Forney, with the locator accepted only
// when its degree equals its number of roots. Beyond t, decodeBeyondBchBound
// and listDecode recover one further error by continuing the Berlekamp-Massey
// iteration over two hypothesised syndromes (see rsBeyondBound.cpp for
// the method): the first decodes to the unique nearest codeword within t+1
// symbols, the second lists every codeword within t+1.
#pragma once

#include <memory>
#include <vector>

class GF;
class Code30_31nrz_v2;

class RSECC {
 public:
  // nParity = -1 means 2t. The field is cloned, so the caller keeps ownership
  // of its own. b0 + nParity - 1 must stay below q-1.
  RSECC(GF* gf, int t, int nParity, bool maskInput, int b0);
  ~RSECC();
  RSECC(const RSECC&) = delete;
  RSECC& operator=(const RSECC&) = delete;

  // Systematic: cw = msg followed by msg(x) x^nParity mod g(x); n = k + nParity.
  void encode(const int* msg, int k, int* cw, int n);
  // Systematic with a split parity: the first parity symbol is encode()'s,
  // the remaining nParity-1 make the word divisible by
  // h(x) = (x + alpha)(x + alpha^2)...(x + alpha^(nParity-1)).
  void dummyEncoder(const int* msg, int k, int* cw, int n);
  int isValidCodeword(const int* cw, int n);
  void getGenPoly(int* out, int count) const;
  void returnSyndromes(int* out, int count) const;
  void enableEccRll() { eccRll = true; }
  void disableEccRll() { eccRll = false; }
  bool isEccRllEnabled() const { return eccRll; }
  int getT() const { return t; }
  int getNParity() const { return nParity; }
  int getB0() const { return b0; }
  bool usesTrueValidityTest() const { return trueValidityTest; }
  void readSchedule();
  // (scheduleRows x scheduleCols) entries, row by row.
  std::vector<int> getSchedule() const;
  void logValidRsEccGenPoly();
  int lrRllEncode(int* in, int nIn, int* out, int nOut);
  int lrRllDecode(int* in, int nIn, int* out, int nOut);
  void flushOutputDebugFiles() {}
  void preScreenEccList(int** /*list*/, int* /*sizes*/, int /*a*/, int /*b*/, int& /*c*/, int /*d*/) {}
  int decodeErrorAndUnknownErasure(int* cw, int n, int nUnknown, int tUse);

  // Decoders return 1 when the word is (now) a codeword, 0 when they give up.
  // tUse = -1 means t; values above nParity/2 are treated as nParity/2, the
  // most the available syndromes can support.
  int decode(int* cw, int n, int tUse, const int* mask);
  // erasures are array indices into cw; an index outside 0..n-1, or more
  // erasures than 2tUse, makes the decoder give up.
  int decodeErrorAndErasure(int* cw, int n, const int* erasures, int nErasures, int tUse,
                            const int* mask);
  void syndromesCompute(const int* cw, int n, int* S, int count);

  // Error locators from the first 2tUse syndromes (Lambda, B leading first, len entries).
  int BM_inversionless(int n, const int* S, int* lambda, int* B, int len, int& L, int& L2, int tUse);
  int BM(int n, const int* S, int* lambda, int* B, int len, int& L, int& L2, int tUse);
  int BM_EAE_inversionless(int n, const int* S, int* lambda, int* B, int len, int& L, int& L2,
                           int tUse, const int* erasures, int nErasures);
  int BM_errorAndErasure(int n, const int* S, int* lambda, int* B, int len, int& L, int& L2,
                         int tUse, const int* erasures, int nErasures);
  void chienSearch(const int* lambda, int len, int* roots, int& nRoots);
  int Forney(const int* S, const int* lambda, int len, const int* roots, int nRoots, int* values,
             int tUse);

  int isValidErrorLocator(const int* cw, int n, const int* lambda, int count, int nRoots, int tUse,
                          int method);
  int isValidErrorLocator(const int* lambda, int count, int tUse, const int* S);
  int fullValidityCheckErrorLocator(const int* lambda, int count, const int* S);
  int isValidSyndromes(const int* S, int tUse);

  // Beyond the bound, a bounded-distance decoder of radius tUse+1 (tUse
  // after the limits of decode(), at least 1; n below q) that refuses ties:
  // it returns 1 and writes c exactly when c is the one codeword nearest to
  // the word and lies within tUse+1 symbols of it. Otherwise (no codeword
  // within tUse+1, or two or more at distance tUse+1 and none closer) it
  // returns 0 and leaves cw untouched. Within tUse symbols the nearest
  // codeword is always unique, so this is decode() there. With maskInput the
  // word and c are taken with the mask added, and cw keeps the mask. b0 must
  // be 0 or 1.
  int decodeBeyondBchBound(int* cw, int n, int tUse, const int* mask);
  // All codewords within tUse+1 symbols of the word, written to
  // list[i][0..n-1]: the one decode() reaches, if any, then those at exactly
  // tUse+1; complete whenever there are at most min(maxList, 4t) of them,
  // otherwise the first that many found. Returns their number.
  int listDecode(const int* cw, int n, int tUse, const int* mask, int** list, int maxList);
  // Continues an inversionless Berlekamp-Massey state (Lambda, B, gamma, L
  // after nKnown steps) by one step per entry of deltas that is not -1, each
  // entry being the hypothesised discrepancy of that step. The syndromes the
  // hypotheses imply are written to S[nKnown..]. 0 when a step fails.
  int BM_beyondBchBound(int* S, int nKnown, int* lambda, int* B, int len, int& gamma, int& L,
                        const int* deltas, int nDeltas);
  // Step r of the inversionless iteration, with the discrepancy given instead
  // of computed: S[r-1] is solved from it. 0 on an inconsistent state.
  int basicInductiveStep(int* S, int r, int* lambda, int* B, int len, int& gamma, int& L, int delta);
  // Candidates of the form P(x) + delta Q(x), given by their values at the
  // code's positions: deltaAt[p] is the delta for which position p is a
  // root, or -1 when there is none (or it would be zero and zeroAllowed is
  // false). Returns the number of positions that are roots for every delta.
  int mapping(const int* pAt, const int* qAt, int nPos, bool zeroAllowed, int* deltaAt);

  void bitStream2symbolStream(const int* bits, int nBits, int* symbols, int nSymbols, int m);
  void bitStream2symbolStreamReverseOrderInt(const int* values, int nValues, int* symbols,
                                             int nSymbols, int m);
  void symbolStream2bitStream(const int* symbols, int nSymbols, int* bits, int nBits, int m);

 private:
  int effectiveT(int tUse) const;
  void buildGenerator(int degree, int* g);
  int berlekampMassey(const int* S, int* lambda, int* B, int len, int& L, int tUse, int n,
                      const int* erasures, int nErasures, bool inversionless, int* gammaOut);
  void locatorStep(int* lambda, int* B, int len, int r, int delta, int nErasures, bool inversionless,
                   int& gamma, int& L);
  int decodeWithLocator(int* cw, int n, int tUse, const int* mask, const int* erasures,
                        int nErasures, bool withErasures);
  int locatorSum(const int* lambda, int count, const int* S, int j);
  bool isZeroPoly(const int* p, int count) const;
  int collectBeyondBound(const int* r, int n, int tUse, const int* S,
                         std::vector<std::vector<int>>& errors, int maxFound);
  int verifyBeyondBoundCandidate(const int* r, int n, int tUse, const int* S, const int* lambda,
                                 const int* B, int len, int gamma, int L, const int deltas[2],
                                 std::vector<int>& error, std::vector<int>& locator);

  std::unique_ptr<GF> gf;  // private copy of the caller's field
  int t = 0;
  int nParity = 0;
  std::vector<int> genPoly;  // nParity+1 coefficients, genPoly[0] = one
  int b0 = 0;
  // 4t rows of 3t+2: the locators of the candidates a list search accepted.
  std::vector<std::vector<int>> listWork;
  std::unique_ptr<Code30_31nrz_v2> rll;
  bool eccRll = false;
  bool maskInput = false;
  bool trueValidityTest = false;  // nParity > 2t: extra syndromes can vet a locator
  int listStepsPerError = 2;      // hypothesised syndromes per error beyond the bound
  int scheduleRows = 70;
  int scheduleCols = 24;
  std::vector<std::vector<int>> schedule;
  // The stored schedule's kind and the tuning values of a deeper, multi-error
  // list search; kept with their established values.
  int scheduleKind = 3;
  int listParamA = 16;
  int listParamB = 18;
  int listParamC = 34;
  int listParamD = 27;
  int listParamE = 27;
  int useUpperSyndromes = 0;  // locate from the last 2tUse syndromes instead of the first
  bool listDebug = false;
  // The last computed syndromes (the first nParity of them).
  std::vector<int> syndromes;
};
