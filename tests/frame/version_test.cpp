// The version record.
#include <gtest/gtest.h>

#include <cstring>

#include "support/checksums.h"
#include "support/drivers.h"

namespace orvtest {
namespace {

ORV_MODEL_TEST(orvcvGetLibVersion) {
  const OrvLibraryVersion* version = checkedCall(orvcvGetLibVersion);
  ASSERT_NE(nullptr, version);
  EXPECT_EQ(2018, version->major);
  EXPECT_EQ(0, version->minor);
  EXPECT_EQ(3, version->majorBuild);
  EXPECT_EQ(58644, version->build);
  EXPECT_EQ(14695u, load(reinterpret_cast<const uint32_t*>(version->targetCpu)));
  EXPECT_STREQ("orvCV AVX (g9)", version->name);
  EXPECT_STREQ("2018.0.3 (r58644)", version->version);
  EXPECT_STREQ("Apr  7 2018", version->buildDate);
}

// There is nothing to check: it cannot fail, and gives the same record before and after any other call.
ORV_CHECK_ORDER_TEST(orvcvGetLibVersion) {
  const OrvLibraryVersion* version = checkedCall(orvcvGetLibVersion);
  EXPECT_EQ(orvStsNullPointer, checkedCall(orviAbsDiffC_8u_C1R, nullptr, 0, nullptr, 0, OrvSize{1, 1}, 0));
  for (int call = 0; call < 8; ++call) EXPECT_EQ(version, checkedCall(orvcvGetLibVersion));
}

ORV_CHECKSUM_TEST(orvcvGetLibVersion) {
  const OrvLibraryVersion* version = checkedCall(orvcvGetLibVersion);
  Checksum checksum;
  checksum.addBytes(version, offsetof(OrvLibraryVersion, name));
  for (const char* text : {version->name, version->version, version->buildDate})
    checksum.addBytes(text, std::strlen(text));
  expectRecorded("orvcvGetLibVersion", checksum);
}

// Read-only data: a write to the record must fault, not succeed.
TEST(Version, RecordIsReadOnly) { EXPECT_DEATH(const_cast<OrvLibraryVersion*>(orvcvGetLibVersion())->major = 1, ""); }

}  // namespace
}  // namespace orvtest
