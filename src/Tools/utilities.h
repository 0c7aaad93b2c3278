// Bit, symbol and channel helpers on caller-owned arrays.
//
// Bit arrays hold one bit (0 or 1) per int. A symbol is a run of w <= 32
// consecutive bits read as an integer: LSB first (element j has weight 2^j)
// or, for the _rev forms, MSB first (element 0 is the most significant).
#pragma once

#include <string>

// bits[j] = bit j of value (LSB first); for j >= 32 the sign bit.
void hex2binary(int value, int* bits, int w);
// bits[j] = bit w-1-j of value (MSB first).
void hex2binary_rev(int value, int* bits, int w);
// Sum of bits[j] * 2^j over j < min(w, 32).
int binary2hex(const int* bits, int w);
// The same with the w elements taken MSB first.
int binary2hex_rev(const int* bits, int w);
// Whole symbols only; leftover bits are ignored. Returns nbits / w.
int bits2symbols(const int* bits, int* symbols, int nbits, int w);
void bits2symbols_rev(const int* bits, int* symbols, int nbits, int w);
void symbols2bits(const int* symbols, int* bits, int nsymbols, int w);
void symbols2bits_rev(const int* symbols, int* bits, int nsymbols, int w);
// Reverses the n elements of a in place.
void array_rev(int* a, int n);
// Index of the first element that is neither 0 nor 1, or -1.
int checkBinary(const int* a, int n);

// Gaussian density N(mean, variance) at x.
double Gaussian(double mean, double variance, double x);
// Log-likelihood ratio of a +-1 symbol received as x in noise of the given
// variance: log(p(+1)/p(-1)) for flag 0, its negative otherwise.
double LLR(double x, double variance, int flag);

// Reverses the order of the bytes (8-element runs, each kept in order) inside
// every whole word of wordBits elements. Elements outside whole bytes of
// whole words are copied unchanged; a wordBits below 8 copies everything.
void endianness_swap(const int* in, int* out, int n, int wordBits);
// Reverses every group of groupBits elements; a trailing partial group is
// reversed within itself. A groupBits below 1 copies everything.
template <typename T>
void bit_order_swap(const T* in, T* out, int n, int groupBits);
// endianness_swap when doByteSwap, then bit_order_swap when doBitSwap.
// in and out may be the same array.
void byte_and_bit_swap(const int* in, int n, int* out, int wordBits, int groupBits, int doByteSwap,
                       int doBitSwap);

// Writes a two-dimensional table to a text file, one row per line: rows[r][c]
// for r < nrows, c < ncols, each value followed by a blank, each row by "\n".
// The file is truncated first unless append. field_width is the minimum width
// of every value: a positive width right-aligns the value in that many
// characters (wider values are written whole), 0 or less writes it bare.
// Values take the stream's default formatting; character-sized integers print
// as numbers and bools as 0/1. Instantiated for bool, unsigned char, int,
// unsigned int and double.
template <typename T>
void print_2d_table_to_file(const T* const* rows, int nrows, int ncols, const std::string& file, bool append,
                            int field_width);
