// Free polynomial utilities over a GF, in ascending coefficient order
// (index i holds the coefficient of x^i; the degree is passed separately),
// plus the conversion between bit streams and streams of field symbols
// (m bits per symbol, most significant bit first).
//
// This is the reverse of the leading-first order of GF's member operations.
#pragma once

class GF;

// poly(x) for an ascending polynomial of degree deg.
int evaluatePoly(GF* gf, const int* poly, int deg, int x);
// prod[0..degA+degB] = a * b.
void polyMult(GF* gf, const int* a, int degA, const int* b, int degB, int* prod);
// prod[0..degA+degB] = a * b over GF(2), for 0/1 coefficients in any order.
void polyMultGF2(const int* a, int degA, const int* b, int degB, int* prod);
// sum = a + b; the degree is trimmed only when degA == degB.
void polyAdd(GF* gf, const int* a, int degA, const int* b, int degB, int* sum, int& degSum);
// a = quot * b + rem, both results with trimmed degrees.
void longDivision(GF* gf, const int* a, int degA, const int* b, int degB, int* quot, int& degQ, int* rem,
                  int& degR);
// The same division computed through GF::longDivision on reversed copies.
void longDivisionOld(GF* gf, const int* a, int degA, const int* b, int degB, int* quot, int& degQ,
                     int* rem, int& degR);
int bitStream2symbolStream(GF* gf, const int* bits, int nBits, int* symbols, int nSymbols);
void symbolStream2bitStream(GF* gf, const int* symbols, int nSymbols, int* bits, int nBits);
