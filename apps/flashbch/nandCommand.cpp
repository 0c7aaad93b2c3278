// flashbch nand; see the header. Every rate is exact (normal CDF sums of
// the model), so the table carries no intervals.
#include "nandCommand.h"

#include <cmath>
#include <cstdio>
#include <iostream>
#include <sstream>
#include <stdexcept>

#include "blockLayout.h"
#include "codeFacts.h"
#include "gnuplotRunner.h"
#include "nand/pageReadModel.h"
#include "nandModelFile.h"
#include "outputFile.h"
#include "resultTable.h"
#include "sweep.h"
#include "usageError.h"

namespace flashbch {

namespace {

double hoursPerUnit(char unit) {
  switch (unit) {
    case 'h':
      return 1.0;
    case 'd':
      return 24.0;
    case 'w':
      return 168.0;
    case 'y':
      return 8760.0;
    default:
      return 0.0;
  }
}

// The smallest t whose UBER meets the target, or 0 when none up to kMaxT does.
int tNeeded(const std::vector<int>& dataBits, double rber, double targetUber) {
  const double goal = std::log10(targetUber);
  for (int t = 1; t <= kMaxT; ++t) {
    BlockLayout layout;
    try {
      layout = makeLayout(dataBits, t, false);
    } catch (const UsageError&) {
      return 0;  // the codewords no longer fit the field
    }
    if (log10Uber(layout, rber) <= goal) return t;
  }
  return 0;
}

// Millivolt-and-better precision for the table (the JSON keeps every digit).
std::string joinVolts(const std::vector<double>& volts) {
  std::string s;
  char text[32];
  for (double v : volts) {
    std::snprintf(text, sizeof text, "%.4f", v);
    s += (s.empty() ? "" : ";") + std::string(text);
  }
  return s;
}

Cell tCell(int t) { return t > 0 ? Cell::integer(t) : Cell::text("none"); }

}  // namespace

std::vector<double> parseRetentionSweep(const std::string& flag, const std::string& text) {
  auto unitOf = [](const std::string& item, std::string& number) {
    number = item;
    if (!item.empty() && hoursPerUnit(item.back()) > 0.0) {
      number.pop_back();
      return hoursPerUnit(item.back());
    }
    return 1.0;
  };
  std::vector<double> hours;
  if (text.find(':') != std::string::npos) {
    std::string number;
    const double scale = unitOf(text, number);
    for (double v : parseSweep(flag, number, SweepKind::Real, 0.0, CellModel::kMaxRetentionHours / scale))
      hours.push_back(v * scale);
    return hours;
  }
  std::istringstream items(text);
  for (std::string item; std::getline(items, item, ',');) {
    std::string number;
    const double scale = unitOf(item, number);
    if (number.empty()) throw UsageError(flag + ": cannot read '" + text + "'");
    for (double v : parseSweep(flag, number, SweepKind::Real, 0.0, CellModel::kMaxRetentionHours / scale))
      hours.push_back(v * scale);
  }
  if (hours.empty()) throw UsageError(flag + ": cannot read '" + text + "'");
  return hours;
}

NandTable computeNandTable(const NandOptions& o) {
  NandTable table{loadCellModel(o.cell, o.model), {}, {}, {}, {}, {}};
  const CellModel& model = table.model;
  if (o.page == "all") {
    for (int p = 0; p < model.pages(); ++p) table.pages.push_back(p);
  } else {
    try {
      table.pages.push_back(model.pageOfName(o.page));
    } catch (const std::invalid_argument& e) {
      throw UsageError(std::string("--page: ") + e.what());
    }
  }
  table.cycles = parseSweep("--pe", o.pe, SweepKind::Integer, 0.0, CellModel::kMaxCycles);
  table.hours = parseRetentionSweep("--retention", o.retention);
  const std::vector<int> dataBits = parseLayout(o.layout);
  table.layout = makeLayout(dataBits, 1, false);
  if (!(o.targetUber > 0.0 && o.targetUber < 1.0))
    throw UsageError("--target-uber: " + formatNumber(o.targetUber) + " is outside the accepted range (0, 1)");
  for (int page : table.pages)
    for (double n : table.cycles)
      for (double h : table.hours) {
        const PageReadModel read = [&] {
          try {
            return PageReadModel(model, page, n, h);
          } catch (const std::invalid_argument& e) {
            throw UsageError(e.what());
          }
        }();
        NandRow row;
        row.page = page;
        row.cycles = n;
        row.retentionHours = h;
        row.defaultRefs = read.pageReferencesOf(model.parameters().defaultReferences);
        row.optimalRefs = read.optimalReferences();
        row.rberDefault = read.rber(row.defaultRefs);
        row.rberOptimal = read.rber(row.optimalRefs);
        row.tDefault = tNeeded(dataBits, row.rberDefault, o.targetUber);
        row.tOptimal = tNeeded(dataBits, row.rberOptimal, o.targetUber);
        table.rows.push_back(std::move(row));
      }
  return table;
}

int runNand(const NandOptions& o) {
  if (!o.plot.empty()) checkPlotTarget(o.plot);
  checkWritable("--csv", o.csv);
  checkWritable("--json", o.json);
  const NandTable nand = computeNandTable(o);
  const CellModel& model = nand.model;
  const std::vector<int>& pages = nand.pages;
  const std::vector<double>&cycles = nand.cycles, &hours = nand.hours;

  const std::string cell = CellModel::cellName(model.bitsPerCell());
  ResultTable table({"cell", "page", "pe", "retention_hours", "rber_default_refs", "rber_optimal_refs",
                     "t_default_refs", "t_optimal_refs", "optimal_refs"});
  Json rows = Json::array();
  for (const NandRow& r : nand.rows) {
    table.addRow({Cell::text(cell), Cell::text(model.pageName(r.page)),
                  Cell::integer(static_cast<int64_t>(r.cycles)), Cell::real(r.retentionHours),
                  Cell::real(r.rberDefault), Cell::real(r.rberOptimal), tCell(r.tDefault), tCell(r.tOptimal),
                  Cell::text(joinVolts(r.optimalRefs))});
    Json row;
    row["cell"] = cell;
    row["page"] = model.pageName(r.page);
    row["pe"] = static_cast<int64_t>(r.cycles);
    row["retention_hours"] = r.retentionHours;
    row["rber_default_refs"] = r.rberDefault;
    row["rber_optimal_refs"] = r.rberOptimal;
    row["optimal_refs"] = r.optimalRefs;
    row["default_refs"] = r.defaultRefs;
    row["t_default_refs"] = r.tDefault > 0 ? Json(r.tDefault) : Json(nullptr);
    row["t_optimal_refs"] = r.tOptimal > 0 ? Json(r.tOptimal) : Json(nullptr);
    rows.push_back(row);
  }

  const BlockLayout& layout = nand.layout;
  std::cout << "flashbch nand: " << cell << " cell, " << (o.model.empty() ? "built-in model" : "model " + o.model)
            << "; exact page RBER with the default and the optimal read references (within "
            << formatNumber(PageReadModel::kDefaultTolerance) << " V); t: smallest t meeting UBER "
            << formatNumber(o.targetUber) << " for layout " << layout.describe()
            << " under bounded-distance decoding (none: not reachable up to t = " << kMaxT << ")\n";
  table.writeText(std::cout);
  std::cout.flush();

  if (!o.csv.empty()) {
    std::ostringstream csv;
    table.writeCsv(csv);
    writeOutputFile("--csv", o.csv, csv.str());
  }
  if (!o.json.empty()) {
    Json document;
    document["command"] = "nand";
    document["cell"] = cell;
    document["model"] = o.model.empty() ? "built-in" : o.model;
    document["layout"] = layout.describe();
    document["target_uber"] = o.targetUber;
    document["reference_tolerance_volts"] = PageReadModel::kDefaultTolerance;
    document["rows"] = rows;
    writeOutputFile("--json", o.json, document.dump(2) + "\n");
  }
  if (!o.plot.empty()) {
    // One curve per page and reference choice (and retention time, when
    // P/E is swept), against P/E cycles - or against retention when P/E is
    // a single point.
    const bool againstCycles = cycles.size() > 1 || hours.size() == 1;
    const std::vector<double>& xs = againstCycles ? cycles : hours;
    const std::vector<double>& others = againstCycles ? hours : cycles;
    std::vector<std::string> columns{againstCycles ? "pe" : "retention_hours"};
    for (int page : pages)
      for (double other : others)
        for (const char* refs : {"default", "optimal"}) {
          std::string name = model.pageName(page) + " " + refs;
          if (others.size() > 1)
            name += againstCycles ? " " + formatNumber(other) + " h" : " " + formatNumber(other) + " P/E";
          columns.push_back(name);
        }
    ResultTable plotTable(columns);
    for (size_t x = 0; x < xs.size(); ++x) {
      std::vector<Cell> line{Cell::real(xs[x])};
      for (size_t p = 0; p < pages.size(); ++p)
        for (size_t other = 0; other < others.size(); ++other) {
          const size_t c = againstCycles ? x : other, h = againstCycles ? other : x;
          const auto& row = table.rows()[(p * cycles.size() + c) * hours.size() + h];
          line.push_back(row[4]);
          line.push_back(row[5]);
        }
      plotTable.addRow(line);
    }
    std::ostringstream csv;
    plotTable.writeCsv(csv);
    PlotRequest plot;
    plot.output = o.plot;
    plot.title = "page RBER of the " + cell + " model";
    plot.xLabel = againstCycles ? "P/E cycles" : "retention (hours)";
    plot.yLabel = "raw bit error rate";
    plot.keyPosition = "bottom right";
    plot.csv = csv.str();
    plot.series = "for [c=2:" + std::to_string(columns.size()) + "] 'DATA' using 1:c with linespoints";
    const std::string failure = runGnuplot(plot);
    if (!failure.empty()) {
      std::cerr << "flashbch nand: --plot: " << failure << std::endl;
      return 1;
    }
  }
  return 0;
}

}  // namespace flashbch
