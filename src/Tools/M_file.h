// Writes simulation results as Matlab scripts that recreate the variables
// when run.
//
// Scalars, strings and string lists go straight into the main script
// name + ".m". A large numeric array is "collected": its values are appended
// one by one, ncols per row, into a script of its own, name + var + ".m",
// which the main script calls by name. When a collected script would exceed
// max_elements values it is closed at a row boundary and continued in
// var + "xMx" + part; each script calls its continuation, stacks the
// continuation's rows below its own and clears the helper variable, so running
// the first script defines the whole variable.
#pragma once

#include <fstream>
#include <map>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

class M_file {
 public:
  // An empty name (or just ".m") gives a disabled writer that writes nothing.
  // Messages go to err when it is not null.
  M_file(std::string name, int precision, int max_elements, std::ostream* err);
  // Finishes every variable still being collected.
  ~M_file();
  M_file(const M_file&) = delete;
  M_file& operator=(const M_file&) = delete;

  void Put(const std::string& var, const bool& v);
  void Put(const std::string& var, const std::string& s);
  void Put(const std::string& var, const char* s);
  // At most max_elements entries are written.
  void Put(const std::string& var, const std::vector<std::string>& list);
  void WriteLine(const std::string& line);

  // ncols below 1 is taken as 1.
  void StartCollecting(const std::string& var, int ncols);
  // T is bool, int, double or unsigned char.
  template <class T>
  void Append(const std::string& var, const T& v);
  // Appends data[r][c] row by row.
  template <class T>
  void Append(const std::string& var, T** data, int rows, int cols);
  // Pads the last row with zeros and closes the variable's scripts.
  void FinishCollecting(const std::string& var);
  bool IsCollecting(const std::string& var) const;

 private:
  struct subfile {
    std::unique_ptr<std::ofstream> stream;
    int ncols = 0;
    int ci = 0;     // column of the next value in the current row
    int count = 0;  // values in the current script
    int part = 0;   // continuation scripts begun
  };

  template <class T>
  void AppendScalar(const std::string& var, subfile& sf, const T& v);
  void BreakSubfile(const std::string& var, subfile& sf);
  void WriteValue(std::ostream& os, bool v);
  void WriteValue(std::ostream& os, int v);
  void WriteValue(std::ostream& os, unsigned char v);
  void WriteValue(std::ostream& os, double v);

  std::string name;
  std::ofstream out;
  int precision;
  int max_elements;
  std::map<std::string, subfile> subfiles;
  std::ostream* err;
  bool disabled = false;
};
