// The parts of `flashbch simulate` that the Python module runs too: the
// settings its options describe, the result table's columns, and the sweep
// itself (ranks and checkpoints included; the Python module runs one process
// without a checkpoint), without the terminal, the output files or the
// signal handlers.
#pragma once

#include <atomic>
#include <functional>
#include <vector>

#include "commands.h"
#include "resultTable.h"
#include "simulation.h"

namespace flashbch {

class SimulationCheckpoint;

// Checks every option as the command line does (UsageError naming the
// flag); a run stops after its current round once *cancel is set.
SimulationSettings settingsFrom(const SimulateOptions& options, const std::atomic<bool>* cancel);
// The empty table of a run: the swept parameter (snr_db or rber), raw_ber,
// fer with its interval, the miscorrection rate and UBER with theirs, the
// counts, analytic_fer, the estimator and the seconds taken.
ResultTable simulationTable(const SimulationSettings& settings);
// Runs the sweep, on the ranks of settings.ranks (null: this process
// alone): every Monte Carlo point in turn, or the stratified sweep. A row is
// added to `table` and passed to onRow as each point is finished (all rows
// at the end for the stratified sweep). With a checkpoint, the run starts
// from what it holds, records every round in it, and saves it at the end.
// Returns true when the run was cancelled (settings.cancel set on any
// rank): the Monte Carlo point under way then adds no row. An exception on
// one rank of several ends the whole job with "flashbch: rank R: ...";
// alone, it is rethrown.
bool runSimulationSweep(const SimulationSettings& settings, SimulationCheckpoint* checkpoint, ResultTable& table,
                        const ProgressCallback& progress, const std::function<void(const std::vector<Cell>&)>& onRow);

}  // namespace flashbch
