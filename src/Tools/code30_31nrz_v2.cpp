#include "Tools/code30_31nrz_v2.h"

#include <algorithm>
#include <cstdlib>
#include <iostream>

#include "Tools/precoder.h"

namespace {

const int kPrecoderTaps[] = {1, 0, -1};  // 1/(1+D^2)
const int kHead = 8;                    // bits copied before the coded part
const int kCodedIn = 12;
const int kCodedOut = 13;
const int kTail = 10;                   // bits copied after it

[[noreturn]] void illegalPartialSize() {
  std::cout << "CODE30/31nrz::encodePartialWord: Illigal partial word size" << std::endl;
  std::exit(-1);
}

}  // namespace

Code30_31nrz_v2::Code30_31nrz_v2() : RLL_Code(30, 31) { precoder = new Precoder(kPrecoderTaps, 3); }

Code30_31nrz_v2::Code30_31nrz_v2(const Code30_31nrz_v2& other) : RLL_Code(other), inner(other.inner) {
  precoder = new Precoder(*other.precoder);
}

Code30_31nrz_v2& Code30_31nrz_v2::operator=(const Code30_31nrz_v2& other) {
  if (this != &other) {
    RLL_Code::operator=(other);
    *precoder = *other.precoder;
    inner = other.inner;
  }
  return *this;
}

Code30_31nrz_v2::~Code30_31nrz_v2() { delete precoder; }

void Code30_31nrz_v2::encode(int* in, int* out, bool) {
  std::copy(in, in + kHead, out);
  inner.encode(in + kHead, out + kHead);
  std::copy(in + kHead + kCodedIn, in + kHead + kCodedIn + kTail, out + kHead + kCodedOut);
}

void Code30_31nrz_v2::decode(int* in, int* out, bool) {
  std::copy(in, in + kHead, out);
  inner.decode(in + kHead, out + kHead);
  std::copy(in + kHead + kCodedOut, in + kHead + kCodedOut + kTail, out + kHead + kCodedIn);
}

int Code30_31nrz_v2::block_encode(int* in, int* out, int nblocks, bool flag) {
  return RLL_Code::block_encode(in, out, nblocks, flag);
}

int Code30_31nrz_v2::block_decode(int* in, int* out, int nblocks, bool flag) {
  return RLL_Code::block_decode(in, out, nblocks, flag);
}

void Code30_31nrz_v2::reset_parity_delay(int) {}

int Code30_31nrz_v2::encodePartialWord(int* in, int* out, int size, bool) {
  if (size == kTail) {
    std::copy(in, in + kTail, out);
    return kTail;
  }
  if (size != kHead + kCodedIn) illegalPartialSize();
  std::copy(in, in + kHead, out);
  inner.encode(in + kHead, out + kHead);
  return kHead + kCodedOut;
}

int Code30_31nrz_v2::decodePartialCodeword(int* in, int* out, int size, bool) {
  if (size == kTail) {
    std::copy(in, in + kTail, out);
    return kTail;
  }
  if (size != kHead + kCodedOut) illegalPartialSize();
  std::copy(in, in + kHead, out);
  inner.decode(in + kHead, out + kHead);
  return kHead + kCodedIn;
}
