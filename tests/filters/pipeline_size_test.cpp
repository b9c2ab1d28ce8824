// The size queries of the pipelines.
#include <gtest/gtest.h>

#include "support/cases.h"
#include "support/check_order.h"
#include "support/checksums.h"
#include "support/drivers.h"

namespace orvtest {
namespace {

using Query = OrvStatus(OrvSize roi, int kernelSize, int32_t* bufferSize);
using Formula = int(int width, int kernelSize);

void expectFormula(Query* query, Formula* formula, const std::string& name) {
  forCases(name, 200, [&](Random& random) {
    const OrvSize roi{random.between(1, random.oneIn(2) ? 40 : 100000), random.between(1, 100000)};
    const int kernelSize = random.between(1, random.oneIn(2) ? 31 : 10000);
    int32_t size = -1;
    EXPECT_EQ(orvStsOk, checkedCall(query, roi, kernelSize, &size));
    EXPECT_EQ(formula(roi.width, kernelSize), size) << "width " << roi.width << ", " << kernelSize << " taps";
  });
}

struct Call {
  OrvSize roi;
  int kernelSize;
  int32_t* bufferSize;
};

void expectChecks(Query* query) {
  const GuardedBlock size("bufferSize", 4);
  CheckOrder<Call> order({{9, 3}, 5, size.as<int32_t>()},
                         [&](const Call& c) { return checkedCall(query, c.roi, c.kernelSize, c.bufferSize); });
  order.watch(size);
  order.faults = {nullFault("bufferSize", &Call::bufferSize), sizeFault("roi", &Call::roi),
                  valueFault("kernelSize", &Call::kernelSize, {0, -1, INT32_MIN}, orvStsBadSize)};
  order.verify();
}

void expectChecksum(Query* query, const std::string& name) {
  Checksum checksum;
  for (int width = 1; width <= 40; ++width)
    for (int kernelSize = 1; kernelSize <= 12; ++kernelSize) {
      int32_t size = -1;
      checksum.add(checkedCall(query, OrvSize{width, 7}, kernelSize, &size));
      checksum.add(size);
    }
  expectRecorded(name, checksum);
}

int roundUp(int value, int unit) { return (value + unit - 1) / unit * unit; }

#define SIZE(name, formula)                                                                             \
  ORV_MODEL_TEST(name) {                                                                                \
    expectFormula(                                                                                      \
        name, [](int W, int K) { return static_cast<void>(W), static_cast<void>(K), formula; }, #name); \
  }                                                                                                     \
  ORV_CHECK_ORDER_TEST(name) { expectChecks(name); }                                                    \
  ORV_CHECKSUM_TEST(name) { expectChecksum(name, #name); }
#define ROW_SIZE(type, formula) SIZE(orviFilterRowBorderPipelineGetBufferSize_##type##R, formula)
#define COLUMN_SIZE(type, formula) SIZE(orviFilterColumnPipelineGetBufferSize_##type##R, formula)

ROW_SIZE(32f_C1, 48 * K + 96)
ROW_SIZE(32f_C3, 144 * K + 96)
ROW_SIZE(16s_C1, 48 * K + 112)
ROW_SIZE(16s_C3, 40 * K + 96)
ROW_SIZE(8u16s_C1, 36 * K + 144)
ROW_SIZE(8u16s_C3, 60 * K + 144)
ROW_SIZE(16u_C1, 64 * K + 96)
ROW_SIZE(16u_C3, 128 * K + 96)
ROW_SIZE(Low_16s_C1, 24 * K + 96)
ROW_SIZE(Low_16s_C3, 208 * K + 96)
COLUMN_SIZE(32f_C1, 32 * K + 32)
COLUMN_SIZE(32f_C3, 32 * K + 32)
COLUMN_SIZE(16u_C1, 32 * K + 64 + 32 * ((W + 3) / 4))
COLUMN_SIZE(16u_C3, 32 * K + 64 + 32 * ((3 * W + 3) / 4))
COLUMN_SIZE(16s_C1, 12 * roundUp(W, 4) + 64)
COLUMN_SIZE(16s8u_C1, 12 * roundUp(W, 4) + 64)
COLUMN_SIZE(16s8s_C1, 12 * roundUp(W, 4) + 64)
COLUMN_SIZE(16s_C3, 36 * roundUp(W, 4) + 64)
COLUMN_SIZE(16s8u_C3, 36 * roundUp(W, 4) + 64)
COLUMN_SIZE(16s8s_C3, 36 * roundUp(W, 4) + 64)
COLUMN_SIZE(Low_16s_C1, 12 * roundUp(W, 8) + 64)
COLUMN_SIZE(Low_16s_C3, 36 * roundUp(W, 8) + 64)

TEST(PipelineSizes, ByValue) {
  int32_t size = 0;
  EXPECT_EQ(orvStsOk, checkedCall(orviFilterRowBorderPipelineGetBufferSize_16s_C1R, OrvSize{640, 480}, 5, &size));
  EXPECT_EQ(352, size);
  EXPECT_EQ(orvStsOk, checkedCall(orviFilterRowBorderPipelineGetBufferSize_Low_16s_C3R, OrvSize{1, 1}, 1, &size));
  EXPECT_EQ(304, size);
  EXPECT_EQ(orvStsOk, checkedCall(orviFilterColumnPipelineGetBufferSize_16u_C3R, OrvSize{3, 1}, 7, &size));
  EXPECT_EQ(384, size);
  EXPECT_EQ(orvStsOk, checkedCall(orviFilterColumnPipelineGetBufferSize_Low_16s_C1R, OrvSize{9, 1}, 5, &size));
  EXPECT_EQ(256, size);
}

}  // namespace
}  // namespace orvtest
