#include "resultTable.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ostream>
#include <stdexcept>

#include "sweep.h"

namespace flashbch {

Cell Cell::integer(std::int64_t v) {
  Cell c;
  c.kind_ = Kind::Integer;
  c.integer_ = v;
  return c;
}

Cell Cell::real(double v) {
  Cell c;
  c.kind_ = std::isfinite(v) ? Kind::Real : Kind::Missing;
  c.real_ = v;
  return c;
}

Cell Cell::fromLog10(double log10Value) {
  if (log10Value == -INFINITY) return real(0.0);
  if (log10Value >= -300.0 || !std::isfinite(log10Value)) return real(std::pow(10.0, log10Value));
  Cell c;
  c.kind_ = Kind::Log10;
  c.real_ = log10Value;
  return c;
}

Cell Cell::text(std::string v) {
  Cell c;
  c.kind_ = Kind::Text;
  c.text_ = std::move(v);
  return c;
}

Cell Cell::missing() { return Cell(); }

namespace {

// mantissa and exponent of 10^log10Value, printed as "3.2e-412".
std::string formatLog10(double log10Value, int digits) {
  double exponent = std::floor(log10Value);
  double mantissa = std::pow(10.0, log10Value - exponent);
  char buffer[64];
  std::snprintf(buffer, sizeof buffer, "%.*f", digits - 1, mantissa);
  if (std::strtod(buffer, nullptr) >= 10.0) {
    exponent += 1.0;
    mantissa /= 10.0;
    std::snprintf(buffer, sizeof buffer, "%.*f", digits - 1, mantissa);
  }
  return std::string(buffer) + "e" + std::to_string(static_cast<long long>(exponent));
}

}  // namespace

std::string Cell::display() const {
  char buffer[64];
  switch (kind_) {
    case Kind::Integer:
      return std::to_string(integer_);
    case Kind::Real:
      std::snprintf(buffer, sizeof buffer, "%.4g", real_);
      return buffer;
    case Kind::Log10:
      return formatLog10(real_, 2);
    case Kind::Text:
      return text_;
    case Kind::Missing:
      break;
  }
  return "-";
}

std::string Cell::exact() const {
  switch (kind_) {
    case Kind::Integer:
      return std::to_string(integer_);
    case Kind::Real:
      return formatNumber(real_);
    case Kind::Log10:
      return formatLog10(real_, 6);
    case Kind::Text:
      return text_;
    case Kind::Missing:
      break;
  }
  return "";
}

Json Cell::toJson() const {
  switch (kind_) {
    case Kind::Integer:
      return integer_;
    case Kind::Real:
      return real_;
    case Kind::Log10:
      return formatLog10(real_, 6);
    case Kind::Text:
      return text_;
    case Kind::Missing:
      break;
  }
  return nullptr;
}

void ResultTable::addRow(std::vector<Cell> row) {
  if (row.size() != columns_.size()) throw std::logic_error("ResultTable: row width differs from the columns");
  rows_.push_back(std::move(row));
}

namespace {

std::string textLine(const std::vector<std::string>& cells, const std::vector<size_t>& width,
                     const std::vector<bool>& right) {
  std::string line;
  for (size_t c = 0; c < cells.size(); ++c) {
    const std::string fill(width[c] > cells[c].size() ? width[c] - cells[c].size() : 0, ' ');
    line += (c ? "  " : "") + (right[c] ? fill + cells[c] : cells[c] + fill);
  }
  while (!line.empty() && line.back() == ' ') line.pop_back();
  return line + '\n';
}

std::vector<std::string> displayed(const std::vector<Cell>& row) {
  std::vector<std::string> cells;
  for (const Cell& cell : row) cells.push_back(cell.display());
  return cells;
}

std::vector<bool> rightAligned(const std::vector<Cell>* sample, size_t columns) {
  std::vector<bool> right(columns, true);
  if (sample)
    for (size_t c = 0; c < columns; ++c) right[c] = (*sample)[c].kind() != Cell::Kind::Text;
  return right;
}

}  // namespace

void ResultTable::writeText(std::ostream& out, size_t minWidth) const {
  std::vector<size_t> width(columns_.size());
  for (size_t c = 0; c < columns_.size(); ++c) {
    width[c] = std::max(minWidth, columns_[c].size());
    for (const auto& row : rows_) width[c] = std::max(width[c], row[c].display().size());
  }
  const auto right = rightAligned(rows_.empty() ? nullptr : &rows_.front(), columns_.size());
  out << textLine(columns_, width, right);
  for (const auto& row : rows_) out << textLine(displayed(row), width, right);
}

void ResultTable::writeTextHeader(std::ostream& out, size_t minWidth) const {
  std::vector<size_t> width(columns_.size());
  for (size_t c = 0; c < columns_.size(); ++c) width[c] = std::max(minWidth, columns_[c].size());
  out << textLine(columns_, width, std::vector<bool>(columns_.size(), true));
}

void ResultTable::writeTextRow(std::ostream& out, const std::vector<Cell>& row, size_t minWidth) const {
  std::vector<size_t> width(columns_.size());
  for (size_t c = 0; c < columns_.size(); ++c) width[c] = std::max(minWidth, columns_[c].size());
  out << textLine(displayed(row), width, rightAligned(&row, columns_.size()));
}

namespace {

std::string csvField(const std::string& s) {
  if (s.find_first_of(",\"\n\r") == std::string::npos) return s;
  std::string quoted = "\"";
  for (char ch : s) quoted += ch == '"' ? std::string("\"\"") : std::string(1, ch);
  return quoted + "\"";
}

}  // namespace

void ResultTable::writeCsv(std::ostream& out) const {
  for (size_t c = 0; c < columns_.size(); ++c) out << (c ? "," : "") << csvField(columns_[c]);
  out << '\n';
  for (const auto& row : rows_) {
    for (size_t c = 0; c < row.size(); ++c) out << (c ? "," : "") << csvField(row[c].exact());
    out << '\n';
  }
}

Json ResultTable::toJson() const {
  Json array = Json::array();
  for (const auto& row : rows_) {
    Json object = Json::object();
    for (size_t c = 0; c < row.size(); ++c) object[columns_[c]] = row[c].toJson();
    array.push_back(std::move(object));
  }
  return array;
}

}  // namespace flashbch
