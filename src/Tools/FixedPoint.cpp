// Fixed-point numbers; the model and the mode letters are described in
// FixedPoint.h.
//
// Registers of up to 32 bits behave as 32-bit hardware does: a word is taken
// from a double by a saturating conversion to a signed 32-bit integer, shifts
// work on 32 bits, and a shift count of 32 or more yields 0. Longer registers
// (up to 52 bits, which a double still holds exactly) use 64-bit words.
#include "Tools/FixedPoint.h"

#include <cfloat>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <limits>

#include "Tools/failedCheck.h"

namespace {

const char* const kSourcePath = "Tools/FixedPoint.cpp";
const int kTextSize = 32;
const int kStatsTextSize = 1024;

#define FIXED_POINT_CHECK(condition, text) TOOLS_CHECK(kSourcePath, condition, text)

// double -> integer as the ARM conversion instructions do it: out-of-range
// values saturate and NaN gives 0.
int64_t saturatingConvert(double x, int64_t lo, int64_t hi) {
  if (std::isnan(x)) return 0;
  if (x <= static_cast<double>(lo)) return lo;
  if (x >= static_cast<double>(hi)) return hi;
  return static_cast<int64_t>(x);
}

int64_t saturatingInt32(double x) {
  return saturatingConvert(x, std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max());
}

// Reinterprets the low 32 bits as a signed 32-bit integer.
int64_t asInt32(uint64_t bits) {
  const uint32_t low = static_cast<uint32_t>(bits);
  return low >= 0x80000000u ? static_cast<int64_t>(low) - (int64_t(1) << 32) : static_cast<int64_t>(low);
}

// Arithmetic right shift of a 64-bit pattern, 0 <= k <= 63.
uint64_t shiftRightArithmetic(uint64_t bits, int k) {
  const uint64_t shifted = bits >> k;
  if ((bits >> 63) == 0 || k == 0) return shifted;
  return shifted | ~(~uint64_t(0) >> k);
}

}  // namespace

std::ostream& operator<<(std::ostream& os, const FixedPointParam& p) {
  return os << "(" << p.wlen << "," << p.scale << "," << p.mode << ") ";
}

std::istream& operator>>(std::istream& is, FixedPointParam& p) {
  char separator;
  is >> separator >> p.wlen >> separator >> p.scale >> separator >> p.mode;
  if (!p.mode.empty()) p.mode.pop_back();  // the closing parenthesis
  return is;
}

FixedPoint::FixedPoint() : FixedPoint(0.0) {}

FixedPoint::FixedPoint(int wlen, int scale, const char* mode) {
  initialize(0.0);
  set_format(wlen, scale, mode);
  reset_stats();
}

FixedPoint::FixedPoint(const double& v) {
  initialize(v);
  set_format(0, 0, "");
  reset_stats();
}

FixedPoint::FixedPoint(const FixedPointParam& p) {
  initialize(0.0);
  set_format(p, true);
  reset_stats();
}

FixedPoint::FixedPoint(const FixedPoint& o) {
  initialize(o.value_);
  set_format(o.wlen_, o.scale_, o.get_mode().c_str());
  reset_stats();
}

FixedPoint& FixedPoint::operator=(const FixedPoint& o) {
  if (this != &o) copy(o);
  return *this;
}

FixedPoint::~FixedPoint() = default;

void FixedPoint::initialize(const double& v) {
  value_ = v;
  text_.reset();
  stats_text_.reset();
  overflow_ = false;
  stop_stats();
}

void FixedPoint::copy(const FixedPoint& o) {
  value_ = o.value_;
  wlen_ = o.wlen_;
  mask_ = o.mask_;
  sign_bit_ = o.sign_bit_;
  scale_ = o.scale_;
  max_ = o.max_;
  min_ = o.min_;
  part_sat_low_ = o.part_sat_low_;
  part_sat_high_ = o.part_sat_high_;
  quantum_ = o.quantum_;
  signed_ = o.signed_;
  limit_ = o.limit_;
  round_ = o.round_;
  symmetric_ = o.symmetric_;
  sm_family_ = o.sm_family_;
  sign_magnitude_ = o.sign_magnitude_;
  ones_complement_ = o.ones_complement_;
  format_key_ = o.format_key_;
}

void FixedPoint::set_format(int wlen_, int scale_, const char* mode) {
  FIXED_POINT_CHECK(0 <= wlen_ && wlen_ <= 52, "0 <= wlen_ && wlen_ <= 52");
  FIXED_POINT_CHECK(std::fabs(static_cast<double>(scale_)) <= 1022, "abs((double)scale_) <= 1022");
  set_mode(mode);

  this->wlen_ = wlen_;
  this->scale_ = scale_;
  mask_ = (uint64_t(1) << wlen_) - 1;
  sign_bit_ = wlen_ == 0 ? 0 : uint64_t(1) << (wlen_ - 1);
  quantum_ = wlen_ != 0 ? std::ldexp(1.0, scale_) : std::ldexp(1.0, -52);

  if (wlen_ == 0) {
    max_ = DBL_MAX;
    min_ = -DBL_MAX;
  } else if (!signed_) {
    min_ = 0.0;
    max_ = (std::ldexp(1.0, wlen_) - 1) * quantum_;
  } else {
    max_ = (std::ldexp(1.0, wlen_ - 1) - 1) * quantum_;
    min_ = sm_family_ ? -max_ : -std::ldexp(1.0, wlen_ - 1) * quantum_;
  }

  *this = value_;

  uint32_t key = static_cast<uint32_t>(wlen_ * 64 + scale_ + 1024) << 11;
  for (bool flag : {signed_, limit_, round_, symmetric_}) key = (key + flag) * 2;
  format_key_ = key + sm_family_;
}

void FixedPoint::set_format(const FixedPointParam& p, bool quantize) {
  set_format(p.wlen * quantize, p.scale, p.mode.c_str());
}

void FixedPoint::set_mode(const char* mode) {
  signed_ = true;
  limit_ = true;
  round_ = true;
  symmetric_ = false;
  sm_family_ = sign_magnitude_ = ones_complement_ = false;
  for (const char* p = mode ? mode : ""; *p; ++p) {
    switch (std::tolower(static_cast<unsigned char>(*p))) {
      case 's': signed_ = true; break;
      case 'u': signed_ = sm_family_ = sign_magnitude_ = ones_complement_ = false; break;
      case 'l': limit_ = true; break;
      case 'o': limit_ = false; break;
      case 'r': round_ = true; symmetric_ = false; break;
      case 'z': round_ = true; symmetric_ = true; break;
      case 't': round_ = false; symmetric_ = false; break;
      case 'm':
        signed_ = sm_family_ = sign_magnitude_ = true;
        ones_complement_ = false;
        break;
      case 'c':
        signed_ = sm_family_ = ones_complement_ = true;
        sign_magnitude_ = false;
        break;
      default: break;
    }
  }
}

std::string FixedPoint::get_mode() const {
  std::string mode = signed_ ? "s" : "u";
  mode += limit_ ? "l" : "o";
  mode += round_ ? (symmetric_ ? "z" : "r") : "t";
  if (sign_magnitude_)
    mode += "m";
  else if (ones_complement_)
    mode += "c";
  return mode;
}

void FixedPoint::set_part_sat_thresh(int n) {
  if (wlen_ == 0) {
    part_sat_low_ = -DBL_MAX;
    part_sat_high_ = DBL_MAX;
    return;
  }
  const double reserved = std::ldexp(1.0, wlen_ - n);
  if (!signed_) {
    part_sat_low_ = 0.0;
    part_sat_high_ = ((std::ldexp(1.0, wlen_) - 1) - reserved) * quantum_;
  } else {
    const double half = std::ldexp(1.0, wlen_ - 1);
    part_sat_low_ = -(half - reserved) * quantum_;
    part_sat_high_ = ((half - 1) - reserved) * quantum_;
  }
}

int64_t FixedPoint::register_word(double x) const {
  if (wlen_ <= 32) return saturatingInt32(x);
  return saturatingConvert(x, std::numeric_limits<int64_t>::min(), std::numeric_limits<int64_t>::max());
}

int64_t FixedPoint::word_of_value() const { return register_word(std::floor(value_ / quantum_)); }

FixedPoint& FixedPoint::operator=(const double& input) {
  const double x = input;  // set_format passes value_ itself
  if (wlen_ != 0) {
    const double q = quantum_;
    double k;
    if (!round_)
      k = sm_family_ ? std::floor(std::fabs(x) / q) : std::floor(x / q);
    else if (!symmetric_ || x > 0)
      k = std::floor(x / q + 0.5);
    else
      k = std::ceil(x / q - 0.5);
    double t = k * q;

    if (limit_) {
      if (max_ < t) {
        t = max_;
        overflow_ = true;
      } else if (min_ > t) {
        t = min_;
        overflow_ = true;
      }
    } else {
      const int64_t w = register_word(std::floor(t / q));
      uint64_t wrapped = static_cast<uint64_t>(w) & mask_;
      if (signed_ && (wrapped & sign_bit_)) wrapped |= ~mask_;
      if (static_cast<int64_t>(wrapped) != w) overflow_ = true;
      t = static_cast<double>(static_cast<int64_t>(wrapped)) * q;
    }

    value_ = t;
    // Sign-magnitude and ones' complement keep the sign of the input even
    // when the magnitude quantises to 0: that is their negative zero.
    if (sm_family_ && std::signbit(value_) != std::signbit(x)) value_ = -value_;
  } else {
    value_ = x;
  }

  if (stats_on_) {
    if (value_ > stat_max_) stat_max_ = value_;
    if (value_ < stat_min_) stat_min_ = value_;
    sum_ += value_;
    sum_sq_ += value_ * value_;
    ++count_;
  }
  return *this;
}

double FixedPoint::get_word() const {
  if (wlen_ != 0) return static_cast<double>(word_of_value());
  return static_cast<double>(saturatingInt32(value_));
}

// The register's bit pattern. For registers of up to 32 bits the 32-bit
// pattern comes back sign-extended from bit 31, as the word is held in a
// signed 32-bit integer; shifting it right is then an arithmetic shift.
uint64_t FixedPoint::register_pattern() const {
  // The integer word itself, not get_word()'s double: a saturated 64-bit
  // word (INT64_MAX) rounds to 2^63 as a double, which no longer converts.
  const int64_t w = wlen_ != 0 ? word_of_value() : saturatingInt32(value_);
  uint64_t bits;
  if (sm_family_ && std::signbit(value_)) {
    const uint64_t magnitude = uint64_t(0) - static_cast<uint64_t>(w);
    bits = sign_magnitude_ ? sign_bit_ + magnitude : magnitude ^ mask_;
  } else if (signed_ && w < 0) {
    bits = static_cast<uint64_t>(w) + (mask_ + 1);
  } else {
    bits = static_cast<uint64_t>(w);
  }
  return wlen_ <= 32 ? static_cast<uint64_t>(asInt32(bits)) : bits;
}

// nbits >= 1 asks for the register aligned to nbits bits: its top nbits bits
// when wlen >= nbits, else the word moved up to fill nbits. nbits < 1 asks for
// the register itself; for registers longer than 32 bits that is its low 32
// bits (ask for nbits = 32 to get the top ones).
uint32_t FixedPoint::get_unsigned_word(int nbits) const {
  const uint64_t bits = register_pattern();
  if (nbits < 1) return static_cast<uint32_t>(bits);
  if (wlen_ >= nbits) return static_cast<uint32_t>(shiftRightArithmetic(bits, wlen_ - nbits));
  const int up = nbits - wlen_;
  return up >= 64 ? 0 : static_cast<uint32_t>(bits << up);
}

double FixedPoint::value_from_pattern(uint64_t bits) const {
  const uint64_t w = bits & mask_;
  int64_t word = static_cast<int64_t>(w);
  if ((w & sign_bit_) && signed_) {
    if (sign_magnitude_)
      word = -static_cast<int64_t>(w - sign_bit_);
    else if (ones_complement_)
      word = -static_cast<int64_t>(mask_ ^ w);
    else
      word = static_cast<int64_t>(w | ~mask_);
  }
  if (wlen_ <= 32) word = asInt32(static_cast<uint64_t>(word));
  return static_cast<double>(word) * quantum_;
}

double FixedPoint::val_from_unsigned_word(uint32_t word, int nbits) const {
  uint64_t bits = word;
  if (nbits > 0) {
    if (wlen_ >= nbits)
      bits <<= (wlen_ - nbits);
    else
      bits = nbits - wlen_ >= 32 ? 0 : bits >> (nbits - wlen_);
  }
  return value_from_pattern(bits);
}

void FixedPoint::set_unsigned_word(uint32_t word, int nbits) { *this = val_from_unsigned_word(word, nbits); }

double FixedPoint::get_fixed_float() const {
  return wlen_ != 0 ? static_cast<double>(get_unsigned_word(-1)) : value_;
}

void FixedPoint::set_fixed_float(double d) {
  if (wlen_ == 0) {
    value_ = d;
    return;
  }
  set_unsigned_word(static_cast<uint32_t>(saturatingConvert(d, 0, std::numeric_limits<uint32_t>::max())), -1);
}

double FixedPoint::get_truncated_val(int n) const {
  if (wlen_ == 0 || wlen_ <= n) return value_;
  const uint64_t bits = wlen_ <= 32 ? uint64_t(get_unsigned_word(-1)) : register_pattern();
  const int down = wlen_ - n;
  return value_from_pattern(down >= 64 ? 0 : bits >> down);
}

double FixedPoint::left_shift(int n) const {
  if (wlen_ == 0) return std::ldexp(value_, n);
  const int width = wlen_ <= 32 ? 32 : 64;
  const uint64_t w = static_cast<uint64_t>(word_of_value());
  uint64_t shifted = w;
  if (n >= 1)
    shifted = n >= width ? 0 : w << n;
  else if (n < 0)
    shifted = shiftRightArithmetic(w, n <= -width ? width - 1 : -n);
  const int64_t word = width == 32 ? asInt32(shifted) : static_cast<int64_t>(shifted);
  return static_cast<double>(word) * quantum_;
}

char* FixedPoint::text() const {
  if (!text_) text_.reset(new char[kTextSize]);
  return text_.get();
}

const char* FixedPoint::print_precision() const {
  const char* format = signed_ ? (limit_ ? "L%d.%d" : "%d.%d") : (limit_ ? "UL%d.%d" : "U%d.%d");
  std::snprintf(text(), kTextSize, format, wlen_, scale_);
  return text_.get();
}

const char* FixedPoint::get_pretty() const {
  if (wlen_ != 0)
    std::snprintf(text(), kTextSize, "%lld*2^%d", static_cast<long long>(word_of_value()), scale_);
  else
    std::snprintf(text(), kTextSize, "%g", value_);
  return text_.get();
}

const char* FixedPoint::hex_() const {
  if (wlen_ == 0) {
    std::snprintf(text(), kTextSize, "%g", value_);
    return text_.get();
  }
  const int digits = (wlen_ + 3) / 4;
  if (digits > 8) {
    std::cerr << "FixedPoint::hex_( void ): wlen is too long" << std::endl;
    std::snprintf(text(), kTextSize, "%0*llx", digits, static_cast<unsigned long long>(register_pattern()));
    return text_.get();
  }
  std::snprintf(text(), kTextSize, "%08x", static_cast<unsigned>(get_unsigned_word(-1)));
  return text_.get() + 8 - digits;
}

const char* FixedPoint::hex_(bool as_hex) const {
  if (wlen_ == 0 || !as_hex) {
    std::snprintf(text(), kTextSize, "%g", value_);
    return text_.get();
  }
  const int digits = static_cast<int>(std::ceil(wlen_ / 4.0));
  const int64_t word = word_of_value();
  if (wlen_ <= 32) {
    std::snprintf(text(), kTextSize, "%8x", static_cast<unsigned>(static_cast<uint32_t>(word)));
    return text_.get() + 8 - digits;
  }
  std::snprintf(text(), kTextSize, "%16llx", static_cast<unsigned long long>(word));
  return text_.get() + 16 - digits;
}

const char* FixedPoint::hex_(int wlen, int scale, const char* mode, double v) {
  set_format(wlen, scale, mode);
  *this = v;
  return hex_();
}

void FixedPoint::hex_(int wlen, int scale, const char* mode, double v, std::ostream& os, bool as_hex) {
  set_format(wlen, scale, mode);
  *this = v;
  if (as_hex)
    os << hex_();
  else
    os << value_;
  os.flush();
}

void FixedPoint::reset_stats() {
  count_ = 0;
  stat_max_ = -DBL_MAX;
  stat_min_ = DBL_MAX;
  sum_ = 0.0;
  sum_sq_ = 0.0;
}

const char* FixedPoint::get_pretty_stats() const {
  if (!stats_text_) stats_text_.reset(new char[kStatsTextSize]);
  const double n = count_;
  const double mean = sum_ / n;
  const double deviation = std::sqrt(sum_sq_ / n - mean * mean);
  std::snprintf(stats_text_.get(), kStatsTextSize, "%12.4e %12.4e %12.4e %12.4e %s", stat_min_, stat_max_, mean,
                deviation, overflow_ ? "OVR" : "");
  return stats_text_.get();
}

std::ostream& operator<<(std::ostream& os, const FixedPoint& f) { return os << f.get_val(); }

std::istream& operator>>(std::istream& is, FixedPoint& f) {
  double v;
  if (is >> v) f = v;
  return is;
}
