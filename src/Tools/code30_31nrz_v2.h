// Code30_31nrz_v2: a rate-30/31 run-length-limited NRZ code. A 30-bit word
// passes bits 0..7 and 20..29 through unchanged and sends bits 8..19 through
// the rate-12/13 code, which adds the one redundant bit:
//   codeword = u0..u7 | C(u8..u19) (13 bits) | u20..u29.
// Partial words at the end of a stream are 10 bits (copied) or 20 bits
// (8 copied, 12 coded into 13).
#pragma once

#include "Tools/code12_13_v2.h"
#include "Tools/rllCode.h"

class Code30_31nrz_v2 : public RLL_Code {
 public:
  Code30_31nrz_v2();
  Code30_31nrz_v2(const Code30_31nrz_v2& other);
  Code30_31nrz_v2& operator=(const Code30_31nrz_v2& other);
  ~Code30_31nrz_v2() override;

  // The flag is not used by this code.
  void encode(int* in30, int* out31, bool flag) override;
  void decode(int* in31, int* out30, bool flag) override;
  int block_encode(int* in, int* out, int nblocks, bool flag) override;
  int block_decode(int* in, int* out, int nblocks, bool flag) override;
  void reset_parity_delay(int value) override;

  // size 10: 10 bits copied; size 20: 21 bits out. Returns the number of
  // bits written. Any other size is fatal.
  int encodePartialWord(int* in, int* out, int size, bool flag);
  // size 10: 10 bits copied; size 21: 20 bits out. Returns the number of
  // bits written. Any other size is fatal.
  int decodePartialCodeword(int* in, int* out, int size, bool flag);

 private:
  Code12_13_v2 inner;
};
