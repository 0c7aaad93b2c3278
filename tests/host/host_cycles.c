/* Many library lifecycles in one process, as a long-running flash tool sees
 * them: create -> initialise -> encode -> corrupt -> decode -> release, with
 * re-initialisation to other layouts in between, a second create without a
 * release, and calls after release. Run under a memory checker, the process
 * must end with nothing leaked and no invalid access. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "quilFlashBCH.h"

#define CHECK(cond)                                                              \
  do {                                                                           \
    if (!(cond)) {                                                               \
      fprintf(stderr, "%s:%d: check failed: %s\n", __FILE__, __LINE__, #cond);   \
      exit(1);                                                                   \
    }                                                                            \
  } while (0)

static unsigned next_random(unsigned* state) {
  *state ^= *state << 13;
  *state ^= *state >> 17;
  *state ^= *state << 5;
  return *state;
}

/* One layout: encode random data, flip up to t bits per codeword, decode. */
static void exercise_layout(int count, const int* lengths, int t, unsigned* rng) {
  CHECK(quilInitializeFlashBCH(count, (int*)lengths, t) == 0);
  const int parity = quilGetParityLength();
  int data_bits = 0;
  for (int i = 0; i < count; ++i) data_bits += lengths[i];
  const int block_bits = data_bits + count * parity;
  int* data = malloc(sizeof(int) * (size_t)data_bits);
  int* block = malloc(sizeof(int) * (size_t)block_bits);
  int* back = malloc(sizeof(int) * (size_t)data_bits);
  CHECK(data && block && back);
  quilGenerateRandomBits(data, data_bits, (int)next_random(rng));
  CHECK(quilEncodeBCH(data, block) == 0);
  for (int i = 0, at = 0; i < count; at += lengths[i] + parity, ++i) {
    const int span = lengths[i] + 15 * t;
    const int errors = t > 0 ? (int)(next_random(rng) % (unsigned)(t + 1)) : 0;
    /* 7919 is a prime above every span here, so e * 7919 mod span are distinct positions */
    for (int e = 0; e < errors && e < span; ++e) block[at + (int)((unsigned)e * 7919u % (unsigned)span)] ^= 1;
  }
  CHECK(quilDecodeBCH(block, back) == 0);
  CHECK(memcmp(back, data, sizeof(int) * (size_t)data_bits) == 0);
  free(data);
  free(block);
  free(back);
}

int main(int argc, char** argv) {
  const int cycles = argc > 1 ? atoi(argv[1]) : 40;
  unsigned rng = 2024;
  for (int cycle = 0; cycle < cycles; ++cycle) {
    CHECK(quilCreateFlashBCH() == 0);
    if (cycle % 5 == 0) CHECK(quilCreateFlashBCH() == 0); /* replaces the instance */
    for (int layout = 0; layout < 3; ++layout) {
      int lengths[4];
      const int count = 1 + (int)(next_random(&rng) % 4);
      const int t = (int)(next_random(&rng) % 41);
      for (int i = 0; i < count; ++i) lengths[i] = 8 * (1 + (int)(next_random(&rng) % 512));
      exercise_layout(count, lengths, t, &rng);
      int bad = 0;
      CHECK(quilInitializeFlashBCH(1, &bad, t) == -1); /* refused, layout kept */
    }
    CHECK(quilReleaseFlashBCH() == 0);
    CHECK(quilReleaseFlashBCH() == -1);
    CHECK(quilGetParityLength() == -1);
  }
  printf("c host: %d lifecycles of create, initialise x3, encode, corrupt, decode, release: ok\n", cycles);
  return 0;
}
