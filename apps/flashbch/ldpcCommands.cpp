// flashbch ldpc info | generator | bch.
//
// The JSON of info holds n (columns), m (rows), ones, rank, rate
// ((n - rank) / n), column_degrees and row_degrees (degree as a string ->
// number of nodes), girth (null without cycles), cycles (cycle length as a
// string -> count, for girth, girth + 2 and girth + 4; empty without cycles
// or with --no-cycles) and circulant_size (the block-cyclic symmetry found).
#include "ldpcCommands.h"

#include <fstream>
#include <iostream>
#include <nlohmann/json.hpp>
#include <sstream>

#include "Tools/mymatrix/alist.h"
#include "Tools/mymatrix/bchParityCheck.h"
#include "Tools/mymatrix/tannerCycles.h"
#include "blockLayout.h"
#include "gf/gf2m.h"
#include "outputFile.h"
#include "usageError.h"

namespace flashbch {

namespace {

using tools::SparseBinaryMatrix;

SparseBinaryMatrix readMatrix(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) throw UsageError(path + ": cannot open the input file");
  try {
    return tools::readAlist(in);
  } catch (const tools::AlistError& e) {
    throw UsageError(path + ": " + e.what());
  }
}

std::string alistText(const SparseBinaryMatrix& h) {
  std::ostringstream out;
  tools::writeAlist(out, h);
  return out.str();
}

nlohmann::json degreesJson(const std::map<size_t, size_t>& degrees, std::string& text) {
  nlohmann::json j = nlohmann::json::object();
  for (const auto& [degree, count] : degrees) {
    j[std::to_string(degree)] = count;
    text += " " + std::to_string(degree) + ":" + std::to_string(count);
  }
  return j;
}

int runInfo(const LdpcOptions& o) {
  checkWritable("--json", o.json);
  const SparseBinaryMatrix h = readMatrix(o.input);
  const size_t n = h.cols(), m = h.rows(), rank = h.toDense().rank();
  nlohmann::json doc{{"n", n}, {"m", m}, {"ones", h.ones()}, {"rank", rank},
                     {"rate", static_cast<double>(n - rank) / static_cast<double>(n)}};
  std::string columnText, rowText;
  doc["column_degrees"] = degreesJson(h.columnDegrees(), columnText);
  doc["row_degrees"] = degreesJson(h.rowDegrees(), rowText);
  std::cout << "parity-check matrix " << m << " x " << n << " (rows x columns), " << h.ones() << " ones, rank "
            << rank << ", code dimension " << n - rank << ", rate " << doc["rate"].get<double>() << "\n"
            << "column degrees (degree:columns)" << columnText << "\n"
            << "row degrees (degree:rows)" << rowText << "\n";
  doc["cycles"] = nlohmann::json::object();
  if (o.noCycles) {
    doc["girth"] = nullptr;
    doc["circulant_size"] = nullptr;
    std::cout << "girth and cycles: not computed (--no-cycles)" << std::endl;
  } else {
    tools::CycleCounts c;
    try {
      c = tools::countShortCycles(h);
    } catch (const std::overflow_error&) {
      throw UsageError(o.input + ": the cycle counts exceed 64 bits; rerun with --no-cycles");
    }
    doc["circulant_size"] = c.circulantSize;
    if (c.girth == 0) {
      doc["girth"] = nullptr;
      std::cout << "girth: none (the Tanner graph has no cycle)" << std::endl;
    } else {
      doc["girth"] = c.girth;
      std::cout << "girth " << c.girth << "; cycles (length:count)";
      for (const auto& [length, count] : c.counts) {
        doc["cycles"][std::to_string(length)] = count;
        std::cout << " " << length << ":" << count;
      }
      std::cout << "\nquasi-cyclic symmetry used: circulant size " << c.circulantSize << std::endl;
    }
  }
  if (!o.json.empty()) writeOutputFile("--json", o.json, doc.dump(2) + "\n");
  return 0;
}

int runGenerator(const LdpcOptions& o) {
  checkWritable("-o", o.output);
  checkWritable("--json", o.json);
  const SparseBinaryMatrix h = readMatrix(o.input);
  const tools::SystematicForm f = tools::systematicForm(h.toDense());
  const size_t k = f.G.rows();
  if (k == 0) throw UsageError(o.input + ": the matrix has full column rank; its code holds only the zero word");
  writeOutputFile("-o", o.output, alistText(SparseBinaryMatrix::fromDense(f.G)));
  std::cout << "generator " << k << " x " << h.cols() << " (rank of H " << f.rank() << ") written to " << o.output
            << "; information bits at the columns listed in --json" << std::endl;
  if (!o.json.empty()) {
    const nlohmann::json doc{{"n", h.cols()}, {"k", k}, {"rank", f.rank()}, {"information_columns", f.infoColumns}};
    writeOutputFile("--json", o.json, doc.dump(2) + "\n");
  }
  return 0;
}

int runBch(const LdpcOptions& o) {
  if (o.t < 1 || o.t > kMaxT)
    throw UsageError("--t: " + std::to_string(o.t) + " is outside the accepted range 1 .. " + std::to_string(kMaxT));
  const int n = o.dataBits + 15 * o.t;
  if (o.dataBits < 1 || n > 32767)
    throw UsageError("--data-bits: " + std::to_string(o.dataBits) + " is outside the accepted range 1 .. " +
                     std::to_string(32767 - 15 * o.t) + " for t = " + std::to_string(o.t));
  checkWritable("-o", o.output);
  checkWritable("--json", o.json);
  int coefficients[16] = {};
  coefficients[0] = coefficients[14] = coefficients[15] = 1;  // x^15 + x + 1
  const GF2m field(15, coefficients, 15, static_cast<const char*>(nullptr));
  const SparseBinaryMatrix h =
      SparseBinaryMatrix::fromDense(tools::bchParityCheck(field, static_cast<size_t>(n), o.t));
  writeOutputFile("-o", o.output, alistText(h));
  std::cout << "BCH parity-check matrix " << h.rows() << " x " << n << " (k = " << o.dataBits << ", t = " << o.t
            << ", " << h.ones() << " ones) written to " << o.output << std::endl;
  if (!o.json.empty()) {
    const nlohmann::json doc{{"n", n}, {"k", o.dataBits}, {"t", o.t}, {"m", h.rows()}, {"ones", h.ones()}};
    writeOutputFile("--json", o.json, doc.dump(2) + "\n");
  }
  return 0;
}

}  // namespace

int runLdpc(const LdpcOptions& o) {
  if (o.action == "info") return runInfo(o);
  if (o.action == "generator") return runGenerator(o);
  return runBch(o);
}

}  // namespace flashbch
