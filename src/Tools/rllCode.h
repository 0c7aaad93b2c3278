// RLL_Code: the common shape of a run-length-limited line code that maps
// user words of k bits to codewords of n bits (one bit per int), so that the
// written stream keeps enough transitions for timing recovery.
//
// A derived code supplies the word mappings (encode/decode) and owns the
// precoder, if any; the base turns them into block coders over whole
// streams. The hooks for DC control and parity are empty here; codes that
// need them override them. The bool argument picks between variants of a
// code's mapping and is ignored by codes that have only one.
#pragma once

class Precoder;

class RLL_Code {
 public:
  RLL_Code(int k, int n);
  virtual ~RLL_Code();

  virtual void encode(int* in, int* out, bool flag);
  virtual void decode(int* in, int* out, bool flag);
  // Encode nblocks consecutive words of k bits into nblocks codewords of n
  // bits; returns the number of bits written (nblocks * n).
  virtual int block_encode(int* in, int* out, int nblocks, bool flag);
  // The inverse: n bits in, k bits out per block; returns nblocks * k.
  virtual int block_decode(int* in, int* out, int nblocks, bool flag);
  virtual void init_precoder(int* init);
  virtual void resetDc(int* state, int len);
  virtual void resetDc(int state);
  virtual void parity_calculate(int* word);
  virtual void reset_parity_delay(int value) = 0;

  int getK() const { return k; }
  int getN() const { return n; }
  // True when a codeword spends at least two bits beyond its user bits.
  bool hasTwoRedundantBits() const { return twoRedundantBits; }

 protected:
  // Derived codes copy their own precoder; the base copies only the shape.
  RLL_Code(const RLL_Code& other);
  RLL_Code& operator=(const RLL_Code& other);

  Precoder* precoder = nullptr;  // owned by the derived code
  int k;
  int n;
  bool twoRedundantBits;
};
