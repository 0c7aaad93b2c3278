// ResultTable: rows of named columns, written as an aligned text table, as
// CSV (RFC 4180 quoting) or as JSON (an array of objects).
//
// Reals are shown with 4 significant digits in the text table and with as
// many digits as it takes to read back the same double in CSV and JSON.
// A real that does not fit a double (a failure rate below 1e-308) may be
// given as its base-10 logarithm: it prints as "3.2e-412" and goes to JSON
// as that string.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace flashbch {
// Objects keep their keys in the order written.
using Json = nlohmann::ordered_json;
}  // namespace flashbch

namespace flashbch {

class Cell {
 public:
  enum class Kind { Integer, Real, Log10, Text, Missing };

  static Cell integer(std::int64_t v);
  static Cell real(double v);
  // A positive quantity known through its base-10 logarithm.
  static Cell fromLog10(double log10Value);
  static Cell text(std::string v);
  static Cell missing();

  Kind kind() const { return kind_; }
  std::string display() const;  // text table
  std::string exact() const;    // CSV
  Json toJson() const;

 private:
  Kind kind_ = Kind::Missing;
  std::int64_t integer_ = 0;
  double real_ = 0.0;
  std::string text_;
};

class ResultTable {
 public:
  explicit ResultTable(std::vector<std::string> columns) : columns_(std::move(columns)) {}

  // The row must have one cell per column.
  void addRow(std::vector<Cell> row);
  const std::vector<std::string>& columns() const { return columns_; }
  const std::vector<std::vector<Cell>>& rows() const { return rows_; }

  // Integer, real and log columns are right-aligned, text left-aligned.
  // Each column is at least minWidth wide.
  void writeText(std::ostream& out, size_t minWidth = 0) const;
  // The same, one line at a time, for rows printed as they come: column
  // widths are then the larger of the heading and minWidth.
  void writeTextHeader(std::ostream& out, size_t minWidth) const;
  void writeTextRow(std::ostream& out, const std::vector<Cell>& row, size_t minWidth) const;
  void writeCsv(std::ostream& out) const;
  Json toJson() const;

 private:
  std::vector<std::string> columns_;
  std::vector<std::vector<Cell>> rows_;
};

}  // namespace flashbch
