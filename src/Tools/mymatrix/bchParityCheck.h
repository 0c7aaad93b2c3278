// The binary parity-check matrix of a BCH code, built from its field.
//
// A word c (degree order: c(x) = sum c_i x^i) belongs to the code with roots
// alpha^b .. alpha^(b+2t-1) iff c(alpha^e) = 0 for each root exponent e.
// Writing alpha^(e i) in the field's polynomial basis (m bits) turns each
// root into m binary rows of H; a root's conjugates alpha^(2e), alpha^(4e)
// .. give the same row space (squaring is GF(2)-linear), so one exponent per
// cyclotomic coset is enough. The rows are then reduced to a basis, which
// leaves exactly n - k = deg g(x) rows, in the systematic form [A | I]: the
// parity positions of a cyclic code are independent, so the identity sits on
// the last n - k columns.
//
// Columns follow the codec's interface order: column j is degree n-1-j, so a
// codeword laid out as message then parity satisfies H c^T = 0.
#pragma once

#include <cstddef>

#include "Tools/mymatrix/binaryMatrix.h"

class GF;

namespace tools {

// n <= 2^m - 1, 1 <= t, b in {0, 1}; std::invalid_argument otherwise.
BinaryMatrix bchParityCheck(const GF& gf, size_t n, int t, int b = 1);

}  // namespace tools
