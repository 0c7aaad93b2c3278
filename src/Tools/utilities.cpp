#include "Tools/utilities.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <fstream>
#include <iomanip>
#include <vector>

void hex2binary(int value, int* bits, int w) {
  const uint32_t v = static_cast<uint32_t>(value);
  for (int j = 0; j < w; ++j) bits[j] = static_cast<int>((v >> std::min(j, 31)) & 1u);
}

void hex2binary_rev(int value, int* bits, int w) {
  std::vector<int> lsbFirst(static_cast<size_t>(std::max(w, 0)));
  hex2binary(value, lsbFirst.data(), w);
  std::reverse_copy(lsbFirst.begin(), lsbFirst.end(), bits);
}

int binary2hex(const int* bits, int w) {
  uint32_t sum = 0;
  for (int j = 0; j < std::min(w, 32); ++j) sum += static_cast<uint32_t>(bits[j]) << j;
  return static_cast<int>(sum);
}

int binary2hex_rev(const int* bits, int w) {
  uint32_t sum = 0;
  for (int j = 0; j < std::min(w, 32); ++j) sum += static_cast<uint32_t>(bits[w - 1 - j]) << j;
  return static_cast<int>(sum);
}

int bits2symbols(const int* bits, int* symbols, int nbits, int w) {
  const int count = nbits / w;
  for (int j = 0; j < count; ++j) symbols[j] = binary2hex(bits + j * w, w);
  return count;
}

void bits2symbols_rev(const int* bits, int* symbols, int nbits, int w) {
  const int count = nbits / w;
  for (int j = 0; j < count; ++j) symbols[j] = binary2hex_rev(bits + j * w, w);
}

void symbols2bits(const int* symbols, int* bits, int nsymbols, int w) {
  for (int j = 0; j < nsymbols; ++j) hex2binary(symbols[j], bits + j * w, w);
}

void symbols2bits_rev(const int* symbols, int* bits, int nsymbols, int w) {
  for (int j = 0; j < nsymbols; ++j) hex2binary_rev(symbols[j], bits + j * w, w);
}

void array_rev(int* a, int n) {
  if (n > 1) std::reverse(a, a + n);
}

int checkBinary(const int* a, int n) {
  for (int i = 0; i < n; ++i)
    if (a[i] != 0 && a[i] != 1) return i;
  return -1;
}

double Gaussian(double mean, double variance, double x) {
  return std::exp(-(x - mean) * (x - mean) / (2 * variance)) / std::sqrt(variance * 6.283185308);
}

double LLR(double x, double variance, int flag) {
  const double plus = Gaussian(1.0, variance, x);
  const double minus = Gaussian(-1.0, variance, x);
  return flag == 0 ? std::log(plus / minus) : std::log(minus / plus);
}

void endianness_swap(const int* in, int* out, int n, int wordBits) {
  if (n <= 0) return;
  std::copy(in, in + n, out);
  const int bytes = wordBits / 8;
  if (bytes < 1) return;
  std::vector<int> word(static_cast<size_t>(bytes));
  for (int w = 0; w < n / wordBits; ++w) {
    bits2symbols_rev(in + w * wordBits, word.data(), 8 * bytes, 8);
    std::reverse(word.begin(), word.end());
    symbols2bits_rev(word.data(), out + w * wordBits, bytes, 8);
  }
}

template <typename T>
void bit_order_swap(const T* in, T* out, int n, int groupBits) {
  if (n <= 0) return;
  if (groupBits < 1) {
    std::copy(in, in + n, out);
    return;
  }
  for (int s = 0; s < n; s += groupBits) {
    const int L = std::min(n - s, groupBits);
    for (int j = 0; j < L; ++j) out[s + j] = in[s + L - 1 - j];
  }
}

template void bit_order_swap<int>(const int*, int*, int, int);

void byte_and_bit_swap(const int* in, int n, int* out, int wordBits, int groupBits, int doByteSwap,
                       int doBitSwap) {
  if (n <= 0) return;
  std::vector<int> scratch(in, in + n);
  if (doByteSwap != 0) endianness_swap(in, scratch.data(), n, wordBits);
  if (doBitSwap != 0)
    bit_order_swap(scratch.data(), out, n, groupBits);
  else
    std::copy(scratch.begin(), scratch.end(), out);
}

template <typename T>
void print_2d_table_to_file(const T* const* rows, int nrows, int ncols, const std::string& file, bool append,
                            int field_width) {
  std::ofstream out(file, std::ios::out | (append ? std::ios::app : std::ios::trunc));
  const int width = std::max(field_width, 0);
  for (int r = 0; r < nrows; ++r) {
    for (int c = 0; c < ncols; ++c) out << std::setw(width) << +rows[r][c] << " ";
    out << "\n";
  }
}

template void print_2d_table_to_file<bool>(const bool* const*, int, int, const std::string&, bool, int);
template void print_2d_table_to_file<unsigned char>(const unsigned char* const*, int, int, const std::string&, bool,
                                                    int);
template void print_2d_table_to_file<int>(const int* const*, int, int, const std::string&, bool, int);
template void print_2d_table_to_file<unsigned int>(const unsigned int* const*, int, int, const std::string&, bool,
                                                   int);
template void print_2d_table_to_file<double>(const double* const*, int, int, const std::string&, bool, int);
