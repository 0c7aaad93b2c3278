// NAND cell models on the command line: the shipped defaults (models/*.json,
// compiled into the tool) and user files of the same form, read with every
// field checked.
//
//   {
//     "cell": "slc" | "mlc" | "tlc",
//     "description": "free text (optional)",
//     "voltage_range": [min, max],                    volts
//     "states": [{"mean": V, "sigma": V}, ...],       2^b of them, erased first
//     "default_refs": [V, ...],                       2^b - 1 read references
//     "wear": {"a": a, "alpha": alpha},               sigma(N) = sigma0 (1 + a N^alpha)
//     "retention": {"x0": V, "tau0_hours": h, "k_fresh": kf, "k_wear": kw, "beta": beta}
//   }
// mu(N, tau) = mu0 - (mu0 - x0) (kf + kw N^beta) ln(1 + tau / tau0). Unknown
// keys are refused, so that a misspelt field is not silently ignored.
#pragma once

#include <string>

#include "nand/cellModel.h"

namespace flashbch {

// The JSON text of a shipped model ("slc", "mlc", "tlc"); empty if none.
std::string builtInModelText(const std::string& cell);

// Parses a model; origin names its source in messages ("--model m.json").
// Throws UsageError naming the field at fault.
CellParameters parseCellModel(const std::string& text, const std::string& origin);

// The model chosen by --cell and --model (a file wins over the cell name),
// checked by the library; every error is a UsageError.
CellModel loadCellModel(const std::string& cell, const std::string& modelPath);

}  // namespace flashbch
