// The log: priorities, labels and the threshold of standard error.
#include "host/logging.h"

#include <syslog.h>

#include <climits>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <string>
#include <vector>

#include "support/matchers.h"

namespace {

struct SystemLine {
  int priority;
  std::string text;
};
std::vector<SystemLine> systemLines;

// Where no daemon of the system log listens.
constexpr const char* kNobody = "/nowhere";

struct Opened {
  std::string ident;
  int options = 0;
  int facility = 0;
} opened;

[[gnu::format(printf, 2, 0)]] void takeLine(int priority, const char* format, va_list values) {
  std::string text(1000000, '\0');
  text.resize(static_cast<std::size_t>(std::vsnprintf(text.data(), text.size(), format, values)));
  systemLines.push_back({priority, text});
}

}  // namespace

// These stand before the C library's own in this program; the second is what a hardened build calls
// in the place of the first.
extern "C" void syslog(int priority, const char* format, ...) {
  va_list values;
  va_start(values, format);
  takeLine(priority, format, values);
  va_end(values);
}

extern "C" [[gnu::format(printf, 3, 4)]] void __syslog_chk(int priority, int /*flag*/,
                                                           const char* format, ...) {
  va_list values;
  va_start(values, format);
  takeLine(priority, format, values);
  va_end(values);
}

extern "C" void openlog(const char* ident, int options, int facility) {
  opened = {ident, options, facility};
}

namespace morvik::test {
namespace {

class LoggingTest : public testing::Test {
 protected:
  LoggingTest() { systemLines.clear(); }
  ~LoggingTest() override { g_log_set_default_handler(g_log_default_handler, nullptr); }

  // What reaches standard error.
  std::string printed(int level, int debug, const char* text) {
    LaunchOptions options;
    options.debug = debug;
    testing::internal::CaptureStderr();
    logHandler("AnyDomain", static_cast<GLogLevelFlags>(level), text, &options);
    return testing::internal::GetCapturedStderr();
  }
};

constexpr int kFatalError = G_LOG_LEVEL_ERROR | G_LOG_FLAG_FATAL;  // as GLib hands it over

TEST_F(LoggingTest, aLevelHasItsPriorityAndItsLabel) {
  const struct {
    int level;
    int priority;
    const char* printed;
  } rows[] = {
      {G_LOG_LEVEL_DEBUG, 7, "DEBUG: text\n"},
      {G_LOG_LEVEL_INFO, 6, "INFO: text\n"},
      {G_LOG_LEVEL_MESSAGE, 5, "MESSAGE: text\n"},
      {G_LOG_LEVEL_WARNING, 4, "WARNING: text\n"},
      // The table stops here: what is worse is told at debug priority and without a label.
      {G_LOG_LEVEL_CRITICAL, 7, ": text\n"},
      {G_LOG_LEVEL_ERROR, 7, ": text\n"},
      {kFatalError, 7, ": text\n"},
      {G_LOG_LEVEL_WARNING | G_LOG_FLAG_FATAL, 7, ": text\n"},
      {0, 7, ": text\n"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.level);
    systemLines.clear();
    EXPECT_EQ(printed(row.level, 7, "text"), row.printed);
    ASSERT_EQ(systemLines.size(), 1U);
    EXPECT_EQ(systemLines[0].priority, row.priority);
    EXPECT_EQ(systemLines[0].text, "text");
  }
}

TEST_F(LoggingTest, theThresholdHoldsForStandardErrorOnly) {
  const int levels[] = {G_LOG_LEVEL_DEBUG,   G_LOG_LEVEL_INFO,     G_LOG_LEVEL_MESSAGE,
                        G_LOG_LEVEL_WARNING, G_LOG_LEVEL_CRITICAL, kFatalError,
                        G_LOG_LEVEL_ERROR};
  const struct {
    int debug;
    const char* printed;
  } rows[] = {
      {7, "DEBUG: x\nINFO: x\nMESSAGE: x\nWARNING: x\n: x\n: x\n: x\n"},
      {6, "INFO: x\nMESSAGE: x\nWARNING: x\n: x\n: x\n: x\n"},
      {5, "MESSAGE: x\nWARNING: x\n: x\n: x\n: x\n"},
      {4, "WARNING: x\n: x\n: x\n: x\n"},
      {3, ": x\n: x\n: x\n"},  // none of the four, but CRITICAL and ERROR
      {2, ": x\n"},            // ERROR, and not with its fatal flag
      {1, ""},
      {0, ""},
      {8, "DEBUG: x\nINFO: x\nMESSAGE: x\nWARNING: x\n: x\n: x\n: x\n"},
      {30, "DEBUG: x\nINFO: x\nMESSAGE: x\nWARNING: x\n: x\n: x\n: x\n"},
      {31, ""},  // a plain shift by these would not be defined
      {32, ""},
      {39, ""},
      {INT_MAX, ""},
      {-1, ""},
      {-25, ""},
      {INT_MIN, ""},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.debug);
    systemLines.clear();
    std::string all;
    for (const int level : levels) all += printed(level, row.debug, "x");
    EXPECT_EQ(all, row.printed);
    EXPECT_EQ(systemLines.size(), std::size(levels));  // never filtered
  }
}

TEST_F(LoggingTest, aTextIsNoFormat) {
  EXPECT_EQ(printed(G_LOG_LEVEL_MESSAGE, 7, "100%s %d%n"), "MESSAGE: 100%s %d%n\n");
  EXPECT_EQ(systemLines.at(0).text, "100%s %d%n");
}

// A record that is too large for the log's socket would go to the console.
TEST_F(LoggingTest, theSystemLogGetsALongTextCut) {
  constexpr std::size_t kMost = 131072;
  const std::string whole(kMost, 'x');
  printed(G_LOG_LEVEL_DEBUG, 0, whole.c_str());
  EXPECT_EQ(systemLines.at(0).text, whole);
  printed(G_LOG_LEVEL_DEBUG, 0, (whole + "y").c_str());
  EXPECT_EQ(systemLines.at(1).text, whole + "... (1 bytes left out)");
  printed(G_LOG_LEVEL_WARNING, 0, (whole + whole + whole).c_str());
  EXPECT_EQ(systemLines.at(2).text, whole + "... (262144 bytes left out)");
  EXPECT_EQ(systemLines.at(2).priority, LOG_WARNING);
}

// Half a letter would make the whole record unreadable to some.
TEST_F(LoggingTest, aLongTextIsCutBetweenLetters) {
  constexpr std::size_t kMost = 131072;
  for (const std::string letter : {"\303\251", "\342\202\254", "\360\237\230\200"}) {
    for (std::size_t inside = 1; inside < letter.size(); ++inside) {
      const std::string before(kMost - inside, 'x');
      printed(G_LOG_LEVEL_DEBUG, 0, (before + letter + "y").c_str());
      EXPECT_EQ(systemLines.back().text,
                before + "... (" + std::to_string(letter.size() + 1) + " bytes left out)");
    }
    const std::string whole = std::string(kMost - letter.size(), 'x') + letter;
    printed(G_LOG_LEVEL_DEBUG, 0, (whole + letter).c_str());
    EXPECT_EQ(systemLines.back().text,
              whole + "... (" + std::to_string(letter.size()) + " bytes left out)");
  }
}

TEST_F(LoggingTest, aLongTextThatIsNoUtf8IsCutToo) {
  constexpr std::size_t kMost = 131072;
  const std::string bytes(kMost + 1, '\200');
  printed(G_LOG_LEVEL_DEBUG, 0, bytes.c_str());
  EXPECT_EQ(systemLines.back().text, bytes.substr(0, kMost - 3) + "... (4 bytes left out)");
}

TEST_F(LoggingTest, standardErrorGetsALongTextWhole) {
  const std::string text(300000, 'x');
  EXPECT_EQ(printed(G_LOG_LEVEL_DEBUG, 7, text.c_str()), "DEBUG: " + text + "\n");
}

// GLib has no text where it has found no memory for one.
TEST_F(LoggingTest, aMessageWithoutATextStillSpeaks) {
  constexpr const char* kNoText = "out of memory: no text for this message";
  EXPECT_EQ(printed(kFatalError, 7, nullptr), ": " + std::string(kNoText) + "\n");
  EXPECT_EQ(systemLines.at(0).text, kNoText);
}

TEST_F(LoggingTest, openingNamesTheProgramAndTakesEveryMessage) {
  LaunchOptions options;
  options.debug = 5;
  openLog(options, kNobody);
  EXPECT_EQ(opened.ident, "MorvikVM");
  EXPECT_EQ(opened.options, LOG_PID | LOG_CONS);
  EXPECT_EQ(opened.facility, LOG_LOCAL1);

  testing::internal::CaptureStderr();
  g_message("one");
  g_debug("two");
  options.debug = 7;  // the settings are read anew for each message
  g_log("AnotherDomain", G_LOG_LEVEL_DEBUG, "three");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "MESSAGE: one\nDEBUG: three\n");
  EXPECT_EQ(systemLines.size(), 3U);
}

// The C library tells the console then.
TEST_F(LoggingTest, withoutADaemonTheLibraryGetsEachRecordOnce) {
  openSystemLog(kNobody);
  const std::string text(100, 'x');
  writeRecord(LOG_WARNING, text, "y");
  ASSERT_EQ(systemLines.size(), 1U);
  EXPECT_EQ(systemLines[0].priority, LOG_WARNING);
  EXPECT_EQ(systemLines[0].text, text + "y");
  closeSystemLog();
}

TEST_F(LoggingTest, theProgramsDomainIsItsName) {
  static std::string domain;
  g_log_set_default_handler(
      [](const gchar* name, GLogLevelFlags, const gchar*, gpointer) { domain = name; }, nullptr);
  g_message("text");
  EXPECT_EQ(domain, "MorvikVM");
}

void dieOfAnError() {
  static LaunchOptions options;
  openLog(options, kNobody);
  g_error("cannot go on");
}

TEST_F(LoggingTest, anErrorIsWrittenAndEndsTheProcess) {
  EXPECT_EXIT(dieOfAnError(), testing::KilledBySignal(SIGTRAP), ": cannot go on\n");
}

TEST_F(LoggingTest, anEndWithoutMemoryLooksTheSame) {
  EXPECT_EXIT(endFatally("cannot go on"), testing::KilledBySignal(SIGTRAP), "^: cannot go on\n");
  static LaunchOptions quiet;
  quiet.debug = 0;
  const auto end = [] {
    openLog(quiet, kNobody);
    endFatally("cannot go on");
  };
  EXPECT_EXIT(end(), testing::KilledBySignal(SIGTRAP), "^$");
}

}  // namespace
}  // namespace morvik::test
