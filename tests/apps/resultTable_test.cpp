// The three renderings of a result table.
#include "resultTable.h"

#include <gtest/gtest.h>

#include <cmath>
#include <sstream>

namespace {

using namespace flashbch;

ResultTable sample() {
  ResultTable table({"name", "count", "rate"});
  table.addRow({Cell::text("a,b"), Cell::integer(12), Cell::real(0.125)});
  table.addRow({Cell::text("say \"hi\""), Cell::integer(-3), Cell::fromLog10(-412.5)});
  table.addRow({Cell::text("c"), Cell::integer(0), Cell::real(NAN)});
  return table;
}

TEST(ResultTable, TextCsvAndJsonRenderings) {
  ResultTable table = sample();
  std::ostringstream text, csv;
  table.writeText(text);
  EXPECT_EQ(text.str(),
            "name      count      rate\n"
            "a,b          12     0.125\n"
            "say \"hi\"     -3  3.2e-413\n"
            "c             0         -\n");
  // JSON keeps the column order and the types.
  EXPECT_EQ(table.toJson().dump(),
            "[{\"name\":\"a,b\",\"count\":12,\"rate\":0.125},"
            "{\"name\":\"say \\\"hi\\\"\",\"count\":-3,\"rate\":\"3.16228e-413\"},"
            "{\"name\":\"c\",\"count\":0,\"rate\":null}]");
  // CSV quotes and keeps full precision.
  table.addRow({Cell::text("d"), Cell::integer(1), Cell::real(0.1 + 0.2)});
  table.writeCsv(csv);
  EXPECT_EQ(csv.str(),
            "name,count,rate\n"
            "\"a,b\",12,0.125\n"
            "\"say \"\"hi\"\"\",-3,3.16228e-413\n"
            "c,0,\n"
            "d,1,0.30000000000000004\n");
}

TEST(ResultTable, LogCellsNearDoubleRangeBecomeReals) {
  EXPECT_EQ(Cell::fromLog10(-3.0).kind(), Cell::Kind::Real);
  EXPECT_EQ(Cell::fromLog10(-3.0).exact(), "0.001");
  EXPECT_EQ(Cell::fromLog10(-INFINITY).exact(), "0");
  // 10^-299.99999 rounds to a mantissa of 10 at 2 digits: carried into the exponent.
  EXPECT_EQ(Cell::fromLog10(-301.0000001).display(), "1.0e-301");
}

}  // namespace
