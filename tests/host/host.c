/* Loads libquilflashbch with dlopen, resolves the ten exported names and
 * runs create -> initialise -> encode -> corrupt -> decode -> release. */
#include <dlfcn.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "quilFlashBCH.h"

#define RESOLVE(type, name)                                   \
  type name = (type)dlsym(lib, #name);                        \
  if (!name) {                                                \
    fprintf(stderr, "missing symbol %s\n", #name);            \
    return 1;                                                 \
  }

#define CHECK(cond)                                                 \
  if (!(cond)) {                                                    \
    fprintf(stderr, "%s:%d: check failed: %s\n", __FILE__, __LINE__, #cond); \
    return 1;                                                       \
  }

typedef int (*create_fn)(void);
typedef int (*init_fn)(int, int*, int);
typedef int (*release_fn)(void);
typedef void (*version_fn)(char*);
typedef int (*parity_fn)(void);
typedef int (*code_fn)(int*, int*);
typedef void (*bits_fn)(int*, int, int);
typedef void (*noise_fn)(int*, double*, int, double, int);
typedef void (*swap_fn)(int*, int, int*, int, int, int, int);

int main(int argc, char** argv) {
  if (argc < 2) return 2;
  void* lib = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
  if (!lib) {
    fprintf(stderr, "%s\n", dlerror());
    return 1;
  }
  RESOLVE(create_fn, quilCreateFlashBCH);
  RESOLVE(init_fn, quilInitializeFlashBCH);
  RESOLVE(release_fn, quilReleaseFlashBCH);
  RESOLVE(version_fn, quilFlashBCHVersion);
  RESOLVE(parity_fn, quilGetParityLength);
  RESOLVE(code_fn, quilEncodeBCH);
  RESOLVE(code_fn, quilDecodeBCH);
  RESOLVE(bits_fn, quilGenerateRandomBits);
  RESOLVE(noise_fn, quilAddGaussianNoise);
  RESOLVE(swap_fn, quilSwapData);

  char version[6];
  quilFlashBCHVersion(version);
  CHECK(strcmp(version, "1.0.1") == 0);
  CHECK(quilCreateFlashBCH() == 0);

  int lengths[4] = {4096, 4096, 4096, 4096};
  const int t = 8, data_bits = 4 * 4096;
  CHECK(quilInitializeFlashBCH(4, lengths, t) == 0);
  const int parity = quilGetParityLength();
  CHECK(parity == 120);
  const int block_bits = data_bits + 4 * parity;
  int* data = malloc(sizeof(int) * data_bits);
  int* block = malloc(sizeof(int) * block_bits);
  int* back = malloc(sizeof(int) * data_bits);
  double* samples = malloc(sizeof(double) * block_bits);
  CHECK(data && block && back && samples);

  quilGenerateRandomBits(data, data_bits, 2024);
  CHECK(quilEncodeBCH(data, block) == 0);
  /* t errors per codeword, spread over data and parity. */
  for (int cw = 0; cw < 4; ++cw)
    for (int e = 0; e < t; ++e) block[cw * (4096 + parity) + e * 509] ^= 1;
  CHECK(quilDecodeBCH(block, back) == 0);
  CHECK(memcmp(back, data, sizeof(int) * data_bits) == 0);

  /* One codeword beyond repair: exactly one failure reported. */
  for (int e = 0; e < 3 * t; ++e) block[2 * (4096 + parity) + 7 + e * 97] ^= 1;
  CHECK(quilDecodeBCH(block, back) == 1);

  /* A clean channel at high SNR decodes to the data. */
  CHECK(quilEncodeBCH(data, block) == 0);
  quilAddGaussianNoise(block, samples, block_bits, 40.0, 1);
  for (int i = 0; i < block_bits; ++i) block[i] = samples[i] < 0.0;
  CHECK(quilDecodeBCH(block, back) == 0);
  CHECK(memcmp(back, data, sizeof(int) * data_bits) == 0);

  quilSwapData(data, 32, back, 32, 8, 1, 1);
  CHECK(quilReleaseFlashBCH() == 0);
  CHECK(quilReleaseFlashBCH() == -1);
  free(data);
  free(block);
  free(back);
  free(samples);
  dlclose(lib);
  printf("c host: create, initialise, encode, corrupt, decode, release: ok\n");
  return 0;
}
