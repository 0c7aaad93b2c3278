// flashbch simulate's NAND page channel (--channel nand), beta-binomial
// channel (--channel bbm) and Chase decoder (--decoder chase): their options
// checked and turned into the simulation's channel and decoder factories.
#pragma once

#include "blockLayout.h"
#include "commands.h"
#include "simulation.h"

namespace flashbch {

// Sets the channel, its sweep and factory when o.channel is nand or bbm
// (false for any other channel), and records the channel's settings in
// s.runSettings (the model by name and by a CRC-32 of its parameters, so
// that an edited model file is told apart). Every channel of the sweep is
// built once here, so that a bad model, page, reference or point is
// refused before any work. Throws UsageError.
bool applyNandOrBetaBinomialChannel(const SimulateOptions& o, SimulationSettings& s);

// Sets the decoder factory for --decoder and --chase-positions and records
// them in s.runSettings; refuses the NAND and bbm flags with another
// channel. Throws UsageError.
void applyDecoder(const SimulateOptions& o, SimulationSettings& s);

// log10 of the mean codeword failure rate of a bounded-distance decoder
// over the layout: P(W > t) from the channel's own law of the error count W.
double log10AnalyticFailureRate(const Channel& channel, const BlockLayout& layout);

}  // namespace flashbch
