// The generator of Sobel kernels: the passes in its own arithmetic, and the polynomial that they make.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "filters/fixed_kernel_model.h"
#include "support/cases.h"
#include "support/check_order.h"
#include "support/checksums.h"
#include "support/drivers.h"
#include "support/samples.h"

namespace orvtest {
namespace {

template <class Sample>
using Function = OrvStatus(Sample*, int, int, int);

template <class Sample>
std::vector<Sample> generated(Function<Sample>* function, int kernelSize, int dx, int sign) {
  const GuardedBlock kernel("kernel", kernelSize * static_cast<int>(sizeof(Sample)), 8);
  EXPECT_EQ(orvStsOk, checkedCall(function, kernel.template as<Sample>(), kernelSize, dx, sign));
  std::vector<Sample> entries;
  for (int i = 0; i < kernelSize; ++i) entries.push_back(load(kernel.template as<Sample>() + i));
  return entries;
}

template <class Sample>
std::vector<BitsOf<Sample>> bitsOf(const std::vector<Sample>& values) {
  std::vector<BitsOf<Sample>> bits;
  for (const Sample& value : values) bits.push_back(std::bit_cast<BitsOf<Sample>>(value));
  return bits;
}

template <class Sample>
void expectModel(Function<Sample>* function) {
  for (int size = 1; size <= 31; size += 2)
    for (int dx = 0; dx < size; ++dx)
      for (const int sign : {1, 0, -1, INT32_MAX, INT32_MIN}) {
        SCOPED_TRACE(testing::Message() << "size " << size << ", dx " << dx << ", sign " << sign);
        const auto got = generated(function, size, dx, sign);
        EXPECT_EQ(bitsOf(model::sobelPasses<Sample>(size, dx, sign)), bitsOf(got));
        const std::vector<double> polynomial = model::sobelPolynomial(size, dx, sign);
        for (size_t i = 0; i < got.size() && (sizeof(Sample) == 2 || size <= 25); ++i) {
          const auto coefficient = static_cast<int64_t>(polynomial[i]);
          if constexpr (sizeof(Sample) == 2)
            EXPECT_EQ(model::low16(coefficient), got[i]) << "entry " << i;
          else
            EXPECT_EQ(static_cast<Sample>(coefficient), got[i]) << "entry " << i;
        }
      }
}

template <class Sample>
void expectChecks(Function<Sample>* function) {
  struct Call {
    Sample* kernel;
    int kernelSize, dx, sign;
  };
  const GuardedBlock kernel("kernel", 5 * static_cast<int>(sizeof(Sample)), 8);
  CheckOrder<Call> order({kernel.template as<Sample>(), 5, 1, 1},
                         [&](const Call& c) { return checkedCall(function, c.kernel, c.kernelSize, c.dx, c.sign); });
  order.watch(kernel);
  order.faults = {
      nullFault("kernel", &Call::kernel),
      valueFault("kernelSize", &Call::kernelSize, {0, 2, 4, -1, -3, 1, INT32_MIN, INT32_MAX - 1}, orvStsBadSize),
      valueFault("dx", &Call::dx, {-1, 5, 6, INT32_MIN, INT32_MAX}, orvStsBadSize)};
  order.verify();
}

template <class Sample>
void expectChecksum(Function<Sample>* function, const std::string& name) {
  Checksum checksum;
  for (int size = 1; size <= 41; size += 2)
    for (int dx = 0; dx < size; ++dx)
      for (const int sign : {1, -1})
        for (const Sample entry : generated(function, size, dx, sign)) checksum.add(entry);
  expectRecorded(name, checksum);
}

#define GENERATOR(name)                              \
  ORV_MODEL_TEST(name) { expectModel(name); }        \
  ORV_CHECK_ORDER_TEST(name) { expectChecks(name); } \
  ORV_CHECKSUM_TEST(name) { expectChecksum(name, #name); }

GENERATOR(orviGenSobelKernel_16s)
GENERATOR(orviGenSobelKernel_32f)

TEST(SobelKernels, ByValue) {
  using Kernel = std::vector<int16_t>;
  const auto kernel = [](int size, int dx, int sign) { return generated(orviGenSobelKernel_16s, size, dx, sign); };
  EXPECT_EQ((Kernel{1}), kernel(1, 0, 1));
  EXPECT_EQ((Kernel{-1}), kernel(1, 0, -1));
  EXPECT_EQ((Kernel{1, 2, 1}), kernel(3, 0, 0));
  EXPECT_EQ((Kernel{-1, 0, 1}), kernel(3, 1, 1));
  EXPECT_EQ((Kernel{1, 0, -1}), kernel(3, 1, -1));
  EXPECT_EQ((Kernel{1, -2, 1}), kernel(3, 2, 1));
  EXPECT_EQ((Kernel{1, 4, 6, 4, 1}), kernel(5, 0, 1));
  EXPECT_EQ((Kernel{-1, -2, 0, 2, 1}), kernel(5, 1, 1));
  EXPECT_EQ((Kernel{1, 0, -2, 0, 1}), kernel(5, 2, 1));
  EXPECT_EQ((Kernel{-1, 2, 0, -2, 1}), kernel(5, 3, 1));
  EXPECT_EQ((Kernel{1, -4, 6, -4, 1}), kernel(5, 4, 1));
  EXPECT_EQ(static_cast<int16_t>(48620 - 65536), kernel(19, 0, 1)[9]) << "wraps around";
}

TEST(SobelKernels, NegatedZeroOfFloats) {
  const auto negated = generated(orviGenSobelKernel_32f, 3, 1, -1);
  EXPECT_EQ((std::vector<float>{1, 0, -1}), negated);
  EXPECT_TRUE(std::signbit(negated[1]));
}

}  // namespace
}  // namespace orvtest
