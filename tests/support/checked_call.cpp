#include "support/checked_call.h"

#include <gtest/gtest.h>
#include <setjmp.h>
#include <signal.h>
#include <string.h>

#include <map>
#include <mutex>

#include "support/guarded.h"

namespace {

// Written by checked_call.S.
struct CallRecord {
  uint32_t stackOfCaller, stackBefore, stackAfter;
  uint32_t ebx, esi, edi, ebp, flags;
  uint32_t mxcsrBefore, mxcsrAfter;
  uint32_t x87ControlBefore;  // in the lower half
  struct {
    uint32_t control, status, tags, others[4];
  } x87After;
  uint32_t upperHalves[4];
};
static_assert(sizeof(CallRecord) == 88);

}  // namespace

extern "C" {
extern __thread CallRecord orvCallRecord;
uint32_t orvEnterChecked(const void* function, const uint32_t* words, uint32_t count, uint32_t residue);
}

namespace orvtest {
namespace {

struct Trap {
  int signal;
  const void* address;
};

thread_local sigjmp_buf wayOut;
thread_local bool inCheckedCall = false;
thread_local volatile Trap trap;

void onTrap(int signal, siginfo_t* info, void*) {
  if (!inCheckedCall) {
    // A fault of the test itself: let it happen again with the default action.
    ::signal(signal, SIG_DFL);
    return;
  }
  trap.signal = signal;
  trap.address = info->si_addr;
  siglongjmp(wayOut, 1);
}

void installTrapHandler() {
  static std::once_flag once;
  std::call_once(once, [] {
    struct sigaction action {};
    action.sa_sigaction = onTrap;
    action.sa_flags = SA_SIGINFO | SA_NODEFER;
    for (int signal : {SIGSEGV, SIGBUS, SIGFPE, SIGILL}) sigaction(signal, &action, nullptr);
  });
}

struct CallCounts {
  std::mutex mutex;
  std::map<const void*, uint64_t> counts;
};

CallCounts& callCounts() {
  static CallCounts counts;
  return counts;
}

void expect(bool kept, const char* what, uint32_t residue) {
  if (!kept)
    ADD_FAILURE() << "the call " << what << " (entered with the stack pointer at " << residue << " modulo 16)";
}

void expectConventionKept(const CallRecord& record, uint32_t residue) {
  constexpr uint32_t directionFlag = 0x400;
  constexpr uint32_t mxcsrControl = 0xffc0;
  constexpr uint32_t x87Control = 0x1f3f;  // masks, precision, rounding
  expect(record.ebx == 0xb0b1b2b3, "changed ebx", residue);
  expect(record.esi == 0x51525354, "changed esi", residue);
  expect(record.edi == 0xd1d2d3d4, "changed edi", residue);
  expect(record.ebp == 0xe5e6e7e8, "changed ebp", residue);
  expect(record.stackAfter == record.stackBefore, "moved the stack pointer", residue);
  expect((record.flags & directionFlag) == 0, "left the direction flag set", residue);
  expect(((record.mxcsrBefore ^ record.mxcsrAfter) & mxcsrControl) == 0, "changed the control bits of MXCSR", residue);
  expect(((record.x87ControlBefore ^ record.x87After.control) & x87Control) == 0, "changed the x87 control word",
         residue);
  expect((record.x87After.tags & 0xffff) == 0xffff, "left the x87 stack in use", residue);
  const uint32_t* upper = record.upperHalves;
  if (cleanUpperHalvesExpected)
    expect((upper[0] | upper[1] | upper[2] | upper[3]) == 0, "left the upper halves of 256-bit registers dirty",
           residue);
}

}  // namespace

uint64_t checkedCallsOf(const void* function) {
  std::lock_guard lock(callCounts().mutex);
  return callCounts().counts[function];
}

bool cleanUpperHalvesExpected = ORV_CLEAN_UPPER_HALVES;

uint32_t detail::enterChecked(const void* function, const uint32_t* words, uint32_t count) {
  installTrapHandler();
  {
    std::lock_guard lock(callCounts().mutex);
    ++callCounts().counts[function];
  }
  static thread_local uint32_t residue = 0;
  residue = (residue + 4) % 16;
  // Volatile: it is read after the jump out of a trap.
  volatile uint32_t result = static_cast<uint32_t>(faulted);
  if (sigsetjmp(wayOut, 0) == 0) {
    inCheckedCall = true;
    result = orvEnterChecked(function, words, count, residue);
    inCheckedCall = false;
    expectConventionKept(orvCallRecord, residue);
  } else {
    inCheckedCall = false;
    const std::string where = GuardedMemory::describe(trap.address);
    ADD_FAILURE() << "the call ended in signal " << strsignal(trap.signal) << " at address " << trap.address
                  << (where.empty() ? "" : ", ") << where;
  }
  return result;
}

}  // namespace orvtest
