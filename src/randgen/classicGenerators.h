// Classic free generators of uniform, Gaussian, exponential and skew-normal
// deviates, with the incomplete gamma function and the error function.
//
// Seed words: every generator takes a `long* idum` owned by the caller and
// updated by each call. Whatever the width of long, the word is a 32-bit
// signed integer: its low 32 bits are read as two's complement and the
// result is written back sign-extended, so sequences are the same where long
// has 32 bits and where it has 64. A word <= 0 restarts the generator's
// shuffle table from it.
//
// Each generator keeps its table in function-local statics: each function
// is one process-wide generator, not safe to call from two threads.
#pragma once

// Minimal-standard multiplicative generator (16807 mod 2^31 - 1) behind a
// 32-entry Bays-Durham shuffle. Deviates in (0, 0.99999988].
double ran1(long* idum);
