// The query of the largest cache.
#include "frame/cache.h"

#include <gtest/gtest.h>

#include "support/checked_call.h"

namespace orvtest {
namespace {

TEST(Cache, TheQueryFillsACountOfBytes) {
  int32_t bytes = -1;
  EXPECT_EQ(0, checkedCall(orvGetMaxCacheSizeB, &bytes));
  EXPECT_GE(bytes, 0);
}

TEST(Cache, TheLibraryTakesWhatTheQueryWrote) {
  int32_t bytes = -1;
  orvGetMaxCacheSizeB(&bytes);
  for (int round = 0; round < 3; ++round) EXPECT_EQ(bytes, checkedCall(orv::owncvGetCacheSize));
}

}  // namespace
}  // namespace orvtest
