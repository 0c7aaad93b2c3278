// Precoder: a binary recursive (or, run backwards, feed-forward) filter over
// a stream of bits held one per int.
//
// With taps t[0..L-1] and a delay line of the L-1 previous values, one step
// forms y = XOR_j |t[j] * q[L-1-j]| over the queue q extended by the new
// symbol (newest last). precode() keeps y in the delay line, so the filter is
// recursive: taps (1, 0, -1) give y[t] = x[t] ^ y[t-2], the 1/(1+D^2)
// precoder. unprecode() keeps the raw input instead, giving
// y[t] = x[t] ^ x[t-2], its inverse. Started from the same delays the two are
// inverse to each other. A single tap (L = 1) has no memory and both
// directions leave the data alone.
//
// The same filter adds two parity bits per 33-bit block: the last two
// precoder outputs of the block, computed from reset delays, follow the
// block (InsertBfPrecode). The dummy-position helpers move such inserted
// positions in and out of a stream.
#pragma once

#include <deque>
#include <vector>

class Precoder {
 public:
  // The identity filter: one tap of 1.
  Precoder();
  // Copies L taps; delays start at 0. A tap count below 1 behaves as L = 1.
  Precoder(const int* taps, int L);
  Precoder(const Precoder&) = default;
  Precoder& operator=(const Precoder&) = default;
  ~Precoder() = default;

  int getNumTaps() const { return static_cast<int>(taps.size()); }
  bool is_trivial() const { return taps.size() <= 1; }

  void reset();
  // init[i] seeds delay i (oldest first): -1 means 0, 0 and 1 are taken as
  // given; anything else is fatal.
  void init_delays(const int* init);
  // Copies the L-1 delays, oldest first.
  void getDelays(int* out) const;

  // Both filter x[0..len-1] in place and carry the delays on.
  void precode(int* x, int len);
  void unprecode(int* x, int len);

  // Every 33 input bits become 35 output bits: the block, then the last two
  // outputs of precoding it from reset delays. Leaves the delays as they are
  // after the last block. Fatal unless out_len is a multiple of 35 or in_len
  // a multiple of 33.
  void InsertBfPrecode(const int* in, int in_len, int* out, int out_len);
  // Spreads in over out, writing 0 at the out_len - in_len ascending
  // positions of pos and the next input bit everywhere else. Same length
  // rule as InsertBfPrecode.
  void InsertBfPostcode(const int* in, int in_len, int* out, int out_len, int* pos);

  // True when index is not one of the npos entries of pos.
  static bool PositionNotParity(int index, const int* pos, int npos);
  // Drops the npos listed positions of in; needs in_len - out_len == npos.
  static void RemoveDummy(const int* in, int in_len, int* out, int out_len, const int* pos, int npos);
  // Writes 0 at the npos listed positions of out and the input bits, in
  // order, elsewhere; needs out_len - in_len == npos.
  static void InsertDummy(const int* in, int in_len, int* out, int out_len, const int* pos, int npos);

 private:
  // One filter step on symbol x; recursive chooses which value stays in the
  // delay line.
  int step(int x, bool recursive);

  std::vector<int> taps;
  std::deque<int> delays;  // L-1 values, oldest at the front
};
