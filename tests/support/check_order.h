// The order of argument checks as data. A family states a struct that holds all arguments of a call, a valid instance
// of it, and the list of its faults in the order in which the function tests for them:
//
//   CheckOrder<Call> order(valid, [&](const Call& c) { return checkedCall(orviAdd_8u32f_C1IR, c.src, ...); });
//   order.watch(src, acc);
//   order.faults = {nullFault("src", &Call::src), nullFault("srcDst", &Call::srcDst), sizeFault("roi", &Call::roi),
//                   stepFault("srcStep", &Call::srcStep, width), alignFault<float>("srcDstStep", &Call::srcDstStep)};
//   order.verify();
//
// The runner makes every single fault in all its variants and every pair of faults that concern different arguments,
// and expects the status of the one that stands first. The watched memory is read-only meanwhile, so that a write of
// even the same value is caught. An argument may occur at several places of the list (its step is tested for length
// early, for alignment late): faults of one key are not paired.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include "orvcv.h"
#include "support/guarded.h"

namespace orvtest {

template <class Call>
struct Fault {
  std::string name;
  std::vector<std::string> keys;  ///< the arguments that it changes
  OrvStatus status;
  /// Ways to make it. The first serves in pairs and must hold whatever another fault changes.
  std::vector<std::function<void(Call&)>> variants;
  bool mayWrite = false;  ///< for the few functions that write a result although they fail
};

template <class Call>
class CheckOrder {
public:
  using Run = std::function<OrvStatus(const Call&)>;

  CheckOrder(Call valid, Run run) : valid_(std::move(valid)), run_(std::move(run)) {}

  /// Memory that a failing call must not write: images, blocks, guarded memory.
  template <class... Memory>
  void watch(const Memory&... memory) {
    (watched_.push_back(&regionOf(memory)), ...);
  }

  std::vector<Fault<Call>> faults;

  void verify(OrvStatus statusOfValidCall = orvStsOk) const {
    EXPECT_EQ(statusOfValidCall, run_(valid_)) << "the call without a fault";
    for (size_t i = 0; i < faults.size(); ++i) {
      for (size_t variant = 0; variant < faults[i].variants.size(); ++variant) {
        Call call = valid_;
        faults[i].variants[variant](call);
        expectStatus(call, faults[i], faults[i].name + ", variant " + std::to_string(variant));
      }
      for (size_t j = i + 1; j < faults.size(); ++j) {
        if (shareKey(faults[i], faults[j]))
          continue;
        Call call = valid_;
        faults[i].variants[0](call);
        faults[j].variants[0](call);
        expectStatus(call, faults[i], faults[i].name + " and " + faults[j].name);
      }
    }
    EXPECT_EQ(statusOfValidCall, run_(valid_)) << "the call without a fault, after all others";
  }

private:
  static const GuardedMemory& regionOf(const GuardedMemory& memory) { return memory; }
  template <class Holder>
  static const GuardedMemory& regionOf(const Holder& holder) {
    return holder.memory();
  }

  static bool shareKey(const Fault<Call>& a, const Fault<Call>& b) {
    return std::any_of(a.keys.begin(), a.keys.end(), [&](const std::string& key) {
      return std::find(b.keys.begin(), b.keys.end(), key) != b.keys.end();
    });
  }

  void expectStatus(const Call& call, const Fault<Call>& first, const std::string& what) const {
    SCOPED_TRACE(what);
    if (!first.mayWrite)
      for (const GuardedMemory* memory : watched_) memory->protectReadOnly();
    EXPECT_EQ(first.status, run_(call)) << "got the status on the right, want that on the left";
    for (const GuardedMemory* memory : watched_) memory->protectWritable();
  }

  Call valid_;
  Run run_;
  std::vector<const GuardedMemory*> watched_;
};

/// The argument set to each of some values.
template <class Call, class Field>
Fault<Call> valueFault(const std::string& key, Field Call::*field,
                       std::initializer_list<std::type_identity_t<Field>> values, OrvStatus status) {
  Fault<Call> fault{key + " refused", {key}, status, {}};
  for (const Field& value : values) fault.variants.push_back([field, value](Call& call) { call.*field = value; });
  return fault;
}

template <class Call, class Pointer>
Fault<Call> nullFault(const std::string& key, Pointer Call::*pointer) {
  return {key + " null", {key}, orvStsNullPointer, {[pointer](Call& call) { call.*pointer = nullptr; }}};
}

/// Width or height below 1, of an OrvSize or an OrvSizeL.
template <class Call, class Size>
Fault<Call> sizeFault(const std::string& key, Size Call::*size, OrvStatus status = orvStsBadSize) {
  Fault<Call> fault{key + " below 1", {key}, status, {}};
  for (int bad : {0, -1, INT32_MIN}) {
    fault.variants.push_back([=](Call& call) { (call.*size).width = bad; });
    fault.variants.push_back([=](Call& call) { (call.*size).height = bad; });
    fault.variants.push_back([=](Call& call) { call.*size = {bad, bad}; });
  }
  return fault;
}

/// A step below the row length in bytes, as the valid call has it: far below, by one byte, zero, the lowest.
template <class Call>
Fault<Call> stepFault(const std::string& key, int Call::*step, int rowBytes, OrvStatus status = orvStsBadStep) {
  Fault<Call> fault = valueFault(key, step, {-65536, rowBytes - 1, 0, -1, INT32_MIN}, status);
  fault.name = key + " short";
  return fault;
}

/// A step that is long enough but no whole number of samples.
template <class Sample, class Call>
Fault<Call> alignFault(const std::string& key, int Call::*step) {
  Fault<Call> fault{key + " not a multiple of the sample", {key}, orvStsStepNotAligned, {}};
  for (int excess = 1; excess < static_cast<int>(sizeof(Sample)); ++excess)
    fault.variants.push_back([=](Call& call) { call.*step += excess; });
  return fault;
}

/// A width near the top of the range, whose row no step can hold. Stands where the first step is tested for length.
template <class Call, class Size>
Fault<Call> rowTooLongFault(const std::string& key, Size Call::*size, OrvStatus status = orvStsBadStep) {
  return {
      key + " wider than any step",
      {key},
      status,
      {[size](Call& call) { (call.*size).width = 0x7ffffff0; }, [size](Call& call) { (call.*size).width = 0x7fffffff; },
       [size](Call& call) { (call.*size).width = 0x40000001; }}};
}

/// Source and destination the same address.
template <class Call, class Source, class Destination>
Fault<Call> inPlaceFault(const std::string& sourceKey, Source Call::*source, const std::string& destinationKey,
                         Destination Call::*destination) {
  return {sourceKey + " is " + destinationKey, {sourceKey, destinationKey}, orvStsInPlaceNotAllowed, {[=](Call& call) {
            call.*source = call.*destination;
          }}};
}

}  // namespace orvtest
