// quilPackedBCH: the library's BCH codec on packed bits, for hosts and tools
// that hold their data as bytes rather than one int per bit.
//
// The code is the one the flash codec uses for a codeword of `dataBits`
// data bits: the narrow-sense binary BCH code over GF(2^15) (x^15 + x + 1)
// correcting t errors, shortened to dataBits message bits, with 15*t parity
// bits. Encoding and decoding give exactly the parity, corrections and
// verdicts of quilEncodeBCH / quilDecodeBCH for a one-codeword block of the
// same length and t; both run on the same engine.
//
// Bit order: bit i of a packed string is bit 7 - (i mod 8) of byte i / 8
// (most significant bit first). Data take dataBytes() bytes, parity
// parityBytes() bytes (15*t bits, then zero bits up to the byte end). Bits
// past the end of either string are ignored on input; encode writes the
// parity's tail bits as 0.
//
// An object is not thread-safe (it keeps scratch space); use one per
// thread. Encode and decode allocate nothing.
#ifndef QUIL_PACKED_BCH_H
#define QUIL_PACKED_BCH_H

#include <cstdint>
#include <memory>

#if defined(_WIN32)
#define QUIL_PACKED_EXPORT __declspec(dllexport)
#else
#define QUIL_PACKED_EXPORT __attribute__((visibility("default")))
#endif

namespace quil {

enum class DecodeStatus {
  Clean,          // the word was a codeword; nothing changed
  Corrected,      // correctedBits bits were flipped
  Uncorrectable,  // more errors than the code can correct were detected; nothing changed
};

struct DecodeResult {
  DecodeStatus status;
  int correctedBits;  // 0 unless Corrected
};

class QUIL_PACKED_EXPORT PackedBCH {
 public:
  // dataBits >= 1, 1 <= t <= 128 and dataBits + 15*t <= 32767; otherwise
  // throws std::invalid_argument.
  PackedBCH(int dataBits, int t);
  ~PackedBCH();
  PackedBCH(const PackedBCH&) = delete;
  PackedBCH& operator=(const PackedBCH&) = delete;

  int dataBits() const;
  int correctionPower() const;
  int parityBits() const;  // 15 * t
  int dataBytes() const;
  int parityBytes() const;

  // parity <- the parity bits of data.
  void encode(const uint8_t* data, uint8_t* parity);

  // Corrects data and parity in place. When errorPositions is not null and
  // the word is corrected, it receives correctedBits codeword bit indices in
  // ascending order: 0 .. dataBits-1 for data bits, dataBits + j for parity
  // bit j (room for t entries is enough).
  DecodeResult decode(uint8_t* data, uint8_t* parity, int* errorPositions = nullptr);

  // Soft-decision decoding (Chase-II). data and parity hold the hard
  // decisions; reliability[i] >= 0 is |LLR| of codeword bit i (data bits,
  // then the 15t parity bits). Every subset of the `positions` least
  // reliable bits (0 .. kMaxChasePositions) is flipped and hard-decoded;
  // the decoded word that changes the least total reliability is kept, and
  // Uncorrectable means no test word decoded. With positions = 0, or with
  // all reliabilities equal, the result is exactly decode()'s. Corrections
  // and errorPositions as decode(), at most t + positions of them. Throws
  // std::invalid_argument for positions out of range or a reliability that
  // is negative or not a number.
  static constexpr int kMaxChasePositions = 10;
  DecodeResult decodeSoft(uint8_t* data, uint8_t* parity, const float* reliability, int positions,
                          int* errorPositions = nullptr);
  // The same from LLRs ln(P(bit = 0) / P(bit = 1)), one per codeword bit:
  // the hard decisions (bit 1 where the LLR is negative) are written to data
  // and parity, then corrected as by decodeSoft.
  DecodeResult decodeLlr(const float* llr, uint8_t* data, uint8_t* parity, int positions,
                         int* errorPositions = nullptr);

 private:
  struct State;
  std::unique_ptr<State> state;
};

}  // namespace quil

#endif
