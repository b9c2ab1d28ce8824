// Calls from several threads at once.
#pragma once

#include <barrier>
#include <thread>
#include <vector>

namespace orvtest {

/// Runs body(thread) in each of several threads, all released at the same moment; several rounds, because one may not
/// overlap. The body works on shared inputs and outputs of its own thread and compares them itself.
template <class Body>
void concurrently(int threads, int rounds, Body body) {
  std::barrier start(threads);
  std::vector<std::jthread> running;
  for (int thread = 0; thread < threads; ++thread)
    running.emplace_back([&, thread] {
      for (int round = 0; round < rounds; ++round) {
        start.arrive_and_wait();
        body(thread);
      }
    });
}

}  // namespace orvtest
