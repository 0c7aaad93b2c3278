// The parts of `flashbch simulate` that the Python module runs too: the
// settings its options describe, the result table's columns, and the sweep
// itself, without the terminal, the output files or the signal handlers.
#pragma once

#include <atomic>
#include <functional>
#include <vector>

#include "commands.h"
#include "resultTable.h"
#include "simulation.h"

namespace flashbch {

// Checks every option as the command line does (UsageError naming the
// flag); a run stops after its current round once *cancel is set.
SimulationSettings settingsFrom(const SimulateOptions& options, const std::atomic<bool>* cancel);
// The empty table of a run: the swept parameter (snr_db or rber), raw_ber,
// fer with its interval, the miscorrection rate and UBER with theirs, the
// counts, analytic_fer, the estimator and the seconds taken.
ResultTable simulationTable(const SimulationSettings& settings);
// Runs every point (Monte Carlo, until cancelled) or the stratified sweep,
// adding a row per finished point and passing it to onRow.
void runSimulationSweep(const SimulationSettings& settings, ResultTable& table, const ProgressCallback& progress,
                        const std::function<void(const std::vector<Cell>&)>& onRow);

}  // namespace flashbch
