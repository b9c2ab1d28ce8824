// Scratch sizes of the fixed-kernel filters, by formula and by value.
#include <gtest/gtest.h>

#include <string>

#include "support/cases.h"
#include "support/check_order.h"
#include "support/checksums.h"
#include "support/drivers.h"

namespace orvtest {
namespace {

using Query = OrvStatus(OrvSize, OrvMaskCode, int*);

enum class Filter { laplacian, lowpass, sobelCross };

struct Member {
  Query* query;
  Filter filter;
  bool isFloat;
  std::string name;
};

int modelSize(const Member& member, int width, OrvMaskCode mask) {
  const int r = mask == orvMask3x3 ? 3 : 5;
  const int bandRows = mask == orvMask3x3 ? 21 : 25;
  const int groups = (width + 15) / 16;
  const int rowStage = member.isFloat ? 48 * r + 96 : 36 * r + 144;
  const int columnStage = member.isFloat ? 32 * r + 32 : 12 * ((width + 3) / 4 * 4) + 64;
  if (member.filter == Filter::laplacian)
    return (member.isFloat ? 128 : 64) * groups * bandRows + 24 * r + 336 + rowStage + columnStage;
  return (member.isFloat ? 64 : 32) * groups * bandRows + 12 * r + 248 + rowStage + columnStage;
}

int sizeOf(const Member& member, OrvSize roi, OrvMaskCode mask) {
  int size = -1;
  EXPECT_EQ(orvStsOk, checkedCall(member.query, roi, mask, &size));
  return size;
}

void expectModel(const Member& member) {
  for (const OrvMaskCode mask : {orvMask3x3, orvMask5x5}) {
    for (int width = 1; width <= 100; ++width) {
      EXPECT_EQ(modelSize(member, width, mask), sizeOf(member, {width, 1}, mask)) << width;
      EXPECT_EQ(modelSize(member, width, mask), sizeOf(member, {width, INT32_MAX}, mask)) << width;
    }
    for (const int width : {640, 1920, 65535, 65536, 1000001})
      EXPECT_EQ(modelSize(member, width, mask), sizeOf(member, {width, 480}, mask)) << width;
  }
}

void expectChecks(const Member& member) {
  struct Call {
    OrvSize roi;
    OrvMaskCode mask;
    int* bufferSize;
  };
  const GuardedBlock size("bufferSize", sizeof(int));
  CheckOrder<Call> order({{640, 480}, orvMask3x3, size.as<int>()},
                         [&](const Call& c) { return checkedCall(member.query, c.roi, c.mask, c.bufferSize); });
  order.watch(size);
  order.faults = {nullFault("bufferSize", &Call::bufferSize), sizeFault("roi", &Call::roi),
                  valueFault("mask", &Call::mask, {0, 3, 5, 34, 35, 53, 54, 56, -33, INT32_MAX}, orvStsBadMaskCode)};
  order.verify();
}

void expectChecksum(const Member& member) {
  Checksum checksum;
  for (const OrvMaskCode mask : {orvMask3x3, orvMask5x5})
    for (int width = 1; width < 3000; width += 7) checksum.add(sizeOf(member, {width, 5}, mask));
  expectRecorded(member.name, checksum);
}

#define SIZE(name, filter, isFloat)                                                    \
  ORV_MODEL_TEST(name) { expectModel({name, Filter::filter, isFloat, #name}); }        \
  ORV_CHECK_ORDER_TEST(name) { expectChecks({name, Filter::filter, isFloat, #name}); } \
  ORV_CHECKSUM_TEST(name) { expectChecksum({name, Filter::filter, isFloat, #name}); }

SIZE(orviFilterLaplacianGetBufferSize_8u16s_C1R, laplacian, false)
SIZE(orviFilterLaplacianGetBufferSize_32f_C1R, laplacian, true)
SIZE(orviFilterLowpassGetBufferSize_8u_C1R, lowpass, false)
SIZE(orviFilterLowpassGetBufferSize_32f_C1R, lowpass, true)
SIZE(orviFilterSobelCrossGetBufferSize_8u16s_C1R, sobelCross, false)
SIZE(orviFilterSobelCrossGetBufferSize_32f_C1R, sobelCross, true)

TEST(FixedKernelSizes, ByValue) {
  const auto size = [](Query* query, int width, OrvMaskCode mask) {
    int bytes = 0;
    EXPECT_EQ(orvStsOk, query({width, 10}, mask, &bytes));
    return bytes;
  };
  EXPECT_EQ(2116, size(orviFilterLaplacianGetBufferSize_8u16s_C1R, 1, orvMask3x3));
  EXPECT_EQ(62164, size(orviFilterLaplacianGetBufferSize_8u16s_C1R, 640, orvMask3x3));
  EXPECT_EQ(7384, size(orviFilterLaplacianGetBufferSize_32f_C1R, 17, orvMask5x5));
  EXPECT_EQ(1320, size(orviFilterLowpassGetBufferSize_8u_C1R, 1, orvMask3x3));
  EXPECT_EQ(1996, size(orviFilterLowpassGetBufferSize_32f_C1R, 16, orvMask3x3));
  EXPECT_EQ(1320, size(orviFilterSobelCrossGetBufferSize_8u16s_C1R, 4, orvMask3x3));
  EXPECT_EQ(12036, size(orviFilterSobelCrossGetBufferSize_32f_C1R, 100, orvMask5x5));
}

}  // namespace
}  // namespace orvtest
