// The parts of the quilflashbch module, each adding its names to it.
#pragma once

#include <pybind11/pybind11.h>

namespace qfbpy {

namespace py = pybind11;

void bindBch(py::module_& m);
void bindFlashCodec(py::module_& m);
void bindAnalysis(py::module_& m);
void bindNand(py::module_& m);
void bindSimulate(py::module_& m);

}  // namespace qfbpy
