// Fuzz target: GF2m's table-file reader on arbitrary file contents.
//
// Input: byte 0 picks the degree m = 4 + byte0 % 12 (GF(2^4) .. GF(2^15));
// the remaining bytes are written verbatim as the table file, and GF2m is
// built from it with that degree's primitive polynomial.
//
// Properties, beyond "no crash, no sanitizer report, no hang":
//  - the exponent-to-integer table is exactly what an independent reading
//    of the same bytes gives under the reader's rules: decimal integers in
//    order; an entry outside 0 .. 2^m-1 becomes 0; the first entry that
//    cannot be read, and every one after it, becomes 0;
//  - the integer-to-exponent table is its inverse in the reader's sense:
//    int2Exp(0) is the zero element, a value that occurs maps to its last
//    occurrence, and one that never occurs maps to 0;
//  - add() stays inside the field for every element.
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "fuzz/fuzz_check.h"
#include "gf/gf2m.h"
#include "support/primitive_polynomials.h"

namespace {

// The table "file" is an in-memory file reached through /proc, so that the
// search is not throttled by a disk: the reader opens it by name like any
// other file.
int g_tableFd = -1;
std::string g_tablePath;

FUZZ_NOT_INSTRUMENTED std::vector<int> expectedPowers(const std::string& text, int q) {
  std::vector<int> powers(static_cast<size_t>(q), 0);
  std::istringstream in(text);
  for (int i = 0; i < q - 1; ++i) {
    long long v = 0;
    if (!(in >> v)) break;
    powers[static_cast<size_t>(i)] = (v >= 0 && v < q) ? static_cast<int>(v) : 0;
  }
  return powers;
}

FUZZ_NOT_INSTRUMENTED void checkTables(const GF2m& field, const std::vector<int>& powers) {
  const int q = field.getN();
  for (int e = 0; e < q; ++e)
    FUZZ_CHECK(field.exp2Int(e) == powers[static_cast<size_t>(e)], "exp2Int(%d) = %d, expected %d", e,
               field.exp2Int(e), powers[static_cast<size_t>(e)]);

  std::vector<int> lastOccurrence(static_cast<size_t>(q), 0);
  for (int e = 0; e < q - 1; ++e) lastOccurrence[static_cast<size_t>(powers[e])] = e;
  lastOccurrence[0] = q - 1;
  for (int v = 0; v < q; ++v)
    FUZZ_CHECK(field.int2Exp(v) == lastOccurrence[static_cast<size_t>(v)], "int2Exp(%d) = %d, expected %d",
               v, field.int2Exp(v), lastOccurrence[static_cast<size_t>(v)]);
}

FUZZ_NOT_INSTRUMENTED void checkAddition(GF2m& field, int b) {
  const int q = field.getN();
  for (int a = 0; a < q; ++a) {
    const int sum = field.add(a, b);
    FUZZ_CHECK(sum >= 0 && sum < q, "add(%d, %d) = %d", a, b, sum);
  }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  g_tableFd = ::memfd_create("gf2m_table", 0);
  if (g_tableFd < 0) {
    std::perror("memfd_create");
    std::abort();
  }
  g_tablePath = "/proc/self/fd/" + std::to_string(g_tableFd);
  // A malformed table makes the field's self-check print one line per bad
  // element; thousands of lines per input would only slow the search.
  std::cout.setstate(std::ios::badbit);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 1) return 0;
  const int m = qfbtest::kMinFieldDegree + data[0] % (qfbtest::kMaxFieldDegree - qfbtest::kMinFieldDegree + 1);
  const std::string text(reinterpret_cast<const char*>(data + 1), size - 1);
  if (::ftruncate(g_tableFd, 0) != 0 ||
      ::pwrite(g_tableFd, text.data(), text.size(), 0) != static_cast<ssize_t>(text.size()))
    std::abort();

  const std::vector<int> p = qfbtest::primitivePolynomial(m);
  GF2m field(m, p.data(), m, g_tablePath.c_str());
  const int q = field.getN();
  FUZZ_CHECK(q == (1 << m), "m = %d, q = %d", m, q);

  checkTables(field, expectedPowers(text, q));
  checkAddition(field, size > 1 ? data[1] % q : 0);
  return 0;
}
