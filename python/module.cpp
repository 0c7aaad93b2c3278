// The quilflashbch Python module: the packed BCH codec, whole flash blocks,
// the analytic error rates, the NAND cell model's page error rates and the
// simulator, on bytes and numpy arrays.
//
// Errors: a request the command line would refuse raises ValueError with the
// command line's message (UsageError); an argument of the wrong type, or
// bytes of another item type, raises TypeError.
#include <pybind11/pybind11.h>

#include "bindings.h"
#include "pageImage.h"
#include "usageError.h"

namespace py = pybind11;

PYBIND11_MODULE(quilflashbch, m) {
  m.doc() = R"doc(
NAND-flash ECC: binary BCH codes over GF(2^15) on packed bytes.

  BCH(data_bits, t)     one codeword: encode, decode, encode_batch, decode_batch
  FlashCodec(layout, t) whole blocks as stored: encode, decode with a report
  analytic_fer, uber    failure rates of a bounded-distance decoder
  nand(...)             `flashbch nand`: page RBER and optimal read references of a cell model
  simulate(...)         `flashbch simulate`: rows as dicts and a numpy structured array
  Status                CLEAN, CORRECTED, UNCORRECTABLE, ERASED (uint8 codes in arrays)

Every call releases the GIL; objects may be shared between Python threads.)doc";

  py::register_exception_translator([](std::exception_ptr p) {
    try {
      if (p) std::rethrow_exception(p);
    } catch (const flashbch::UsageError& e) {
      PyErr_SetString(PyExc_ValueError, e.what());
    }
  });

  py::enum_<flashbch::CodewordStatus>(m, "Status", "The verdict on one codeword; arrays hold its integer value.")
      .value("CLEAN", flashbch::CodewordStatus::Clean, "no error found")
      .value("CORRECTED", flashbch::CodewordStatus::Corrected, "corrected_bits bits were flipped")
      .value("UNCORRECTABLE", flashbch::CodewordStatus::Uncorrectable, "too many errors; the data are as read")
      .value("ERASED", flashbch::CodewordStatus::Erased, "an erased page (FlashCodec only); the data are all ones");

  qfbpy::bindBch(m);
  qfbpy::bindFlashCodec(m);
  qfbpy::bindAnalysis(m);
  qfbpy::bindNand(m);
  qfbpy::bindSimulate(m);
}
