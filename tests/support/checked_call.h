// Calls a C function and verifies that it kept the calling convention:
//
//   EXPECT_EQ(orvStsOk, checkedCall(orviAdd_8u32f_C1IR, src.data(), src.step(), acc.data(), acc.step(), roi));
//
// The test fails when the function changes a callee-saved register, the stack pointer, the direction flag, the x87
// control word, the control bits of MXCSR, leaves a value on the x87 stack or something in the upper halves of the
// 256-bit registers, or touches memory that it may not: then the failure names the region and the call returns
// `faulted`. The stack enters at each residue modulo 16 in turn.
#pragma once

#include <array>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "orvcv.h"

namespace orvtest {

/// What checkedCall returns when the function ended in a memory fault or another trap.
constexpr OrvStatus faulted = INT32_MIN;

namespace detail {

uint32_t enterChecked(const void* function, const uint32_t* words, uint32_t count);

/// The argument word or words as the convention passes them.
template <class Parameter>
struct ArgumentWords {
  static_assert(std::is_trivially_copyable_v<Parameter>);
  static constexpr size_t count = (sizeof(Parameter) + 3) / 4;
  static void put(uint32_t* words, Parameter value) {
    if constexpr (std::is_integral_v<Parameter> && sizeof(Parameter) < 4)
      *words = static_cast<uint32_t>(static_cast<int32_t>(value));
    else
      std::memcpy(words, &value, sizeof value);
  }
};

}  // namespace detail

template <class Result, class... Parameters>
Result checkedCall(Result (*function)(Parameters...), std::type_identity_t<Parameters>... arguments) {
  static_assert(std::is_pointer_v<Result> || (std::is_integral_v<Result> && sizeof(Result) == 4));
  constexpr size_t count = (size_t{0} + ... + detail::ArgumentWords<Parameters>::count);
  std::array<uint32_t, count + 1> words{};
  uint32_t* next = words.data();
  ((detail::ArgumentWords<Parameters>::put(next, arguments), next += detail::ArgumentWords<Parameters>::count), ...);
  static_cast<void>(next);
  const uint32_t result = detail::enterChecked(reinterpret_cast<const void*>(function), words.data(), count);
  if constexpr (std::is_pointer_v<Result>)
    return reinterpret_cast<Result>(result);
  else
    return static_cast<Result>(result);
}

/// GCC cleans the upper halves from -O2 on only, so builds with less optimisation don't look at them.
extern bool cleanUpperHalvesExpected;

/// How often checkedCall has entered the function.
uint64_t checkedCallsOf(const void* function);

}  // namespace orvtest
