#include "support/checked_call.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include <set>
#include <thread>

#include "support/guarded.h"

extern "C" {
int orvKeepsAll();
int orvStackAtCall();
int orvChangesEbx();
int orvChangesEsi();
int orvChangesEdi();
int orvChangesEbp();
int orvMovesStack();
int orvSetsDirectionFlag();
int orvLeavesX87Value();
int orvLeavesMmxState();
int orvChangesX87Rounding();
int orvChangesMxcsrRounding();
int orvFlushesDenormals();
int orvRaisesMxcsrStatus();
int orvDirtiesYmm0();
int orvDirtiesYmm7();
int orvCleansUp();
int orvTraps();
}

namespace orvtest {
namespace {

/// Looks at the upper halves whatever the build.
class CheckedCall : public testing::Test {
protected:
  CheckedCall() { cleanUpperHalvesExpected = true; }
  ~CheckedCall() override { cleanUpperHalvesExpected = ORV_CLEAN_UPPER_HALVES; }
};

TEST_F(CheckedCall, PassesFunctionsThatKeepTheConvention) {
  for (int call = 0; call < 8; ++call) {
    EXPECT_EQ(7, checkedCall(orvKeepsAll));
    EXPECT_EQ(0, checkedCall(orvCleansUp));
    EXPECT_EQ(0, checkedCall(orvRaisesMxcsrStatus));
  }
}

TEST_F(CheckedCall, EntersAtEachStackResidue) {
  std::set<int> residues;
  for (int call = 0; call < 4; ++call) residues.insert(checkedCall(orvStackAtCall));
  EXPECT_EQ((std::set<int>{0, 4, 8, 12}), residues);
}

TEST_F(CheckedCall, CatchesEachBreach) {
  // At every stack residue, and with the next call unharmed.
  for (int call = 0; call < 5; ++call) {
    EXPECT_NONFATAL_FAILURE(checkedCall(orvChangesEbx), "changed ebx");
    EXPECT_NONFATAL_FAILURE(checkedCall(orvChangesEsi), "changed esi");
    EXPECT_NONFATAL_FAILURE(checkedCall(orvChangesEdi), "changed edi");
    EXPECT_NONFATAL_FAILURE(checkedCall(orvChangesEbp), "changed ebp");
    EXPECT_NONFATAL_FAILURE(checkedCall(orvMovesStack), "moved the stack pointer");
    EXPECT_NONFATAL_FAILURE(checkedCall(orvSetsDirectionFlag), "direction flag");
    EXPECT_NONFATAL_FAILURE(checkedCall(orvLeavesX87Value), "left the x87 stack in use");
    EXPECT_NONFATAL_FAILURE(checkedCall(orvLeavesMmxState), "left the x87 stack in use");
    EXPECT_NONFATAL_FAILURE(checkedCall(orvChangesX87Rounding), "changed the x87 control word");
    EXPECT_NONFATAL_FAILURE(checkedCall(orvChangesMxcsrRounding), "control bits of MXCSR");
    EXPECT_NONFATAL_FAILURE(checkedCall(orvFlushesDenormals), "control bits of MXCSR");
    EXPECT_NONFATAL_FAILURE(checkedCall(orvDirtiesYmm0), "upper halves");
    EXPECT_NONFATAL_FAILURE(checkedCall(orvDirtiesYmm7), "upper halves");
    EXPECT_EQ(7, checkedCall(orvKeepsAll));
  }
}

int readByte(const uint8_t* address) { return *const_cast<const volatile uint8_t*>(address); }
int writeByte(uint8_t* address) {
  *const_cast<volatile uint8_t*>(address) = 1;
  return 0;
}
int trapped(int (*function)(const uint8_t*), const uint8_t* address) { return checkedCall(function, address); }
int trapped(int (*function)(uint8_t*), uint8_t* address) { return checkedCall(function, address); }

TEST_F(CheckedCall, ReportsFaultsAndGoesOn) {
  const GuardedMemory memory("block", 100);
  EXPECT_NONFATAL_FAILURE(EXPECT_EQ(faulted, trapped(readByte, memory.data() + 100)), "1 bytes past the last of block");
  EXPECT_NONFATAL_FAILURE(EXPECT_EQ(faulted, trapped(writeByte, memory.pages() - 1)), "before the start of block");
  memory.protectReadOnly();
  EXPECT_NONFATAL_FAILURE(EXPECT_EQ(faulted, trapped(writeByte, memory.data() + 9)), "at byte 9 of block");
  EXPECT_NONFATAL_FAILURE(EXPECT_EQ(faulted, checkedCall(orvTraps)), "signal");
  EXPECT_EQ(7, checkedCall(orvKeepsAll));
}

struct Seen {
  int8_t a;
  uint16_t b;
  int c;
  const void* d;
  float e;
  double f;
  OrvSize g;
  OrvPointF h;
  OrvRect i;
  int64_t j;
  uint8_t k;
} seen;

int seeAll(int8_t a, uint16_t b, int c, const void* d, float e, double f, OrvSize g, OrvPointF h, OrvRect i, int64_t j,
           uint8_t k) {
  seen = {a, b, c, d, e, f, g, h, i, j, k};
  return -8;
}

TEST_F(CheckedCall, PassesArgumentsOfAnyType) {
  for (int call = 0; call < 4; ++call) {
    seen = {};
    EXPECT_EQ(-8, checkedCall(seeAll, int8_t{-3}, uint16_t{65535}, -100000, &seen, 1.25f, -2.5e100, OrvSize{4, 5},
                              OrvPointF{6.5f, 7.5f}, OrvRect{8, 9, 10, 11}, int64_t{-12345678901}, uint8_t{200}));
    EXPECT_EQ(-3, seen.a);
    EXPECT_EQ(65535, seen.b);
    EXPECT_EQ(-100000, seen.c);
    EXPECT_EQ(&seen, seen.d);
    EXPECT_EQ(1.25f, seen.e);
    EXPECT_EQ(-2.5e100, seen.f);
    EXPECT_EQ(5, seen.g.height);
    EXPECT_EQ(6.5f, seen.h.x);
    EXPECT_EQ(11, seen.i.height);
    EXPECT_EQ(-12345678901, seen.j);
    EXPECT_EQ(200, seen.k);
  }
}

TEST_F(CheckedCall, ReturnsPointers) { EXPECT_EQ(orvcvGetLibVersion(), checkedCall(orvcvGetLibVersion)); }

TEST_F(CheckedCall, CountsCalls) {
  const auto* function = reinterpret_cast<const void*>(orvKeepsAll);
  const uint64_t before = checkedCallsOf(function);
  checkedCall(orvKeepsAll);
  std::jthread([] { checkedCall(orvKeepsAll); });
  EXPECT_EQ(before + 2, checkedCallsOf(function));
}

}  // namespace
}  // namespace orvtest
