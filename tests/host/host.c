/* A plain C host, as flash tools are: loads libquilflashbch with dlopen,
 * resolves the ten exported names and runs create -> initialise -> encode ->
 * corrupt -> decode -> release once with fixed checks. Given a count, it
 * then runs that many lifecycles as a long-running tool sees them, with
 * re-initialisation to random layouts in between, a second create without a
 * release, refused layouts and calls after release; run under a memory
 * checker, the process must end with nothing leaked and no invalid access.
 *
 *   c_host_test LIBRARY [CYCLES] */
#include <dlfcn.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#define CHECK(cond)                                                              \
  do {                                                                           \
    if (!(cond)) {                                                               \
      fprintf(stderr, "%s:%d: check failed: %s\n", __FILE__, __LINE__, #cond);   \
      exit(1);                                                                   \
    }                                                                            \
  } while (0)

static struct {
  int (*create)(void);
  int (*initialize)(int, int*, int);
  int (*release)(void);
  void (*version)(char*);
  int (*parityLength)(void);
  int (*encode)(int*, int*);
  int (*decode)(int*, int*);
  void (*randomBits)(int*, int, int);
  void (*gaussianNoise)(int*, double*, int, double, int);
  void (*swapData)(int*, int, int*, int, int, int, int);
} quil;

static const char* const kNames[] = {"quilCreateFlashBCH", "quilInitializeFlashBCH", "quilReleaseFlashBCH",
                                     "quilFlashBCHVersion", "quilGetParityLength", "quilEncodeBCH", "quilDecodeBCH",
                                     "quilGenerateRandomBits", "quilAddGaussianNoise", "quilSwapData"};

static int* bits(int n) {
  int* p = malloc(sizeof(int) * (size_t)n);
  CHECK(p);
  return p;
}

static unsigned next_random(unsigned* state) {
  *state ^= *state << 13;
  *state ^= *state >> 17;
  *state ^= *state << 5;
  return *state;
}

/* Four codewords of 4096 bits, t = 8: t errors per codeword decode, 3t in
 * one are reported as one failure, and a clean Gaussian channel decodes. */
static void single_lifecycle(void) {
  char version[6];
  quil.version(version);
  CHECK(strcmp(version, "1.0.1") == 0);
  CHECK(quil.create() == 0);
  int lengths[4] = {4096, 4096, 4096, 4096};
  const int t = 8, data_bits = 4 * 4096;
  CHECK(quil.initialize(4, lengths, t) == 0);
  const int parity = quil.parityLength();
  CHECK(parity == 120);
  const int block_bits = data_bits + 4 * parity;
  int *data = bits(data_bits), *block = bits(block_bits), *back = bits(data_bits);
  double* samples = malloc(sizeof(double) * (size_t)block_bits);
  CHECK(samples);

  quil.randomBits(data, data_bits, 2024);
  CHECK(quil.encode(data, block) == 0);
  for (int cw = 0; cw < 4; ++cw)
    for (int e = 0; e < t; ++e) block[cw * (4096 + parity) + e * 509] ^= 1;
  CHECK(quil.decode(block, back) == 0);
  CHECK(memcmp(back, data, sizeof(int) * (size_t)data_bits) == 0);
  for (int e = 0; e < 3 * t; ++e) block[2 * (4096 + parity) + 7 + e * 97] ^= 1;
  CHECK(quil.decode(block, back) == 1);

  CHECK(quil.encode(data, block) == 0);
  quil.gaussianNoise(block, samples, block_bits, 40.0, 1);
  for (int i = 0; i < block_bits; ++i) block[i] = samples[i] < 0.0;
  CHECK(quil.decode(block, back) == 0);
  CHECK(memcmp(back, data, sizeof(int) * (size_t)data_bits) == 0);

  quil.swapData(data, 32, back, 32, 8, 1, 1);
  CHECK(quil.release() == 0);
  CHECK(quil.release() == -1);
  free(data);
  free(block);
  free(back);
  free(samples);
}

/* One layout: encode random data, flip up to t bits per codeword, decode. */
static void exercise_layout(int count, int* lengths, int t, unsigned* rng) {
  CHECK(quil.initialize(count, lengths, t) == 0);
  const int parity = quil.parityLength();
  int data_bits = 0;
  for (int i = 0; i < count; ++i) data_bits += lengths[i];
  int *data = bits(data_bits), *block = bits(data_bits + count * parity), *back = bits(data_bits);
  quil.randomBits(data, data_bits, (int)next_random(rng));
  CHECK(quil.encode(data, block) == 0);
  for (int i = 0, at = 0; i < count; at += lengths[i] + parity, ++i) {
    const int span = lengths[i] + 15 * t;
    const int errors = t > 0 ? (int)(next_random(rng) % (unsigned)(t + 1)) : 0;
    /* 7919 is a prime above every span here, so e * 7919 mod span are distinct positions */
    for (int e = 0; e < errors && e < span; ++e) block[at + (int)((unsigned)e * 7919u % (unsigned)span)] ^= 1;
  }
  CHECK(quil.decode(block, back) == 0);
  CHECK(memcmp(back, data, sizeof(int) * (size_t)data_bits) == 0);
  free(data);
  free(block);
  free(back);
}

static void lifecycles(int cycles) {
  unsigned rng = 2024;
  for (int cycle = 0; cycle < cycles; ++cycle) {
    CHECK(quil.create() == 0);
    if (cycle % 5 == 0) CHECK(quil.create() == 0); /* replaces the instance */
    for (int layout = 0; layout < 3; ++layout) {
      int lengths[4];
      const int count = 1 + (int)(next_random(&rng) % 4);
      const int t = (int)(next_random(&rng) % 41);
      for (int i = 0; i < count; ++i) lengths[i] = 8 * (1 + (int)(next_random(&rng) % 512));
      exercise_layout(count, lengths, t, &rng);
      int bad = 0;
      CHECK(quil.initialize(1, &bad, t) == -1); /* refused, layout kept */
    }
    CHECK(quil.release() == 0);
    CHECK(quil.release() == -1);
    CHECK(quil.parityLength() == -1);
  }
}

int main(int argc, char** argv) {
  if (argc < 2) return 2;
  void* lib = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
  if (!lib) {
    fprintf(stderr, "%s\n", dlerror());
    return 1;
  }
  /* dlsym returns an object pointer; ISO C converts it to a function
   * pointer only through its bytes, one member of `quil` per name in order. */
  _Static_assert(sizeof quil == sizeof kNames / sizeof kNames[0] * sizeof quil.create, "one member per name");
  for (size_t i = 0; i < sizeof kNames / sizeof kNames[0]; ++i) {
    void* f = dlsym(lib, kNames[i]);
    if (!f) {
      fprintf(stderr, "missing symbol %s\n", kNames[i]);
      return 1;
    }
    memcpy((char*)&quil + i * sizeof quil.create, &f, sizeof f);
  }
  single_lifecycle();
  const int cycles = argc > 2 ? atoi(argv[2]) : 0;
  lifecycles(cycles);
  dlclose(lib);
  printf("c host: create, initialise, encode, corrupt, decode, release, then %d lifecycles: ok\n", cycles);
  return 0;
}
