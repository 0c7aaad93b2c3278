// Fixed-point numbers: a double forced onto the grid, range and overflow
// behaviour of a hardware register of wlen bits whose least significant bit
// weighs 2^scale.
//
// A value x is quantised to k * q (q = 2^scale) by rounding half up, rounding
// halves away from zero, or truncating, then either saturated at the range
// limits or wrapped modulo 2^wlen. Signed numbers use two's complement,
// sign-magnitude or ones' complement registers; the last two have a symmetric
// range and a negative zero, which the value carries as -0.0. wlen = 0 means
// no quantisation: the number behaves as a plain double.
//
// Mode letters (case-insensitive, later ones win; the empty mode is "slr"):
//   s signed, u unsigned, l saturate, o wrap, r round half up,
//   z round halves away from zero, t truncate, m sign-magnitude, c ones' complement.
//
// Word lengths 1..32 model a 32-bit register: words pass through signed 32-bit
// integers (conversions from double saturate). Word lengths 33..52 use 64-bit
// words, so quantisation, saturation, wrapping and get_word stay exact; the
// accessors whose interface is a 32-bit word see the register through a 32-bit
// window (see get_unsigned_word), and hex_() prints all ceil(wlen/4) digits
// after a warning on the error stream.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <string>

struct FixedPointParam {
  int wlen = 0;
  int scale = 0;
  std::string mode;

  FixedPointParam() = default;
  FixedPointParam(int wlen_, int scale_, const std::string& mode_) : wlen(wlen_), scale(scale_), mode(mode_) {}

  bool operator==(const FixedPointParam& o) const {
    return wlen == o.wlen && scale == o.scale && mode == o.mode;
  }
  bool operator!=(const FixedPointParam& o) const { return !(*this == o); }
};

// Writes "(wlen,scale,mode) ".
std::ostream& operator<<(std::ostream& os, const FixedPointParam& p);
// Reads "(wlen,scale,mode)"; the mode word must end in the closing parenthesis.
std::istream& operator>>(std::istream& is, FixedPointParam& p);

class FixedPoint {
 public:
  // An unquantised zero.
  FixedPoint();
  FixedPoint(int wlen, int scale, const char* mode);
  // An unquantised number holding v.
  FixedPoint(const double& v);
  explicit FixedPoint(const FixedPointParam& p);
  // Same value and format; overflow flag and statistics start afresh.
  FixedPoint(const FixedPoint& o);
  // Same as copy(): value and format, keeping this number's flag and statistics.
  FixedPoint& operator=(const FixedPoint& o);
  ~FixedPoint();

  void initialize(const double& v);
  void copy(const FixedPoint& o);

  void set_format(int wlen_, int scale_, const char* mode);
  void set_format(const FixedPointParam& p, bool quantize);
  void set_mode(const char* mode);
  std::string get_mode() const;
  void set_part_sat_thresh(int n);

  FixedPoint& operator=(const double& x);

  double get_word() const;
  uint32_t get_unsigned_word(int nbits) const;
  double val_from_unsigned_word(uint32_t word, int nbits) const;
  void set_unsigned_word(uint32_t word, int nbits);
  double get_fixed_float() const;
  void set_fixed_float(double d);
  double get_truncated_val(int n) const;
  double left_shift(int n) const;

  // The text forms share one buffer: each call overwrites the previous text.
  const char* print_precision() const;
  const char* get_pretty() const;
  const char* hex_() const;
  const char* hex_(bool as_hex) const;
  const char* hex_(int wlen, int scale, const char* mode, double v);
  void hex_(int wlen, int scale, const char* mode, double v, std::ostream& os, bool as_hex);

  void start_stats() { stats_on_ = true; }
  void stop_stats() { stats_on_ = false; }
  void reset_stats();
  const char* get_pretty_stats() const;

  double get_val() const { return value_; }
  // Stores v as it is, without quantisation, range test or statistics.
  void set_val_unquantized(double v) { value_ = v; }
  bool get_overflow() const { return overflow_; }
  int get_wlen() const { return wlen_; }
  int get_scale() const { return scale_; }
  double get_quantum() const { return quantum_; }
  double get_max() const { return max_; }
  double get_min() const { return min_; }
  double get_part_sat_low() const { return part_sat_low_; }
  double get_part_sat_high() const { return part_sat_high_; }
  uint64_t get_mask() const { return mask_; }
  uint64_t get_sign_bit() const { return sign_bit_; }
  uint32_t get_format_key() const { return format_key_; }
  bool is_signed() const { return signed_; }
  bool is_limit() const { return limit_; }
  bool is_round() const { return round_; }
  bool is_symmetric() const { return symmetric_; }
  bool is_sign_mag_family() const { return sm_family_; }
  bool is_sign_magnitude() const { return sign_magnitude_; }
  bool is_ones_complement() const { return ones_complement_; }
  bool stats_on() const { return stats_on_; }
  double get_stat_max() const { return stat_max_; }
  double get_stat_min() const { return stat_min_; }
  double get_sum() const { return sum_; }
  double get_sum_sq() const { return sum_sq_; }
  int get_count() const { return count_; }

 private:
  int64_t register_word(double x) const;
  int64_t word_of_value() const;
  uint64_t register_pattern() const;
  double value_from_pattern(uint64_t w) const;
  char* text() const;

  bool overflow_ = false;
  double value_ = 0.0;
  int wlen_ = 0;
  uint64_t mask_ = 0;
  uint64_t sign_bit_ = 0;
  int scale_ = 0;
  double max_ = 0.0;
  double min_ = 0.0;
  double part_sat_low_ = 0.0;
  double part_sat_high_ = 0.0;
  double quantum_ = 0.0;
  mutable std::unique_ptr<char[]> text_;
  mutable std::unique_ptr<char[]> stats_text_;
  bool signed_ = true;
  bool limit_ = true;
  bool round_ = true;
  bool symmetric_ = false;
  bool sm_family_ = false;
  bool sign_magnitude_ = false;
  bool ones_complement_ = false;
  uint32_t format_key_ = 0;
  bool stats_on_ = false;
  double stat_max_ = 0.0;
  double stat_min_ = 0.0;
  double sum_ = 0.0;
  double sum_sq_ = 0.0;
  int count_ = 0;
};

// Writes the value as a double.
std::ostream& operator<<(std::ostream& os, const FixedPoint& f);
// Reads a double and assigns it, so it is quantised.
std::istream& operator>>(std::istream& is, FixedPoint& f);
