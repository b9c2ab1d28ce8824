// Every export has its three tests (support/drivers.h). The test framework's own list of tests is what is looked at, so
// a test that is missing or disabled is missing here.
#include <gtest/gtest.h>

#include <fstream>
#include <set>
#include <string>

namespace orvtest {
namespace {

std::set<std::string> allTests() {
  std::set<std::string> names;
  const testing::UnitTest& all = *testing::UnitTest::GetInstance();
  for (int suite = 0; suite < all.total_test_suite_count(); ++suite) {
    const testing::TestSuite& tests = *all.GetTestSuite(suite);
    for (int test = 0; test < tests.total_test_count(); ++test)
      names.insert(std::string(tests.name()) + "." + tests.GetTestInfo(test)->name());
  }
  return names;
}

constexpr const char* exports[] = {
#define ORV_EXPORT(name) #name,
#include "frame/exports.inc"
#undef ORV_EXPORT
};

TEST(Coverage, EveryExportHasItsTests) {
  const std::set<std::string> tests = allTests();
  for (const std::string name : exports)
    for (const char* kind : {".Model", ".CheckOrder", ".Checksum"})
      EXPECT_TRUE(tests.contains(name + kind)) << name << " has no test " << kind;
}

TEST(Coverage, EveryExportIsListedOnce) {
  std::set<std::string> seen;
  for (const std::string name : exports) EXPECT_TRUE(seen.insert(name).second) << name << " is listed twice";
}

// A record may belong to an export or to a test of several, "name/what"; one that nobody compares is stale.
TEST(Coverage, EveryRecordedChecksumBelongsToAnExport) {
  const std::set<std::string> names(std::begin(exports), std::end(exports));
  std::ifstream records(ORV_TESTS_DIR "/checksums.txt");
  for (std::string name, hash; records >> name >> hash;)
    EXPECT_TRUE(names.contains(name.substr(0, name.find('/')))) << "stale record of " << name;
}

}  // namespace
}  // namespace orvtest
