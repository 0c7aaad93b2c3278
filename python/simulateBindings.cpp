// quilflashbch.simulate: `flashbch simulate` from Python. The options are
// the command line's (checked by the same code, with the same messages), the
// sweep is the same engine, and the rows are the same table, handed back as
// a list of dicts and as a numpy structured array. The run releases the GIL;
// Ctrl-C stops it after the current round and raises KeyboardInterrupt.
#include <pybind11/numpy.h>
#include <pybind11/stl.h>

#include <atomic>
#include <cmath>
#include <sstream>

#include "bindings.h"
#include "bufferArgs.h"
#include "simulateCommand.h"
#include "sweep.h"

namespace qfbpy {

namespace {

using flashbch::Cell;

struct SimulationResult {
  flashbch::ResultTable table{{}};
  py::list rows;
  py::object array;
  py::dict settings;
};

// A whole or real option as the command line would read its text.
std::string numberText(const py::object& value) { return value.is_none() ? "" : py::str(value).cast<std::string>(); }

py::object cellValue(const Cell& cell) {
  switch (cell.kind()) {
    case Cell::Kind::Integer:
      return py::int_(std::stoll(cell.exact()));
    case Cell::Kind::Real:
    case Cell::Kind::Log10:  // a rate below the smallest double reads as 0.0
      return py::float_(std::strtod(cell.exact().c_str(), nullptr));
    case Cell::Kind::Text:
      return py::str(cell.exact());
    case Cell::Kind::Missing:
      break;
  }
  return py::none();
}

// Columns of integers, reals or text by their first non-missing cell;
// missing cells become -1 or NaN.
py::object structuredArray(const flashbch::ResultTable& table) {
  const auto& columns = table.columns();
  py::list dtype;
  std::vector<Cell::Kind> kinds(columns.size(), Cell::Kind::Missing);
  for (size_t c = 0; c < columns.size(); ++c) {
    for (const auto& row : table.rows())
      if (kinds[c] == Cell::Kind::Missing) kinds[c] = row[c].kind();
    const char* type = kinds[c] == Cell::Kind::Integer ? "i8" : kinds[c] == Cell::Kind::Text ? "U16" : "f8";
    dtype.append(py::make_tuple(columns[c], type));
  }
  py::list records;
  for (const auto& row : table.rows()) {
    py::list record;
    for (size_t c = 0; c < columns.size(); ++c) {
      py::object v = cellValue(row[c]);
      if (v.is_none()) v = kinds[c] == Cell::Kind::Integer ? py::object(py::int_(-1)) : py::object(py::float_(NAN));
      record.append(v);
    }
    records.append(py::tuple(record));
  }
  return py::module_::import("numpy").attr("array")(records, py::arg("dtype") = dtype);
}

// A channel or decoder setting as the JSON records it: text, a number, or
// a list of numbers.
py::object runSettingValue(const flashbch::RunSetting& setting) {
  if (setting.kind == flashbch::RunSetting::Kind::Text) return py::str(setting.text);
  py::list numbers;
  std::istringstream items(setting.text);
  for (std::string item; std::getline(items, item, ',');)
    numbers.append(py::float_(std::strtod(item.c_str(), nullptr)));
  if (setting.kind == flashbch::RunSetting::Kind::Numbers) return std::move(numbers);
  const double x = numbers[0].cast<double>();
  return x == std::floor(x) ? py::object(py::int_(static_cast<long long>(x))) : py::object(numbers[0]);
}

SimulationResult simulate(const LayoutArg& layout, int t, const std::string& channel, const py::object& snr,
                          const py::object& rber, const std::string& estimator, const py::object& maxFailures,
                          const py::object& maxFrames, const py::object& timeLimit, const py::object& targetRelCi,
                          const py::object& seed, int threads, const py::object& progress, const std::string& cell,
                          const py::object& model, const std::string& page, const py::object& pe,
                          const py::object& retention, const py::object& refs, int softReads, double softStep,
                          const py::object& dispersion, const std::string& decoder, int chasePositions) {
  flashbch::SimulateOptions o;
  o.layout = layoutText(layout);
  o.t = t;
  o.channel = channel;
  o.snr = sweepText(snr);
  o.rber = sweepText(rber);
  o.estimator = estimator;
  o.maxFailures = numberText(maxFailures);
  o.maxBlocks = numberText(maxFrames);
  o.timeLimit = numberText(timeLimit);
  o.targetRelCi = numberText(targetRelCi);
  o.seed = numberText(seed);
  o.threads = threads;
  setNandPage(o, cell, model, page, pe, retention);
  o.refs = sweepText(refs);
  o.softReads = softReads;
  o.softStep = softStep;
  o.dispersion = numberText(dispersion);
  o.decoder = decoder;
  o.chasePositions = chasePositions;
  std::atomic<bool> cancel{false};
  const flashbch::SimulationSettings settings = flashbch::settingsFrom(o, &cancel);

  SimulationResult r;
  r.table = flashbch::simulationTable(settings);
  bool interrupted = false, failed = false;
  std::string callbackError;
  // Between rounds: look for Ctrl-C, and report progress when asked to.
  const flashbch::ProgressCallback onProgress = [&](const flashbch::Progress& p) {
    py::gil_scoped_acquire locked;
    if (PyErr_CheckSignals() != 0) {
      PyErr_Clear();
      interrupted = true;
      cancel.store(true);
      return;
    }
    if (progress.is_none() || cancel.load()) return;
    try {
      progress(py::dict(py::arg("point") = p.point, py::arg("points") = p.points, py::arg("blocks") = p.blocks,
                        py::arg("failures") = p.failures, py::arg("codewords") = p.codewords,
                        py::arg("seconds") = p.seconds));
    } catch (py::error_already_set& e) {
      (e.matches(PyExc_KeyboardInterrupt) ? interrupted : failed) = true;
      if (failed) callbackError = e.what();
      cancel.store(true);
    }
  };
  {
    py::gil_scoped_release unlocked;
    flashbch::runSimulationSweep(settings, nullptr, r.table, onProgress, {});
  }
  if (interrupted) {
    PyErr_SetNone(PyExc_KeyboardInterrupt);
    throw py::error_already_set();
  }
  if (failed) throw py::value_error("progress: the callback raised " + callbackError);

  for (const auto& row : r.table.rows()) {
    py::dict entry;
    for (size_t c = 0; c < row.size(); ++c) entry[py::str(r.table.columns()[c])] = cellValue(row[c]);
    r.rows.append(entry);
  }
  r.array = structuredArray(r.table);
  const flashbch::BlockLayout& l = settings.layout;
  r.settings["layout"] = l.describe();
  r.settings["data_bits"] = l.dataBits;
  r.settings["t"] = l.t;
  r.settings["channel"] = flashbch::channelName(settings.channel);
  r.settings["estimator"] = flashbch::estimatorName(settings.estimator);
  r.settings["seed"] = settings.seed;
  r.settings["threads"] = settings.threads;
  r.settings["max_fe"] = settings.maxFailures;
  r.settings["max_frames"] = settings.maxBlocks;
  for (const flashbch::RunSetting& setting : settings.runSettings) {
    std::string key = setting.name;
    for (char& c : key) c = c == '-' ? '_' : c;
    r.settings[py::str(key)] = runSettingValue(setting);
  }
  return r;
}

}  // namespace

void bindSimulate(py::module_& m) {
  py::class_<SimulationResult>(m, "SimulationResult", "The table of a simulate run.")
      .def_readonly("rows", &SimulationResult::rows, "One dict per point, keyed by column.")
      .def_readonly("array", &SimulationResult::array, "The rows as a numpy structured array.")
      .def_readonly("settings", &SimulationResult::settings, "The run's layout, t, channel, estimator, seed, ...")
      .def_property_readonly("columns", [](const SimulationResult& r) { return r.table.columns(); })
      .def("__repr__", [](const SimulationResult& r) {
        std::ostringstream text;
        r.table.writeText(text, 9);
        return text.str();
      });

  m.def("simulate", &simulate, py::kw_only(), py::arg("layout") = "4x8192", py::arg("t") = 40,
        py::arg("channel") = "awgn", py::arg("snr") = py::none(), py::arg("rber") = py::none(),
        py::arg("estimator") = "mc", py::arg("max_fe") = 100, py::arg("max_frames") = py::none(),
        py::arg("time_limit") = py::none(), py::arg("target_rel_ci") = py::none(), py::arg("seed") = 1,
        py::arg("threads") = 0, py::arg("progress") = py::none(), py::arg("cell") = "tlc",
        py::arg("model") = py::none(), py::arg("page") = "upper", py::arg("pe") = py::none(),
        py::arg("retention") = py::none(), py::arg("refs") = "default", py::arg("soft_reads") = 0,
        py::arg("soft_step") = 0.05, py::arg("dispersion") = py::none(), py::arg("decoder") = "hard",
        py::arg("chase_positions") = 6, R"doc(
simulate(*, layout="4x8192", t=40, channel="awgn", snr=None, rber=None, estimator="mc",
         max_fe=100, max_frames=None, time_limit=None, target_rel_ci=None, seed=1,
         threads=0, progress=None, cell="tlc", model=None, page="upper", pe=None,
         retention=None, refs="default", soft_reads=0, soft_step=0.05, dispersion=None,
         decoder="hard", chase_positions=6) -> SimulationResult

`flashbch simulate` with its options as keywords (--max-fe is max_fe, and
so on; None is the command line's default). snr, rber, pe and retention
take the command line's sweep text ("13.9:0.2:14.9", "2.8e-3:*1.2:7e-3",
"1y"), a number or a list of numbers (retention in hours); refs is
"default", "optimal" or every reference of the cell in volts. The NAND
channel (channel="nand") takes cell, model, page, pe, retention, refs,
soft_reads and soft_step; channel="bbm" takes dispersion; decoder="chase"
takes chase_positions. settings holds them as the JSON records them. progress, when given, is called between rounds with
a dict (point, points, blocks, failures, codewords, seconds). The table
depends on the options and the seed only, never on threads. Rates below
1e-308 read as 0.0. Ctrl-C stops the run and raises KeyboardInterrupt.)doc");
}

}  // namespace qfbpy
