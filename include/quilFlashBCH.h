/*
 * quilFlashBCH: binary BCH error correction for NAND flash blocks.
 *
 * Data cross this interface as arrays of int, one bit (0 or 1) per element;
 * an element holding any other value is read as its lowest bit (value & 1).
 * A block is numCodewords codewords; codeword i is its dataLengths[i] data
 * bits followed by the stored parity (quilGetParityLength() bits: 15*t parity
 * bits padded with zeros to whole bytes). The code works in GF(2^15) on
 * x^15 + x + 1, so data length + 15*t must not exceed 32767 bits.
 *
 * Lifecycle: quilCreateFlashBCH, quilInitializeFlashBCH (again whenever the
 * layout changes), then any number of quilGetParityLength / quilEncodeBCH /
 * quilDecodeBCH, and finally quilReleaseFlashBCH. The library holds one codec
 * instance per process and is not thread-safe: calls must not overlap.
 *
 * Results: 0 for success, -1 when there is no usable codec instance.
 * quilDecodeBCH returns the number of codewords it could not correct.
 *
 * Safe behaviour outside the ordinary calling order (all return -1 and touch
 * nothing): any codec call before quilCreateFlashBCH or after
 * quilReleaseFlashBCH (including a second release), and quilGetParityLength,
 * quilEncodeBCH or quilDecodeBCH before the first successful
 * quilInitializeFlashBCH. quilInitializeFlashBCH returns -1 and keeps the
 * previous configuration when the layout cannot work: numCodewords < 1, a
 * null dataLengths, a data length < 1, t < 0 or t > 128, or a codeword longer
 * than the field allows (data length + 15*t > 32767), or a block of more
 * than 2^31 - 1 elements (data and stored parity together). A second
 * quilCreateFlashBCH without a release frees the earlier instance. No C++
 * exception crosses this interface; an allocation failure during creation or
 * initialisation returns -1. quilGenerateRandomBits and quilAddGaussianNoise
 * work before creation too (they reseed on every call). When creation fails
 * no instance is left: the codec calls then return -1.
 *
 * Buffers: the in and out arrays of quilEncodeBCH and quilDecodeBCH must not
 * overlap (the output is written while the input is still being read); only
 * quilSwapData may work in place.
 *
 * Null pointers: a null dataLengths makes quilInitializeFlashBCH return -1.
 * A null array is otherwise safe only where nothing is read or written:
 * in a call that returns -1 for want of an instance or a configuration, and
 * in quilGenerateRandomBits, quilAddGaussianNoise and quilSwapData with
 * n <= 0. quilFlashBCHVersion needs a buffer of 6 bytes.
 */
#ifndef QUIL_FLASH_BCH_H
#define QUIL_FLASH_BCH_H

#if defined(_WIN32)
#define QUIL_EXPORT __declspec(dllexport)
#else
#define QUIL_EXPORT __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* Creates the codec instance and the test-channel generator (seed 12345). */
QUIL_EXPORT int quilCreateFlashBCH(void);
/* Configures the block layout: numCodewords codewords of dataLengths[i] data
 * bits each (the array is copied), t correctable bit errors per codeword. */
QUIL_EXPORT int quilInitializeFlashBCH(int numCodewords, int* dataLengths, int t);
/* Destroys the codec instance. */
QUIL_EXPORT int quilReleaseFlashBCH(void);
/* Writes "1.0.1" and its terminating zero (6 bytes) into buf. */
QUIL_EXPORT void quilFlashBCHVersion(char* buf);
/* Stored parity bits per codeword (15*t rounded up to a multiple of 8). */
QUIL_EXPORT int quilGetParityLength(void);
/* in: sum(dataLengths) data bits; out: sum(dataLengths) +
 * numCodewords * quilGetParityLength() bits of encoded block. */
QUIL_EXPORT int quilEncodeBCH(int* in, int* out);
/* in: an encoded block as read back; out: the corrected data bits. Returns
 * the number of uncorrectable codewords (their data are passed through). */
QUIL_EXPORT int quilDecodeBCH(int* in, int* out);

/* n uniformly random bits, reproducible from seed. */
QUIL_EXPORT void quilGenerateRandomBits(int* out, int n, int seed);
/* Maps bit b to 1 - 2b and adds Gaussian noise of standard deviation
 * 2 * 10^(-snrDb/20), reproducible from seed. */
QUIL_EXPORT void quilAddGaussianNoise(int* bits, double* out, int n, double snrDb, int seed);
/* Reverses the bytes (8-element runs) inside every wordBits-element word
 * when doByteSwap, then reverses every groupBits-element group when
 * doBitSwap. in and out may be the same array. */
QUIL_EXPORT void quilSwapData(int* in, int n, int* out, int wordBits, int groupBits, int doByteSwap,
                              int doBitSwap);

#ifdef __cplusplus
}
#endif

#endif /* QUIL_FLASH_BCH_H */
