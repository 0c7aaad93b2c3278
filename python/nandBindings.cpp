// quilflashbch.nand: the exact page raw bit error rates of a NAND cell
// model with the default and the optimal read references, and the t each
// page needs for a target UBER - the rows of `flashbch nand`, computed by
// the same code, as a list of dicts with the keys of its JSON rows.
#include <pybind11/stl.h>

#include "bindings.h"
#include "bufferArgs.h"
#include "nandCommand.h"

namespace qfbpy {

namespace {

py::object neededT(int t) { return t > 0 ? py::object(py::int_(t)) : py::none(); }

py::list nandRows(const std::string& cell, const py::object& model, const std::string& page, const py::object& pe,
                  const py::object& retention, const LayoutArg& layout, double targetUber) {
  flashbch::NandOptions o;
  setNandPage(o, cell, model, page, pe, retention);
  o.layout = layoutText(layout);
  o.targetUber = targetUber;
  const flashbch::NandTable table = [&] {
    py::gil_scoped_release unlocked;
    return flashbch::computeNandTable(o);
  }();
  const std::string cellName = CellModel::cellName(table.model.bitsPerCell());
  py::list rows;
  for (const flashbch::NandRow& r : table.rows)
    rows.append(py::dict(py::arg("cell") = cellName, py::arg("page") = table.model.pageName(r.page),
                         py::arg("pe") = static_cast<long long>(r.cycles),
                         py::arg("retention_hours") = r.retentionHours, py::arg("rber_default_refs") = r.rberDefault,
                         py::arg("rber_optimal_refs") = r.rberOptimal, py::arg("optimal_refs") = r.optimalRefs,
                         py::arg("default_refs") = r.defaultRefs, py::arg("t_default_refs") = neededT(r.tDefault),
                         py::arg("t_optimal_refs") = neededT(r.tOptimal)));
  return rows;
}

}  // namespace

void bindNand(py::module_& m) {
  m.def("nand", &nandRows, py::kw_only(), py::arg("cell") = "tlc", py::arg("model") = py::none(),
        py::arg("page") = "all", py::arg("pe") = "0:1000:5000", py::arg("retention") = "0,24,720,8760",
        py::arg("layout") = "4x8192", py::arg("target_uber") = 1e-15, R"doc(
nand(*, cell="tlc", model=None, page="all", pe="0:1000:5000", retention="0,24,720,8760",
     layout="4x8192", target_uber=1e-15) -> list[dict]

The rows of `flashbch nand`: for each page ("lower", "middle", "upper" or
"all"), each P/E cycle count and each retention time, the exact raw bit
error rate of a hard read with the model's default references and with the
optimal ones (read retry, each within 1e-6 V), and the smallest t meeting
target_uber for the layout under bounded-distance decoding (None when no t
up to 128 does). model is a JSON cell model file and wins over cell. pe and
retention take the command line's sweep text ("0:1000:5000"; retention
values may end in h, d, w or y), a number or a list of numbers (retention
in hours). Each dict has the keys of the command line's JSON rows: cell,
page, pe, retention_hours, rber_default_refs, rber_optimal_refs,
optimal_refs, default_refs (volts, the page's own references),
t_default_refs, t_optimal_refs. Bad options raise ValueError with the
command line's message.)doc");
}

}  // namespace qfbpy
