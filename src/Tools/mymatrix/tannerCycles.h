// Girth and short-cycle counts of the Tanner graph of a parity-check matrix.
//
// Counting rests on non-backtracking walks. A closed walk that never steps
// straight back along the edge it came by, including across its start
// (tailless), and that is shorter than twice the girth g, is a cycle: if it
// visited a vertex twice it would split into two closed non-backtracking
// walks, each containing a cycle, so its length would be at least 2g. So for
// L < 2g, the L-cycles through a root v are counted by pairing the
// non-backtracking walks of length L/2 from v that end at the same vertex
// with different first edges and different last edges; no path is ever
// enumerated (M. Karimi and A. H. Banihashemi, "Message-passing algorithms
// for counting short cycles in a graph", IEEE Trans. Commun. 61(2),
// pp. 485-495, 2013; the walk counts follow K. Hashimoto's non-backtracking
// operator). Each L-cycle has L/2 vertices of each side and two directions,
// so summing the pairs over one side's vertices gives L times the count.
//
// In a bipartite graph g, g+2 and g+4 are all below 2g except for g = 4,
// where 8 = 2g: the closed walks of length 8 that are not cycles are then
// two 4-cycles through a common vertex traversed one after the other. Their
// number is computed exactly from the 4-cycles at each vertex (a walk with
// |I| such junction points is seen |I| times, so each sighting weighs 1/|I|),
// in time linear in those 4-cycles up to a sort, and subtracted.
//
// Quasi-cyclic matrices: if shifting every z x z block cyclically maps the
// matrix onto itself (found by detectCirculantSize), vertices in one orbit
// see the same cycles, so only one root per block is walked from and counts
// are weighted by z.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "Tools/mymatrix/sparseBinaryMatrix.h"

namespace tools {

struct CycleCounts {
  size_t girth = 0;  // 0: the graph has no cycle
  // (length, number of cycles) for girth, girth + 2 and girth + 4.
  std::vector<std::pair<size_t, uint64_t>> counts;
  size_t circulantSize = 1;  // the block-cyclic symmetry that was used
};

// The largest z > 1 dividing both dimensions under whose block-cyclic shift
// the matrix is invariant, or 1.
size_t detectCirculantSize(const SparseBinaryMatrix& h);
size_t girth(const SparseBinaryMatrix& h);
// Throws std::overflow_error if a count exceeds 64 bits.
CycleCounts countShortCycles(const SparseBinaryMatrix& h);

}  // namespace tools
