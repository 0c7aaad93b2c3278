// ReferenceFlashBCH: the flash block adapter computed the plain way, one
// freshly built ReferenceBCH per codeword of every call and fresh scratch
// buffers each time. Same layout, parameters and results as FlashBCH.
#pragma once

#include <vector>

class GF;

class ReferenceFlashBCH {
 public:
  ReferenceFlashBCH();
  ~ReferenceFlashBCH();
  ReferenceFlashBCH(const ReferenceFlashBCH&) = delete;
  ReferenceFlashBCH& operator=(const ReferenceFlashBCH&) = delete;

  void init(int numCodewords, const int* dataLengths, int t, bool bypass, bool byteAlignParity, int tDecode,
            int lengthUnit, int placement);
  void encode(const int* in, int* out, int index);
  int decode(const int* in, int* out, int index);
  void encode_au(const int* in, int* out);
  int decode_au(const int* in, int* out, int* results);
  int get_parity_length() const { return storedParityLen; }
  void getSyndromes(int** out) const;
  void getLambda(int** out) const;

 private:
  int messageLength(int index) const;

  GF* field;
  int numCodewords = 0;
  std::vector<int> dataLengths;
  int t = 0;
  bool bypass = false;
  int parityLen = 0;
  int storedParityLen = 0;
  int tDecode = 0;
  int lengthUnit = 0;
  int placement = 0;
  const int m = 15;
  std::vector<std::vector<int>> syndromes, lambdas;
};
