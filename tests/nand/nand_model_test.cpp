// The NAND cell model against independent evidence: the Gray map's
// structure, page RBER and soft-read bin probabilities against large
// simulated samples, optimal references against a fine grid, LLR shape and
// quantisation, and the argument checks.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <map>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "nand/cellModel.h"
#include "nand/pageBitChannel.h"
#include "nand/pageReadModel.h"
#include "nand/softPageRead.h"

namespace {

// States 1 V apart above a wide erased state; references half-way, the
// last one a little low so that the default and optimal references differ.
CellParameters cellParameters(int bits) {
  CellParameters p;
  p.bitsPerCell = bits;
  p.voltageMin = -4.0;
  p.voltageMax = 9.0;
  p.states.push_back({-1.5, 0.3});
  for (int s = 1; s < (1 << bits); ++s) p.states.push_back({0.5 + (s - 1) * 1.0, 0.1});
  for (int s = 0; s + 1 < (1 << bits); ++s)
    p.defaultReferences.push_back(0.5 * (p.states[s].mean + p.states[s + 1].mean) - (s == 0 ? 0.0 : 0.05));
  p.wearScale = 0.004;
  p.wearExponent = 0.62;
  p.retentionOrigin = -1.5;
  p.retentionTau0Hours = 1.0;
  p.retentionRateFresh = 0.001;
  p.retentionRateWear = 5e-5;
  p.retentionWearExponent = 0.5;
  return p;
}

std::string messageOf(const std::function<void()>& f) {
  try {
    f();
  } catch (const std::invalid_argument& e) {
    return e.what();
  }
  return "(accepted)";
}

TEST(NandGrayMap, AdjacentStatesDifferInOnePageAndPagesSplitTheReferences) {
  for (int bits = 1; bits <= 3; ++bits) {
    const CellModel model(cellParameters(bits));
    std::vector<int> seen(model.states(), 0);
    for (int s = 0; s < model.states(); ++s) {
      int word = 0, changes = 0;
      for (int p = 0; p < model.pages(); ++p) {
        word = word << 1 | model.bitOf(s, p);
        if (s > 0) changes += model.bitOf(s, p) != model.bitOf(s - 1, p);
        if (s == 0) {
          EXPECT_EQ(model.bitOf(s, p), 1) << "the erased state reads all ones";
        }
      }
      EXPECT_EQ(seen[word]++, 0) << "two states share bits " << word;
      if (s > 0) {
        EXPECT_EQ(changes, 1) << "states " << s - 1 << " and " << s;
      }
    }
    // Lower, middle, upper pages read with 1, 2, 4 references; together all of them once.
    std::vector<int> owner(model.states() - 1, -1);
    for (int p = 0; p < model.pages(); ++p) {
      const std::vector<int> refs = model.pageReferences(p);
      EXPECT_EQ(refs.size(), size_t{1} << p) << model.pageName(p);
      for (int j : refs) EXPECT_EQ(owner[j]++, -1);
    }
  }
}

// Cells drawn from the model and read through the page references: the
// misread fraction against the exact RBER, and every (bin, bit) frequency
// of a soft read against its exact probability. 400000 cells; a bound of
// 5 standard deviations is exceeded by chance with probability below 1e-6
// per comparison.
TEST(NandPageRead, ExactRatesMatchASimulatedSample) {
  struct Case {
    int bits;
    double cycles, hours;
  } cases[] = {{1, 20000, 8760}, {2, 6000, 2000}, {3, 4000, 8760}};
  std::mt19937_64 rng(20261123);
  constexpr int kCells = 400000;
  for (const Case& c : cases) {
    const CellModel model(cellParameters(c.bits));
    std::vector<PageReadModel> reads;
    std::vector<SoftPageRead> softs;
    for (int p = 0; p < model.pages(); ++p) reads.emplace_back(model, p, c.cycles, c.hours);
    for (const PageReadModel& r : reads)
      softs.emplace_back(r, r.pageReferencesOf(model.parameters().defaultReferences), 2, 0.08);
    std::vector<long> wrong(model.pages(), 0);
    std::vector<std::vector<long>> counts(model.pages());
    for (int p = 0; p < model.pages(); ++p) counts[p].assign(2 * softs[p].bins(), 0);
    std::uniform_int_distribution<int> state(0, model.states() - 1);
    std::normal_distribution<double> noise(0.0, 1.0);
    for (int i = 0; i < kCells; ++i) {
      const int s = state(rng);
      const StateDistribution& d = reads[0].distributions()[s];
      const double v = d.mean + d.sigma * noise(rng);
      for (int p = 0; p < model.pages(); ++p) {
        const int bin = softs[p].binOf(v), bit = model.bitOf(s, p);
        wrong[p] += softs[p].hardBit(bin) != bit;
        ++counts[p][2 * bin + bit];
      }
    }
    for (int p = 0; p < model.pages(); ++p) {
      SCOPED_TRACE(CellModel::cellName(c.bits) + " " + model.pageName(p));
      const double rber = reads[p].rber(reads[p].pageReferencesOf(model.parameters().defaultReferences));
      EXPECT_GT(rber, 1e-3) << "the case must produce errors to be a test";
      EXPECT_NEAR(softs[p].rber(), rber, 1e-12 * rber);
      EXPECT_NEAR(static_cast<double>(wrong[p]) / kCells, rber, 5 * std::sqrt(rber / kCells));
      for (int bin = 0; bin < softs[p].bins(); ++bin)
        for (int bit = 0; bit < 2; ++bit) {
          const double q = 0.5 * softs[p].probability(bin, bit);
          EXPECT_NEAR(static_cast<double>(counts[p][2 * bin + bit]) / kCells, q, 5 * std::sqrt(q / kCells) + 1e-6)
              << "bin " << bin << " bit " << bit;
        }
    }
  }
}

TEST(NandPageRead, OptimalReferencesBeatEveryGridPointAndSitBetweenStates) {
  for (int bits = 1; bits <= 3; ++bits) {
    const CellModel model(cellParameters(bits));
    for (int p = 0; p < model.pages(); ++p) {
      SCOPED_TRACE(CellModel::cellName(bits) + " " + model.pageName(p));
      const PageReadModel worn(model, p, 5000, 8760);
      const std::vector<double> best = worn.optimalReferences();
      const double floor = worn.rber(best);
      EXPECT_LE(floor, worn.rber(worn.pageReferencesOf(model.parameters().defaultReferences)));
      for (size_t m = 0; m < best.size(); ++m)
        for (int step = -200; step <= 200; ++step) {
          std::vector<double> moved = best;
          moved[m] += step * 5e-4;
          EXPECT_LE(floor, worn.rber(moved) * (1 + 1e-9)) << "reference " << m << " moved by " << step * 5e-4;
        }
      const PageReadModel fresh(model, p, 0, 0);
      const std::vector<double> freshBest = fresh.optimalReferences();
      EXPECT_LT(fresh.rber(freshBest), 1e-4) << "a fresh cell reads back its data";
      for (size_t m = 0; m < freshBest.size(); ++m) {
        const int j = fresh.referenceIndices()[m];
        EXPECT_GT(freshBest[m], model.parameters().states[j].mean);
        EXPECT_LT(freshBest[m], model.parameters().states[j + 1].mean);
      }
    }
  }
}

TEST(NandSoftRead, LlrsPointToTheSideAndGrowAwayFromEachReference) {
  const CellModel model(cellParameters(3));
  const SoftPageRead::LlrFormat format{5, -1};  // -8 .. 7.5 in steps of 0.5
  for (int p = 0; p < model.pages(); ++p) {
    const PageReadModel read(model, p, 3000, 8760);
    const std::vector<double> refs = read.optimalReferences();
    const int K = 3;
    const SoftPageRead soft(read, refs, K, 0.05, format);
    ASSERT_EQ(soft.bins(), static_cast<int>(refs.size()) * (2 * K + 1) + 1);
    for (size_t m = 0; m < refs.size(); ++m) {
      // Bins just below and above reference m, walking outwards.
      const int above = soft.binOf(refs[m] + 1e-9), below = above - 1;
      const int bitBelow = read.regionBit(static_cast<int>(m)), bitAbove = 1 - bitBelow;
      for (int step = 0; step <= K; ++step) {
        for (const auto& [bin, bit] : {std::pair{below - step, bitBelow}, std::pair{above + step, bitAbove}}) {
          EXPECT_EQ(soft.llr(bin) > 0, bit == 0) << "reference " << m << " bin " << bin;
          if (step > 0) {
            const int inner = bin < below ? bin + 1 : bin - 1;
            EXPECT_GT(std::fabs(soft.llr(bin)), std::fabs(soft.llr(inner))) << "bin " << bin;
          }
        }
      }
    }
    for (int bin = 0; bin < soft.bins(); ++bin) {
      const double clamped = std::max(-8.0, std::min(7.5, soft.llr(bin)));
      EXPECT_LE(std::fabs(soft.quantizedLlr(bin) - clamped), 0.25) << "bin " << bin;
      EXPECT_EQ(std::fmod(soft.quantizedLlr(bin), 0.5), 0.0);
    }
  }
}

// Decisions from soft reads are per-bin MAP decisions, so they are never
// wrong more often than the hard read; drawn reliabilities follow the class
// probabilities (200000 draws, 5 standard deviations per class).
TEST(NandBitChannel, SoftDecisionsBeatTheHardReadAndDrawsFollowTheClasses) {
  const CellModel model(cellParameters(3));
  std::mt19937_64 rng(8);
  for (int p = 0; p < model.pages(); ++p) {
    const PageReadModel read(model, p, 4000, 8760);
    const std::vector<double> refs = read.pageReferencesOf(model.parameters().defaultReferences);
    const PageBitChannel hard(SoftPageRead(read, refs, 0, 0.0), false);
    const PageBitChannel soft(SoftPageRead(read, refs, 3, 0.04), true);
    EXPECT_DOUBLE_EQ(hard.errorRate(), read.rber(refs));
    EXPECT_LT(soft.errorRate(), hard.errorRate()) << "default references are off after retention";
    for (const auto* classes : {&soft.wrongClasses(), &soft.rightClasses()}) {
      const bool wrong = classes == &soft.wrongClasses();
      std::map<float, double> expected, seen;
      for (const auto& c : *classes) expected[c.reliability] += c.probability;
      constexpr int kDraws = 200000;
      for (int i = 0; i < kDraws; ++i)
        seen[wrong ? soft.reliabilityOfWrong(rng()) : soft.reliabilityOfRight(rng())] += 1.0 / kDraws;
      for (const auto& [value, q] : expected)
        EXPECT_NEAR(seen[value], q, 5 * std::sqrt(q / kDraws) + 1e-9) << "reliability " << value;
    }
  }
}

TEST(NandModel, BadArgumentsAreRefusedWithTheirReason) {
  const CellModel tlc(cellParameters(3));
  const PageReadModel upper(tlc, 2, 0, 0);
  const auto refsWith = [&](size_t i, double volts) {
    std::vector<double> r = tlc.parameters().defaultReferences;
    r[i] = volts;
    return r;
  };
  const auto mlcWith = [](const std::function<void(CellParameters&)>& edit) {
    CellParameters p = cellParameters(2);
    edit(p);
    return p;
  };
  const std::vector<double> upperRefs = upper.pageReferencesOf(tlc.parameters().defaultReferences);
  struct Case {
    std::function<void()> call;
    std::string message;
  } cases[] = {
      {[] { CellModel::bitsOfCellName("qlc"); }, "unknown cell type 'qlc': use slc, mlc or tlc"},
      {[] { CellModel(cellParameters(2)).pageOfName("middle"); },
       "unknown page 'middle' for a mlc cell: use lower or upper"},
      {[&] { tlc.distributions(-1, 0); }, "P/E cycles must be a number in 0 .. 10000000, got -1"},
      {[&] { tlc.distributions(0, std::nan("")); }, "retention must be a number of hours in 0 .. 10000000, got nan"},
      {[&] { tlc.checkReferences({0, 1, 2}); }, "a tlc cell needs 7 read references, got 3"},
      {[&] { tlc.checkReferences(refsWith(3, tlc.parameters().defaultReferences[2])); },
       "read references must be strictly increasing"},  // two equal references
      {[&] { tlc.checkReferences(refsWith(6, 9.5)); },
       "read reference 9.5 lies outside the model's voltage range -4 .. 9 V"},
      {[&] { SoftPageRead(upper, upperRefs, 8, 0.1); }, "soft reads must be 0 .. 7, got 8"},
      {[&] { SoftPageRead(upper, upperRefs, 1, 0.0); }, "the soft-read step must be a finite number of volts > 0"},
      {[&] { CellModel(mlcWith([](CellParameters& p) { p.states[2].sigma = 0.0; })); },
       "state 2: sigma must be a finite number > 0"},
      {[&] { CellModel(mlcWith([](CellParameters& p) { p.states.pop_back(); })); }, "a mlc cell needs 4 states, got 3"},
      {[&] { CellModel(mlcWith([](CellParameters& p) { p.states[1].mean = p.states[0].mean; })); },
       "state 1: state means must be strictly increasing"},
      {[&] { tlc.distributions(1e7, 1e7); },
       "P/E cycles 10000000 and retention 10000000 h are beyond the model: the retention law would move "
       "programmed states below x0"},
  };
  for (const Case& c : cases) EXPECT_EQ(messageOf(c.call), c.message);
}

}  // namespace
