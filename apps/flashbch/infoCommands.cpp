// flashbch info and flashbch uber: analytic facts, no simulation.
#include <cmath>
#include <iostream>
#include <sstream>

#include "blockLayout.h"
#include "codeFacts.h"
#include "commands.h"
#include "gnuplotRunner.h"
#include "outputFile.h"
#include "resultTable.h"
#include "sweep.h"
#include "usageError.h"

namespace flashbch {

int runInfo(const InfoOptions& o) {
  const BlockLayout layout = makeLayout(parseLayout(o.layout), o.t, false);
  if (!(o.rber >= 0.0 && o.rber <= 0.5))
    throw UsageError("--rber: " + formatNumber(o.rber) + " is outside the accepted range 0 .. 0.5");

  ResultTable table(
      {"codeword", "k", "n", "parity_used", "parity_stored", "rate", "stored_rate", "distance", "fer", "uber"});
  for (int i = 0; i < layout.codewords(); ++i) {
    const int k = layout.dataBits[i];
    const double log10Fer = log10CodewordFailureRate(k, layout.t, o.rber);
    table.addRow({Cell::integer(i), Cell::integer(k), Cell::integer(layout.codeLength(i)),
                  Cell::integer(layout.parityBits()), Cell::integer(layout.storedParityBits()),
                  Cell::real(static_cast<double>(k) / layout.codeLength(i)),
                  Cell::real(static_cast<double>(k) / layout.storedBits(i)), Cell::integer(2 * layout.t + 1),
                  Cell::fromLog10(log10Fer), Cell::fromLog10(log10Fer - std::log10(static_cast<double>(k)))});
  }
  std::cout << "BCH over GF(2^15), x^15 + x + 1, roots alpha^1 .. alpha^" << 2 * layout.t << ", t = " << layout.t
            << "; failure rates of a bounded-distance decoder at raw bit error rate " << formatNumber(o.rber) << "\n";
  table.writeText(std::cout);
  const std::vector<int> g = generatorPolynomial(layout.t);
  std::cout << "generator polynomial (degree " << g.size() - 1 << ", highest degree first): 0x" << bitsToHex(g)
            << std::endl;
  return 0;
}

int runUber(const UberOptions& o) {
  const std::vector<int> dataBits = parseLayout(o.layout);
  const std::vector<double> ts = parseSweep("--t", o.t, SweepKind::Integer, 1, kMaxT);
  const std::vector<double> rates = parseSweep("--rber", o.rber, SweepKind::Probability, 0.0, 0.5);
  std::vector<BlockLayout> layouts;
  for (double t : ts) layouts.push_back(makeLayout(dataBits, static_cast<int>(t), false));
  if (!o.plot.empty()) checkPlotTarget(o.plot);
  checkWritable("--csv", o.csv);

  std::vector<std::string> columns{"t", "parity_stored"};
  for (double p : rates) columns.push_back(Cell::real(p).display());
  ResultTable ferTable(columns), uberTable(columns);
  ResultTable longTable({"t", "parity_stored", "rber", "fer", "uber"});
  std::vector<std::string> plotColumns{"rber"};
  for (const BlockLayout& layout : layouts) plotColumns.push_back("t=" + std::to_string(layout.t));
  ResultTable plotTable(plotColumns);
  std::vector<std::vector<Cell>> plotRows(rates.size());
  for (size_t r = 0; r < rates.size(); ++r) plotRows[r].push_back(Cell::real(rates[r]));

  for (const BlockLayout& layout : layouts) {
    std::vector<Cell> ferRow{Cell::integer(layout.t), Cell::integer(layout.storedParityBits())};
    std::vector<Cell> uberRow = ferRow;
    for (size_t r = 0; r < rates.size(); ++r) {
      const double log10Fer = log10BlockFailureRate(layout, rates[r]);
      const double log10Uber = flashbch::log10Uber(layout, rates[r]);
      ferRow.push_back(Cell::fromLog10(log10Fer));
      uberRow.push_back(Cell::fromLog10(log10Uber));
      longTable.addRow({Cell::integer(layout.t), Cell::integer(layout.storedParityBits()), Cell::real(rates[r]),
                        Cell::fromLog10(log10Fer), Cell::fromLog10(log10Uber)});
      plotRows[r].push_back(Cell::fromLog10(log10Uber));
    }
    ferTable.addRow(ferRow);
    uberTable.addRow(uberRow);
  }
  for (auto& row : plotRows) plotTable.addRow(row);

  const BlockLayout& first = layouts.front();
  std::cout << "layout " << first.describe() << " data bits; bounded-distance decoder, columns: raw bit error rate\n"
            << "\ncodeword failure rate (mean over the codewords of a block)\n";
  ferTable.writeText(std::cout);
  std::cout << "\nUBER (failed codewords per data bit)\n";
  uberTable.writeText(std::cout);
  std::cout.flush();

  if (!o.csv.empty()) {
    std::ostringstream csv;
    longTable.writeCsv(csv);
    writeOutputFile("--csv", o.csv, csv.str());
  }
  if (!o.plot.empty()) {
    std::ostringstream csv;
    plotTable.writeCsv(csv);
    PlotRequest plot;
    plot.output = o.plot;
    plot.title = "UBER of " + first.describe() + " codewords, bounded-distance decoding";
    plot.xLabel = "raw bit error rate";
    plot.yLabel = "UBER";
    plot.logX = true;
    plot.keyPosition = "bottom right";
    plot.csv = csv.str();
    plot.series = "for [c=2:" + std::to_string(plotColumns.size()) + "] 'DATA' using 1:c with linespoints";
    const std::string failure = runGnuplot(plot);
    if (!failure.empty()) {
      std::cerr << "flashbch uber: --plot: " << failure << std::endl;
      return 1;
    }
  }
  return 0;
}

}  // namespace flashbch
