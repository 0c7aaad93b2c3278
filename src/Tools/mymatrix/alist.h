// The alist text format for sparse parity-check matrices (as used by D. J. C.
// MacKay's code collection and most LDPC software):
//
//   N M                        columns (variable nodes), rows (check nodes)
//   maxColWeight maxRowWeight
//   N column weights
//   M row weights
//   N lines: the 1-based row indices of each column's ones
//   M lines: the 1-based column indices of each row's ones
//
// Index lists may be padded with zeros to the maximum weight; the reader
// accepts padded and unpadded files, the writer pads. Only whitespace
// separates numbers, so line breaks are not significant to the reader.
//
// The reader trusts nothing: a truncated file, a weight above the stated
// maximum, weights that do not sum alike, an index of 0 or beyond the
// matrix, an index listed twice, row lists that disagree with the column
// lists, a number too large or not a number, or data after the end are
// AlistError naming the line. Memory use is bounded by the size of the
// input, whatever sizes the header claims.
#pragma once

#include <istream>
#include <ostream>
#include <stdexcept>
#include <string>

#include "Tools/mymatrix/sparseBinaryMatrix.h"

namespace tools {

class AlistError : public std::runtime_error {
 public:
  explicit AlistError(const std::string& what) : std::runtime_error(what) {}
};

SparseBinaryMatrix readAlist(std::istream& in);
void writeAlist(std::ostream& out, const SparseBinaryMatrix& h);

}  // namespace tools
