#include "support/check_order.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include "support/checked_call.h"

namespace orvtest {
namespace {

struct Call {
  const uint8_t* src;
  int srcStep;
  int16_t* dst;
  int dstStep;
  OrvSize roi;
  int mode;
};

// A family of the awkward kind: lengths before sizes, alignment late, the mode between them.
OrvStatus wellOrdered(const uint8_t* src, int srcStep, int16_t* dst, int dstStep, OrvSize roi, int mode) {
  if (!src || !dst)
    return orvStsNullPointer;
  if (srcStep < roi.width || dstStep < int64_t{roi.width} * 2)
    return orvStsBadStep;
  if (roi.width < 1 || roi.height < 1)
    return orvStsBadSize;
  if (mode != 1)
    return orvStsBadMode;
  if (dstStep & 1)
    return orvStsStepNotAligned;
  if (static_cast<const void*>(src) == dst)
    return orvStsInPlaceNotAllowed;
  *reinterpret_cast<uint8_t*>(dst) = 1;
  return orvStsOk;
}

OrvStatus sizesFirst(const uint8_t* src, int srcStep, int16_t* dst, int dstStep, OrvSize roi, int mode) {
  if (src && dst && (roi.width < 1 || roi.height < 1))
    return orvStsBadSize;
  return wellOrdered(src, srcStep, dst, dstStep, roi, mode);
}

OrvStatus forgetsAlignment(const uint8_t* src, int srcStep, int16_t* dst, int dstStep, OrvSize roi, int mode) {
  return wellOrdered(src, srcStep, dst, dstStep & ~1, roi, mode);
}

OrvStatus acceptsShortByOne(const uint8_t* src, int srcStep, int16_t* dst, int dstStep, OrvSize roi, int mode) {
  return wellOrdered(src, srcStep + 1, dst, dstStep, roi, mode);
}

OrvStatus writesWhenItRefusesTheMode(const uint8_t* src, int srcStep, int16_t* dst, int dstStep, OrvSize roi,
                                     int mode) {
  const OrvStatus status = wellOrdered(src, srcStep, dst, dstStep, roi, mode);
  auto* byte = reinterpret_cast<volatile uint8_t*>(dst);
  if (status == orvStsBadMode)
    *byte = *byte;
  return status;
}

using Function = OrvStatus(const uint8_t*, int, int16_t*, int, OrvSize, int);

void verify(Function* function, bool modeMayWrite = false) {
  const GuardedBlock src("src", 8 * 3, 0), dst("dst", 16 * 3, 0);
  const Call valid{src.data(), 8, dst.as<int16_t>(), 16, {8, 3}, 1};
  CheckOrder<Call> order(
      valid, [&](const Call& c) { return checkedCall(function, c.src, c.srcStep, c.dst, c.dstStep, c.roi, c.mode); });
  order.watch(src, dst);
  order.faults = {nullFault("src", &Call::src),
                  nullFault("dst", &Call::dst),
                  stepFault("srcStep", &Call::srcStep, 8),
                  rowTooLongFault("roi", &Call::roi),
                  stepFault("dstStep", &Call::dstStep, 16),
                  sizeFault("roi", &Call::roi),
                  valueFault("mode", &Call::mode, {0, 2, -1}, orvStsBadMode),
                  alignFault<int16_t>("dstStep", &Call::dstStep)};
  order.faults[6].mayWrite = modeMayWrite;
  Fault<Call> inPlace{"dst is src", {"src", "dst"}, orvStsInPlaceNotAllowed, {[](Call& call) {
                        call.src = reinterpret_cast<const uint8_t*>(call.dst);
                      }}};
  order.faults.push_back(inPlace);
  order.verify();
}

/// The texts of all failures, one after the other.
std::string failuresOf(Function* function, bool modeMayWrite = false) {
  testing::TestPartResultArray failures;
  {
    const testing::ScopedFakeTestPartResultReporter reporter(&failures);
    verify(function, modeMayWrite);
  }
  std::string texts;
  for (int i = 0; i < failures.size(); ++i) texts += std::string(failures.GetTestPartResult(i).message()) + "\n";
  return texts;
}

TEST(CheckOrder, PassesAFunctionThatKeepsTheOrder) { verify(wellOrdered); }

TEST(CheckOrder, CatchesAChangedOrder) {
  const std::string texts = failuresOf(sizesFirst);
  EXPECT_NE(std::string::npos, texts.find("srcStep short and roi below 1")) << texts;
  EXPECT_EQ(std::string::npos, texts.find("src null")) << texts;
}

TEST(CheckOrder, CatchesAMissingCheck) {
  const std::string texts = failuresOf(forgetsAlignment);
  EXPECT_NE(std::string::npos, texts.find("dstStep not a multiple of the sample, variant 0")) << texts;
}

TEST(CheckOrder, CatchesAnErrorByOne) {
  const std::string texts = failuresOf(acceptsShortByOne);
  EXPECT_NE(std::string::npos, texts.find("srcStep short, variant 1")) << texts;
}

TEST(CheckOrder, CatchesAWriteOfTheSameValue) {
  EXPECT_NE(std::string::npos, failuresOf(writesWhenItRefusesTheMode).find("at byte 0 of dst"));
  EXPECT_EQ("", failuresOf(writesWhenItRefusesTheMode, true));
}

TEST(CheckOrder, CatchesAValidCallThatFails) {
  const auto never = +[](const uint8_t*, int, int16_t*, int, OrvSize, int) -> OrvStatus { return orvStsBadArg; };
  EXPECT_NE(std::string::npos, failuresOf(never).find("the call without a fault"));
}

}  // namespace
}  // namespace orvtest
