// The three tests that every export must have. Each of these macros heads a test body like TEST() does, so a family
// that stamps out its tests from a table has registered its exports by that alone:
//
//   ORV_MODEL_TEST(name)        the export against its reference model
//   ORV_CHECK_ORDER_TEST(name)  its argument checks, or what stands for them in a function without checks
//   ORV_CHECKSUM_TEST(name)     recorded checksums of its results
//
// A test fails when its body has not called the export through checkedCall. frame/coverage_test.cpp walks the list of
// exports and fails for a name that lacks one of the three.
#pragma once

#include <gtest/gtest.h>

#include "orvcv.h"
#include "support/checked_call.h"

namespace orvtest {

/// Fails the test unless the export is called between its construction and its end.
class ExpectCalled {
public:
  template <class Function>
  explicit ExpectCalled(Function* function)
      : function_(reinterpret_cast<const void*>(function)), before_(checkedCallsOf(function_)) {}
  ~ExpectCalled() {
    EXPECT_GT(checkedCallsOf(function_), before_) << "the test never called the export that it stands for";
  }

private:
  const void* function_;
  uint64_t before_;
};

}  // namespace orvtest

#define ORV_EXPORT_TEST(name, kind)            \
  static void name##_##kind();                 \
  TEST(name, kind) {                           \
    const orvtest::ExpectCalled check(::name); \
    name##_##kind();                           \
  }                                            \
  static void name##_##kind()

#define ORV_MODEL_TEST(name) ORV_EXPORT_TEST(name, Model)
#define ORV_CHECK_ORDER_TEST(name) ORV_EXPORT_TEST(name, CheckOrder)
#define ORV_CHECKSUM_TEST(name) ORV_EXPORT_TEST(name, Checksum)

// The three at once, of a family with the templates expectModel, expectChecks and expectChecksum. `arguments` stand in
// parentheses, the template arguments come last.
#define ORV_MEMBER_TESTS(name, arguments, ...)                        \
  ORV_MODEL_TEST(name) { expectModel<__VA_ARGS__> arguments; }        \
  ORV_CHECK_ORDER_TEST(name) { expectChecks<__VA_ARGS__> arguments; } \
  ORV_CHECKSUM_TEST(name) { expectChecksum<__VA_ARGS__> arguments; }
