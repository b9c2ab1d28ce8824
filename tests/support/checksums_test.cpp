#include "support/checksums.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <sstream>

namespace orvtest {
namespace {

Checksum of(int value) {
  Checksum checksum;
  checksum.add(value);
  return checksum;
}

class Checksums : public testing::Test {
protected:
  ~Checksums() override { std::remove(file.c_str()); }

  const std::string file = testing::TempDir() + "checksums_test_" + std::to_string(getpid()) + ".txt";
};

TEST_F(Checksums, TellOfDifferentAndOfMissingRecords) {
  expectRecorded("b", of(1), file, true);
  expectRecorded("a", of(2), file, true);
  expectRecorded("a", of(2), file, false);
  expectRecorded("b", of(1), file, false);
  EXPECT_NONFATAL_FAILURE(expectRecorded("b", of(2), file, false), "the recorded checksum of b differs");
  EXPECT_NONFATAL_FAILURE(expectRecorded("c", of(2), file, false), "no checksum recorded for c");
}

TEST_F(Checksums, AreSortedAndReplacedByName) {
  for (const char* name : {"b", "c", "a", "b"}) expectRecorded(name, of(1), file, true);
  std::ifstream records(file);
  std::ostringstream names;
  for (std::string name, hash; records >> name >> hash;) names << name;
  EXPECT_EQ("abc", names.str());
}

TEST(Checksum, IsFnv1a) {
  Checksum checksum;
  checksum.addBytes("foobar", 6);
  EXPECT_EQ(0x85944171f73967e8u, checksum.value());
}

TEST(Checksum, CountsThePixelsOfAnImageAlone) {
  TestImage<uint16_t> exact("exact", {.size = {3, 2}});
  TestImage<uint16_t> padded("padded", {.size = {3, 2}, .stepPadding = 10, .margins = {1, 1, 1, 1}});
  padded.fillWith(99);
  exact.forRegion([&](int x, int y, int channel) {
    exact.setPixel(x, y, channel, static_cast<uint16_t>(10 * y + x));
    padded.setPixel(x, y, channel, static_cast<uint16_t>(10 * y + x));
  });
  Checksum first, second, third;
  first.add(exact);
  second.add(padded);
  EXPECT_EQ(first.value(), second.value());
  padded.setPixel(2, 1, 5);
  third.add(padded);
  EXPECT_NE(first.value(), third.value());
}

}  // namespace
}  // namespace orvtest
