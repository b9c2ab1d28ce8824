// Runs a test body over numbered cases. A failure names the case, and ORV_CASE=<number> runs that case alone.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "support/random.h"

namespace orvtest {

/// Calls body(random) for case 0 to count - 1 and stops after the first case that fails.
template <class Body>
void forCases(const std::string& name, uint32_t count, Body body) {
  const char* only = std::getenv("ORV_CASE");
  const uint32_t first = only ? static_cast<uint32_t>(std::atoi(only)) : 0;
  const uint32_t end = only ? first + 1 : count;
  for (uint32_t number = first; number < end && !testing::Test::HasFailure(); ++number) {
    SCOPED_TRACE(testing::Message() << "case " << number << " of " << name << " (ORV_CASE=" << number << ")");
    Random random(name, number);
    body(random);
  }
}

}  // namespace orvtest
