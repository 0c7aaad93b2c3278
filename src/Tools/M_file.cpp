// Matlab script writer; see M_file.h for the file layout.
#include "Tools/M_file.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace {

// A Matlab character array in single quotes: quotes are doubled, and control
// characters, which cannot stand inside the quotes, are spliced in as
// ' char(code) '. Bytes of 128 and above (UTF-8) are copied as they are.
std::string escapeForMatlab(const std::string& text) {
  std::string quoted;
  for (char c : text) {
    quoted += c;
    if (c == '\'') quoted += '\'';
  }
  std::string escaped;
  for (char c : quoted) {
    const unsigned char code = static_cast<unsigned char>(c);
    if (code < 32)
      escaped += "' char(" + std::to_string(code) + ") '";
    else
      escaped += c;
  }
  return escaped;
}

// The script name Matlab resolves: the path without its folders.
std::string lastPathComponent(const std::string& path) {
  std::string last = path.substr(path.find_last_of('/') + 1);
  return last.substr(last.find_last_of('\\') + 1);
}

const char* const kContinuation = "xMx";

}  // namespace

M_file::M_file(std::string name_, int precision_, int max_elements_, std::ostream* err_)
    : name(std::move(name_)), precision(precision_), max_elements(max_elements_), err(err_) {
  if (name.size() > 1 && name.compare(name.size() - 2, 2, ".m") == 0) name.erase(name.size() - 2);
  if (name.empty()) {
    disabled = true;
    return;
  }
  out.open(name + ".m", std::ios::out | std::ios::trunc);
  if (!out && err) {
    *err << "Error in M-file constructor: unable to open file " << name << ".m" << std::endl;
    disabled = true;
  }
  out.precision(precision);
}

M_file::~M_file() {
  if (disabled) return;
  while (!subfiles.empty()) FinishCollecting(subfiles.begin()->first);
  out.close();
}

void M_file::Put(const std::string& var, const bool& v) {
  if (disabled) return;
  out << var << " = " << (v ? 1 : 0) << ";\n";
}

void M_file::Put(const std::string& var, const std::string& s) {
  if (disabled) return;
  out << var << " = ['" << escapeForMatlab(s) << "'];\n";
}

void M_file::Put(const std::string& var, const char* s) { Put(var, std::string(s ? s : "")); }

void M_file::Put(const std::string& var, const std::vector<std::string>& list) {
  if (disabled) return;
  const size_t n = std::min(list.size(), static_cast<size_t>(std::max(max_elements, 0)));
  out << var << " = {";
  for (size_t i = 0; i < n; ++i) out << "'" << escapeForMatlab(list[i]) << "'; ";
  out << "};\n";
  if (list.size() > n && err)
    *err << "Error in M-file::Put() for vector<string>: vector has too many elements, output is truncated."
         << std::endl;
}

void M_file::WriteLine(const std::string& line) {
  if (disabled) return;
  out << line << std::endl;
}

void M_file::StartCollecting(const std::string& var, int ncols) {
  if (disabled) return;
  if (subfiles.count(var)) {
    if (err) *err << "M_file::StartCollecting error:  Matlab variable " << var << " is already being collected.\n";
    return;
  }
  subfile& sf = subfiles[var];
  sf.ncols = std::max(ncols, 1);  // rows need at least one column to ever end
  sf.stream = std::make_unique<std::ofstream>();

  const std::string path = name + var;
  out << lastPathComponent(path) << std::endl;
  sf.stream->open(path + ".m", std::ios::out | std::ios::trunc);
  if (!*sf.stream && err) *err << "Error in M-file::StartCollecting: unable to open file " << path << ".m" << std::endl;
  sf.stream->precision(precision);
  *sf.stream << var << " = [\n";
}

template <class T>
void M_file::Append(const std::string& var, const T& v) {
  if (disabled) return;
  auto it = subfiles.find(var);
  if (it == subfiles.end()) {
    if (err) *err << "M_file::Append error:  Matlab variable " << var << " is not currently being collected.\n";
    return;
  }
  AppendScalar(var, it->second, v);
}

template <class T>
void M_file::Append(const std::string& var, T** data, int rows, int cols) {
  if (disabled) return;
  auto it = subfiles.find(var);
  if (it == subfiles.end()) {
    if (err)
      *err << "M_file::Append scalar_type** error:  Matlab variable " << var
           << " is not currently being collected.\n";
    return;
  }
  for (int r = 0; r < rows; ++r)
    for (int c = 0; c < cols; ++c) AppendScalar(var, it->second, data[r][c]);
}

template <class T>
void M_file::AppendScalar(const std::string& var, subfile& sf, const T& v) {
  // A script is split only where a row begins, and only when the whole row
  // would no longer fit under max_elements. Mid-row the test repeats the one
  // made at the row's start, so it can fail there only when a row is wider
  // than max_elements: the chain cannot be written, and that is fatal.
  if (sf.count + (sf.ncols - sf.ci) > max_elements) {
    if (sf.ci != 0) {
      if (err) *err << "Hmmm, I thought ci would be zero at this point, i.e. beginning of a row.\n" << std::flush;
      std::exit(1);
    }
    BreakSubfile(var, sf);
  }
  WriteValue(*sf.stream, v);
  sf.count += 1;
  sf.ci += 1;
  if (sf.ci == sf.ncols) {
    *sf.stream << "\n";
    sf.ci = 0;
  } else {
    *sf.stream << " ";
  }
}

void M_file::BreakSubfile(const std::string& var, subfile& sf) {
  std::ostream& cur = *sf.stream;
  cur << "];\n";
  const std::string current = sf.part == 0 ? var : var + kContinuation + std::to_string(sf.part);
  sf.part += 1;
  const std::string next = var + kContinuation + std::to_string(sf.part);
  cur << lastPathComponent(name + next) << "\n";
  cur << current << " = [" << current << "; " << next << "];\n";
  cur << "clear " << next << ";\n";

  sf.stream = std::make_unique<std::ofstream>(name + next + ".m", std::ios::out | std::ios::trunc);
  *sf.stream << next << " = [\n";
  sf.count = 0;
  sf.stream->precision(precision);
}

void M_file::WriteValue(std::ostream& os, bool v) { os << (v ? 1 : 0); }
void M_file::WriteValue(std::ostream& os, int v) { os << v; }
void M_file::WriteValue(std::ostream& os, unsigned char v) { os << static_cast<int>(v); }
void M_file::WriteValue(std::ostream& os, double v) {
  if (std::isnan(v))
    os << "NaN";
  else
    os << v;
}

void M_file::FinishCollecting(const std::string& var) {
  if (disabled) return;
  auto it = subfiles.find(var);
  if (it == subfiles.end()) {
    if (err) *err << "M_file::FinishCollecting error:  Matlab variable " << var << " is not currently being collected.\n";
    return;
  }
  while (it->second.ci >= 1) Append<double>(var, 0.0);
  *it->second.stream << "];\n";
  it->second.stream->close();
  subfiles.erase(it);
}

bool M_file::IsCollecting(const std::string& var) const { return !disabled && subfiles.count(var) != 0; }

template void M_file::Append<bool>(const std::string&, const bool&);
template void M_file::Append<int>(const std::string&, const int&);
template void M_file::Append<double>(const std::string&, const double&);
template void M_file::Append<unsigned char>(const std::string&, const unsigned char&);
template void M_file::Append<bool>(const std::string&, bool**, int, int);
template void M_file::Append<int>(const std::string&, int**, int, int);
template void M_file::Append<double>(const std::string&, double**, int, int);
template void M_file::Append<unsigned char>(const std::string&, unsigned char**, int, int);
