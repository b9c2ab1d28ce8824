#include "support/concurrency.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>

namespace orvtest {
namespace {

TEST(Concurrency, EveryThreadRunsEveryRoundAtOnceWithTheOthers) {
  constexpr int threads = 4, rounds = 5;
  std::array<std::atomic<int>, threads> calls{};
  // Each waits for all others inside the body: it would hang if they ran one after the other.
  std::barrier inside(threads);
  concurrently(threads, rounds, [&](int thread) {
    ++calls[static_cast<size_t>(thread)];
    inside.arrive_and_wait();
  });
  for (const auto& count : calls) EXPECT_EQ(rounds, count);
}

}  // namespace
}  // namespace orvtest
