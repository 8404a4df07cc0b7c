// The words with which a process ends that has no memory left, whoever notices it.
#include "host/memory.h"

#include <glib.h>

#include <csignal>
#include <cstdlib>
#include <memory>

#include "support/matchers.h"
#include "support/unit/exhausted.h"

namespace morvik::test {
namespace {

constexpr std::size_t kTooMuch = std::size_t{1} << 40;

class MemoryTest : public testing::Test {
 protected:
  ~MemoryTest() override { std::set_new_handler(nullptr); }
};

TEST_F(MemoryTest, theEndIsAFatalText) {
  EXPECT_EXIT(endForWantOfMemory("somewhere"), KilledBySignal(SIGTRAP),
              "^: script engine out of memory: somewhere\n");
}

#ifndef __SANITIZE_ADDRESS__  // it has an allocator and handlers of its own

constexpr const char* kReached =
    ": script engine out of memory: the application has reached the limit of its memory\n";

TEST_F(MemoryTest, aFailingNewSaysSo) {
  EXPECT_EXIT(
      {
        limitMemory();
        ::operator delete(::operator new(kTooMuch));
      },
      KilledBySignal(SIGTRAP), kReached);
  EXPECT_EXIT(exhaustAnd([] { ::operator delete(::operator new(100)); }), KilledBySignal(SIGTRAP),
              kReached);
}

// GLib can form no message about it.
TEST_F(MemoryTest, aMessageThatCannotBeFormedSaysSo) {
  EXPECT_EXIT(exhaustAnd([] { g_message("%s", "some text"); }), KilledBySignal(SIGTRAP), kReached);
  EXPECT_EXIT(exhaustAnd([] { g_error("%s", "some text"); }), KilledBySignal(SIGTRAP), kReached);
  EXPECT_EXIT(exhaustAnd([] { g_free(g_malloc(100)); }), KilledBySignal(SIGTRAP), kReached);
}

TEST_F(MemoryTest, whatGlibCannotHaveSaysSo) {
  EXPECT_EXIT(
      {
        limitMemory();
        g_free(g_malloc(kTooMuch));
      },
      KilledBySignal(SIGTRAP), "failed to allocate 1099511627776 bytes");
}

// As in libraries that do not look whether they got what they asked for.
TEST_F(MemoryTest, aCrashForWantOfMemorySaysSo) {
  for (const int signal : {SIGSEGV, SIGBUS, SIGABRT, SIGILL}) {
    SCOPED_TRACE(signal);
    EXPECT_EXIT(exhaustAnd([signal] { std::raise(signal); }), KilledBySignal(SIGTRAP), kReached);
  }
}

TEST_F(MemoryTest, anyOtherCrashIsWhatItWas) {
  for (const int signal : {SIGSEGV, SIGBUS, SIGABRT, SIGILL}) {
    SCOPED_TRACE(signal);
    const auto crash = [signal] {
      limitMemory();
      std::raise(signal);
    };
    EXPECT_EXIT(crash(), KilledBySignal(signal), "^$");
  }
  const auto abortInEarnest = [] {
    limitMemory();
    std::abort();
  };
  EXPECT_EXIT(abortInEarnest(), KilledBySignal(SIGABRT), "^$");
}

TEST_F(MemoryTest, whereNewMayFailItFails) {
  const auto ask = [] {
    limitMemory();
    const NewMayFail mayFail;
    const bool nothing = ::operator new(kTooMuch, std::nothrow) == nullptr;
    std::exit(nothing ? 7 : 8);
  };
  EXPECT_EXIT(ask(), testing::ExitedWithCode(7), "^$");
}

TEST_F(MemoryTest, onlyThereNewMayFail) {
  const auto ask = [] {
    limitMemory();
    { const NewMayFail mayFail; }
    ::operator delete(::operator new(kTooMuch, std::nothrow));
  };
  EXPECT_EXIT(ask(), KilledBySignal(SIGTRAP), kReached);
}

#endif

}  // namespace
}  // namespace morvik::test
