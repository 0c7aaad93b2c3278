// quilflashbch.analytic_fer and uber: the failure rates of a
// bounded-distance decoder for a block layout (the numbers of `flashbch
// info` and `flashbch uber`), over a scalar or a numpy array of raw bit
// error rates.
#include <pybind11/numpy.h>
#include <pybind11/stl.h>

#include <cmath>
#include <vector>

#include "bindings.h"
#include "blockLayout.h"
#include "bufferArgs.h"
#include "codeFacts.h"
#include "sweep.h"
#include "usageError.h"

namespace qfbpy {

namespace {

flashbch::BlockLayout analysisLayout(const LayoutArg& layout, int t) {
  return flashbch::makeLayout(flashbch::parseLayout(layoutText(layout)), t, false);
}

// f(layout, rber) for each rate, as 10^f or f itself (log10=True, which
// keeps rates below 1e-308 that a double cannot hold).
py::object overRates(const flashbch::BlockLayout& layout, const py::object& rber, bool log10,
                     double (*f)(const flashbch::BlockLayout&, double)) {
  auto one = [&](double p) {
    if (!(p >= 0.0 && p <= 0.5))
      throw flashbch::UsageError("--rber: " + flashbch::formatNumber(p) + " is outside the accepted range 0 .. 0.5");
    const double v = f(layout, p);
    return log10 ? v : std::pow(10.0, v);
  };
  if (py::isinstance<py::float_>(rber) || py::isinstance<py::int_>(rber)) return py::float_(one(rber.cast<double>()));
  auto rates = py::array_t<double, py::array::c_style | py::array::forcecast>::ensure(rber);
  if (!rates) throw py::type_error("rber: expected a number or an array of numbers");
  py::array_t<double> out(std::vector<py::ssize_t>(rates.shape(), rates.shape() + rates.ndim()));
  const double* in = rates.data();
  double* values = out.mutable_data();
  for (py::ssize_t i = 0; i < rates.size(); ++i) values[i] = one(in[i]);
  return std::move(out);
}

}  // namespace

void bindAnalysis(py::module_& m) {
  m.def(
      "analytic_fer",
      [](const LayoutArg& layout, int t, const py::object& rber, bool log10) {
        return overRates(analysisLayout(layout, t), rber, log10, flashbch::log10BlockFailureRate);
      },
      py::arg("layout"), py::arg("t"), py::arg("rber"), py::arg("log10") = false, R"doc(
analytic_fer(layout, t, rber, log10=False) -> float | ndarray

Codeword failure rate of a bounded-distance decoder at raw bit error rate
rber (a number or an array), averaged over the codewords of the layout:
P(X > t), X ~ Binomial(k + 15t, rber). log10=True returns log10 of it,
which stays finite below 1e-308.)doc");
  m.def(
      "uber",
      [](const LayoutArg& layout, int t, const py::object& rber, bool log10) {
        return overRates(analysisLayout(layout, t), rber, log10, flashbch::log10Uber);
      },
      py::arg("layout"), py::arg("t"), py::arg("rber"), py::arg("log10") = false, R"doc(
uber(layout, t, rber, log10=False) -> float | ndarray

Uncorrectable bit error rate: expected failed codewords per block over the
data bits of a block, at raw bit error rate rber (a number or an array).)doc");
}

}  // namespace qfbpy
