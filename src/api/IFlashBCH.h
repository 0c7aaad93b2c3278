// IFlashBCH: the abstract face of the flash codec, the only thing the
// exported C functions see. A block is several independent BCH codewords;
// see FlashBCH for the layout.
#pragma once

class IFlashBCH {
 public:
  virtual ~IFlashBCH() {}
  virtual void init(int numCodewords, int* dataLengths, int t, bool bypass, bool byteAlignParity,
                    int tDecode, int lengthUnit, int placement) = 0;
  virtual void encode(int* in, int* out, int index) = 0;
  virtual int decode(int* in, int* out, int index) = 0;
  virtual void encode_au(int* in, int* out) = 0;
  virtual int decode_au(int* in, int* out, int* results) = 0;
  virtual int get_parity_length() = 0;
  virtual void getSyndromes(int** out) = 0;
  virtual void getLambda(int** out) = 0;
};

// Allocates a new FlashBCH and hands it out through its interface.
IFlashBCH* create_flashBCH();
