#include "support/drivers.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

namespace orvtest {
namespace {

TEST(Drivers, TellOfATestThatNeverCallsItsExport) {
  EXPECT_NONFATAL_FAILURE(ExpectCalled{&orvcvGetLibVersion}, "never called the export");
  // A call past the checks doesn't count.
  EXPECT_NONFATAL_FAILURE(
      {
        const ExpectCalled check(&orvcvGetLibVersion);
        orvcvGetLibVersion();
      },
      "never called the export");
  const ExpectCalled check(&orvcvGetLibVersion);
  checkedCall(orvcvGetLibVersion);
}

}  // namespace
}  // namespace orvtest
