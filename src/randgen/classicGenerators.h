// Classic free generators of uniform, Gaussian, exponential and skew-normal
// deviates, with the incomplete gamma function and the error function.
//
// Seed words: every generator takes a `long* idum` owned by the caller and
// updated by each call. Whatever the width of long, the word is a 32-bit
// signed integer: its low 32 bits are read as two's complement and the
// result is written back sign-extended, so sequences are the same where long
// has 32 bits and where it has 64. A word <= 0 restarts the generator's
// shuffle table from it (-2^31, whose negation does not fit, restarts as 1).
//
// Each generator keeps its table in function-local statics: each function
// is one process-wide generator, not safe to call from two threads.
//
// State files live in the current directory: "rand2_seed.txt" (ran2 with a
// mode) and "gasdev_seed.txt" (gasdev with a mode). Saving and loading
// return 0.0 on success and -1.0 when the file cannot be written, cannot be
// opened, or does not hold a complete state that the generator could have
// reached; on -1.0 nothing of the generator's state has changed.
#pragma once

// Minimal-standard multiplicative generator (16807 mod 2^31 - 1) behind a
// 32-entry Bays-Durham shuffle. Deviates in (0, 0.99999988]. Its very
// first call in a process restarts from 1 unless the word is negative.
double ran1(long* idum);

// L'Ecuyer's combination of two multiplicative generators (moduli
// 2147483563 and 2147483399, period about 2.3e18) behind a 32-entry
// shuffle. Deviates in (0, 0.999999999988].
double ran2(long* idum);
// The same generator with its own statics. mode 1 saves its state to
// "rand2_seed.txt", mode 2 loads it (the caller restores its own seed word);
// both return 0.0, or -1.0 as described above. A file whose table size is
// not 32 ends the process with status -1. Any other mode draws a deviate.
double ran2(long* idum, int mode);

// Exponential deviate of mean 1: -ln u for u from ran1.
double expdev(long* idum);

// Standard normal deviates by the polar method on ran2(idum), two per
// accepted point: the second is cached and returned by the next call.
double gasdev(long* idum);
// The same with its own cache and ran2(idum, mode) as the uniform source.
// mode 1 saves the cache to "gasdev_seed.txt" and then the uniform
// generator; mode 2 loads both. The cached deviate is read back as a float
// whose four bytes replace the first four bytes of the cached double, so a
// restored cache is not exact. Any other mode draws a deviate.
double gasdev(long* idum, int mode);

// Skew-normal deviate of shape delta (|delta| <= 1; beyond it the result is
// NaN): with u0, v independent standard normals from gasdev(idum),
// sign(u0) * (delta u0 + sqrt(1 - delta^2) v), in single precision.
float skewedNormal(float delta, long* idum);

// ln Gamma(x) for x > 0 by Lanczos' approximation (error below 2e-10).
double gammln(double x);
// P(a, x) by its series into *gamser (0 for x <= 0) and ln Gamma(a) into
// *gln. When 100 terms do not reach relative accuracy 3e-7, *gamser is left
// as it was.
void gser(double* gamser, double a, double x, double* gln);
// Q(a, x) = 1 - P(a, x) by its continued fraction into *gammcf, ln Gamma(a)
// into *gln. A fraction that has not converged after 100 steps prints a line
// of stars on standard output and keeps the value reached.
void gcf(double* gammcf, double a, double x, double* gln);
// Regularised lower incomplete gamma P(a, x): the series below x = a + 1,
// the continued fraction above. Invalid arguments (x < 0 or a <= 0) print a
// line and go on regardless; a series that does not converge gives NaN.
double gammp(double a, double x);
// Error function erf(x) = sign(x) P(1/2, x^2), good to about seven digits;
// +-1 at +-infinity, NaN for NaN.
// Pass a double: a float argument would select the C library's erff.
double erff(double x);
// Inverse error function on [-1, 1]: a rational first guess refined by two
// Newton steps. erfinv(+-1) is +-3.4028234663852886e+38, the largest float;
// |y| > 1 ends the process with status -1; NaN gives NaN.
double erfinv(double y);
