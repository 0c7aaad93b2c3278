// FlashBCH: maps a flash block onto binary BCH codewords over GF(2^15).
//
// Block layout (one int per bit): for each codeword i in turn, its len(i)
// data bits, then its t*15 parity bits, then zero padding up to the stored
// parity length (whole bytes when byte alignment is on). Each codeword uses
// the BCH code shortened to k = len(i) (or len(i) rounded up to a multiple
// of lengthUnit, the extra zero fill going before the data with placement 0
// or after it with placement 1), narrow sense (roots alpha^1 .. alpha^2t).
//
// One code object is kept per distinct k for the life of a configuration,
// built by init; building a code costs far more than using it, and every
// output is the same as with a fresh object per codeword. When the code
// runs on the packed engine (see BchEngine) the adapter packs each
// codeword's ints once and works on bits: no int-per-bit codeword is built,
// and scratch space is sized by init, so encode and decode allocate nothing.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <vector>

#include "api/IFlashBCH.h"

class BCH;
class GF;

class FlashBCH : public IFlashBCH {
 public:
  FlashBCH();
  ~FlashBCH() override;
  FlashBCH(const FlashBCH&) = delete;
  FlashBCH& operator=(const FlashBCH&) = delete;

  void init(int numCodewords, int* dataLengths, int t, bool bypass, bool byteAlignParity, int tDecode,
            int lengthUnit, int placement) override;
  void encode(int* in, int* out, int index) override;
  int decode(int* in, int* out, int index) override;
  void encode_au(int* in, int* out) override;
  int decode_au(int* in, int* out, int* results) override;
  int get_parity_length() override;
  void getSyndromes(int** out) override;
  void getLambda(int** out) override;

  void reset();
  void cleanGFBCH();

 private:
  int messageLength(int index) const;
  BCH* codeFor(int k);
  // The engine paths; false when the code or the input needs the plain path.
  bool encodePacked(const int* in, int* out, int len, int k);
  bool decodePacked(const int* in, int* out, int index, int len, int k, int fill, int& result);
  int lambdaLength() const { return tDecode * 2 + 1 > 0 ? tDecode * 2 + 1 : 0; }

  int numCodewords = 0;
  int* dataLengths = nullptr;
  int t = 0;
  bool bypass = false;
  int parityLen = 0;
  int padBits = 0;
  int storedParityLen = 0;
  bool byteAlignParity = true;
  int tDecode = 0;
  int lengthUnit = 0;
  int placement = 0;
  int m = 15;
  int** syndromes = nullptr;
  int** lambdas = nullptr;
  GF* field = nullptr;
  BCH* code = nullptr;  // the code of the codeword in hand; null between calls

  std::map<int, std::unique_ptr<BCH>> codesByLength;
  std::vector<int> message, codeword, received;  // scratch, reused across calls
  std::vector<uint8_t> packedData, packedParity;
  std::vector<int> engineSyndromes, engineLambda, errorPositions;
};
