// Fuzz target: the alist reader on arbitrary text. Beyond "no crash, no
// sanitizer report, no unbounded allocation", an accepted matrix must
// write back to a file that reads as the same matrix, its row and column
// lists must hold the same ones, and for small matrices the rank may not
// exceed either dimension and the girth must be even (a Tanner graph is
// bipartite) or zero.
#include <algorithm>
#include <cstdint>
#include <sstream>
#include <string>

#include "Tools/mymatrix/alist.h"
#include "Tools/mymatrix/tannerCycles.h"
#include "fuzz/fuzz_check.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::istringstream in(std::string(reinterpret_cast<const char*>(data), size));
  tools::SparseBinaryMatrix h;
  try {
    h = tools::readAlist(in);
  } catch (const tools::AlistError&) {
    return 0;
  }
  size_t byRows = 0, byCols = 0;
  for (size_t i = 0; i < h.rows(); ++i) byRows += h.row(i).size();
  for (size_t j = 0; j < h.cols(); ++j) byCols += h.col(j).size();
  FUZZ_CHECK(byRows == h.ones() && byCols == h.ones(), "%zu ones, rows hold %zu, columns %zu", h.ones(), byRows,
             byCols);
  std::stringstream again;
  tools::writeAlist(again, h);
  FUZZ_CHECK(tools::readAlist(again) == h, "a written matrix reads back differently");
  if (h.rows() * h.cols() <= 4096 && h.ones() <= 256) {
    const size_t rank = h.toDense().rank();
    FUZZ_CHECK(rank <= std::min(h.rows(), h.cols()), "rank %zu of a %zu x %zu matrix", rank, h.rows(), h.cols());
    const size_t g = tools::girth(h);
    FUZZ_CHECK(g == 0 || (g >= 4 && g % 2 == 0), "girth %zu", g);
  }
  return 0;
}
