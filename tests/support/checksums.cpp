#include "support/checksums.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <iomanip>
#include <map>
#include <sstream>

namespace orvtest {
namespace {

using Records = std::map<std::string, std::string>;

Records readRecords(const std::string& file) {
  Records records;
  std::ifstream stream(file);
  for (std::string name, hash; stream >> name >> hash;) records[name] = hash;
  return records;
}

void writeRecord(const std::string& file, const std::string& name, const std::string& hash) {
  // Shards may record at the same time.
  const int lock = open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
  ASSERT_GE(lock, 0) << "can't open " << file;
  flock(lock, LOCK_EX);
  Records records = readRecords(file);
  records[name] = hash;
  {
    std::ofstream stream(file, std::ios::trunc);
    for (const auto& [recordedName, recordedHash] : records) stream << recordedName << ' ' << recordedHash << '\n';
  }
  close(lock);
}

}  // namespace

void Checksum::addBytes(const void* bytes, size_t count) {
  const auto* byte = static_cast<const uint8_t*>(bytes);
  for (size_t i = 0; i < count; ++i) hash_ = (hash_ ^ byte[i]) * 0x100000001b3u;
}

void expectRecorded(const std::string& name, const Checksum& checksum) {
  const char* record = std::getenv("ORV_RECORD_CHECKSUMS");
  expectRecorded(name, checksum, ORV_TESTS_DIR "/checksums.txt", record && std::string(record) == "1");
}

void expectRecorded(const std::string& name, const Checksum& checksum, const std::string& file, bool record) {
  std::ostringstream hash;
  hash << std::hex << std::setfill('0') << std::setw(16) << checksum.value();
  // After a failure the cases are incomplete and their checksum means nothing.
  if (testing::Test::HasFailure())
    return;
  if (record) {
    writeRecord(file, name, hash.str());
    return;
  }
  const Records records = readRecords(file);
  const auto found = records.find(name);
  if (found == records.end())
    ADD_FAILURE() << "no checksum recorded for " << name << " (" << hash.str() << ")";
  else
    EXPECT_EQ(found->second, hash.str()) << "the recorded checksum of " << name << " differs";
}

}  // namespace orvtest
