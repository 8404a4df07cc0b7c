// The log for people: lines, records, files of the system log, and what they tell of applications.
#include <syslog.h>

#include <fstream>

#include "run/log-text.h"
#include "run/log-view.h"
#include "run/record-joiner.h"
#include "support/matchers.h"
#include "support/program.h"
#include "support/temporary-folder.h"

namespace morvik::test {

using namespace devkit;
namespace {

TEST(LogText, showsMessagesAsTheTextThatTheyStandFor) {
  EXPECT_EQ(withoutEscapes(R"(text: "caf\303\251 \342\202\254")"), "text: \"café €\"");
  EXPECT_EQ(withoutEscapes(R"(a\\303\251)"), R"(a\\303\251)") << "a backslash of its own";
  EXPECT_EQ(withoutEscapes(R"(\377\n\001\303)"), R"(\377\n\001\303)") << "no text";
  EXPECT_EQ(withoutEscapes("\\"), "\\");
}

TEST(LogText, showsWhatAScriptLogged) { EXPECT_EQ(fromScriptBytes("\xe9t\xe9"), "été"); }

TEST(LogText, doesNothingToATerminal) {
  EXPECT_EQ(harmless("a\033[2Jb\tc\r\nd\a"), "a?[2Jb c?\nd?");
}

TEST(LogLine, isReadFromStandardError) {
  const struct {
    std::string record;
    LogLevel level;
    LineKind kind;
    std::string text;
  } rows[] = {
      {"DEBUG: EXIT", LogLevel::kDebug, LineKind::kHost, "EXIT"},
      {"MESSAGE: JSLOG: WARNING: x", LogLevel::kMessage, LineKind::kScript, "WARNING: x"},
      {"WARNING: NO CORRELATION FOUND", LogLevel::kWarning, LineKind::kNoise,
       "NO CORRELATION FOUND"},
      {"WARNING: no params loaded: No such file or directory", LogLevel::kWarning, LineKind::kNoise,
       "no params loaded: No such file or directory"},
      {"WARNING: no params loaded: Permission denied", LogLevel::kWarning, LineKind::kHost,
       "no params loaded: Permission denied"},
      {": send failed: x", LogLevel::kFatal, LineKind::kHost, "send failed: x"},
      {"I/O warning : text", LogLevel::kForeign, LineKind::kHost, "I/O warning : text"},
      {"DEBUG: Sending MSG\nb: \"\\303\\251\"", LogLevel::kDebug, LineKind::kHost,
       "Sending MSG\nb: \"é\""},
      {"", LogLevel::kForeign, LineKind::kHost, ""},
  };
  for (const auto& row : rows) {
    const LogLine line = lineOfStandardError(row.record);
    EXPECT_EQ(line.level, row.level) << row.record;
    EXPECT_EQ(line.kind, row.kind) << row.record;
    EXPECT_EQ(line.text, row.text) << row.record;
  }
}

TEST(LogLine, isReadFromTheSystemLog) {
  EXPECT_EQ(lineOfSystemLog("EXIT", LOG_DEBUG).level, LogLevel::kDebug);
  EXPECT_EQ(lineOfSystemLog("send failed: x", LOG_DEBUG).level, LogLevel::kFatal);
  EXPECT_EQ(lineOfSystemLog("JSLOG: send failed: x", LOG_NOTICE).level, LogLevel::kMessage);
  EXPECT_EQ(lineOfSystemLog("JSLOG: x", std::nullopt).kind, LineKind::kScript);
  EXPECT_EQ(lineOfSystemLog("connection refused", std::nullopt).level, LogLevel::kWarning);
  EXPECT_EQ(lineOfSystemLog("who knows", std::nullopt).level, LogLevel::kUnknown);
}

TEST(LogLine, knowsTheWordsForLevels) {
  EXPECT_EQ(levelOf("warning"), LogLevel::kWarning);
  EXPECT_EQ(levelOf("DEBUG"), LogLevel::kDebug);
  EXPECT_EQ(levelOf("loud"), std::nullopt);
  EXPECT_EQ(levelOf(""), std::nullopt);
}

class JoinerTest : public ::testing::Test {
 protected:
  std::vector<std::pair<pid_t, std::string>> records_;
  RecordJoiner joiner_{
      [this](pid_t pid, std::string_view record) { records_.emplace_back(pid, record); }};
};

TEST_F(JoinerTest, joinsThePiecesOfEachProcess) {
  const std::string full(RecordJoiner::kPieceSize, 'x');
  joiner_.take(1, full);
  joiner_.take(2, "DEBUG: short\n");
  joiner_.take(1, "rest\n");
  EXPECT_THAT(records_, ElementsAre(Pair(2, "DEBUG: short"), Pair(1, full + "rest")));
}

TEST_F(JoinerTest, keepsFurtherLinesInTheirRecord) {
  joiner_.take(1, "MESSAGE: a\nWARNING: forged\n");
  EXPECT_THAT(records_, ElementsAre(Pair(1, "MESSAGE: a\nWARNING: forged")));
}

TEST_F(JoinerTest, tellsAFullPieceThatIsWholeByWhatFollows) {
  const std::string whole = "DEBUG: " + std::string(RecordJoiner::kPieceSize - 8, 'x') + '\n';
  joiner_.take(1, whole);
  EXPECT_THAT(records_, IsEmpty());
  joiner_.take(1, "DEBUG: next\n");
  EXPECT_THAT(records_, SizeIs(2));
  joiner_.take(1, whole);
  joiner_.take(1, "its rest\n");
  EXPECT_THAT(records_, SizeIs(3));
  EXPECT_THAT(records_.back().second, HasSubstr("\nits rest"));
}

TEST_F(JoinerTest, givesWhatWasBegunWhenItsProcessEnds) {
  joiner_.take(1, "path:1: ");
  joiner_.take(1, "parser error");
  joiner_.take(2, "other");
  joiner_.finish(1);
  joiner_.finish(3);
  EXPECT_THAT(records_, ElementsAre(Pair(1, "path:1: parser error")));
  joiner_.finishAll();
  EXPECT_THAT(records_, SizeIs(2));
}

TEST_F(JoinerTest, cutsWhatNeverEnds) {
  const std::string piece(RecordJoiner::kPieceSize, 'x');
  for (std::size_t size = 0; size <= RecordJoiner::kLongestRecord; size += piece.size()) {
    joiner_.take(1, piece);
  }
  EXPECT_THAT(records_, SizeIs(1));
}

TEST(LineSplitter, splitsAtEveryNewline) {
  std::vector<std::string> lines;
  LineSplitter splitter([&](pid_t, std::string_view line) { lines.emplace_back(line); });
  splitter.take(1, "a\nb");
  splitter.take(2, "c\n");
  splitter.take(1, "d\n\ne");
  splitter.finishAll();
  EXPECT_THAT(lines, ElementsAre("a", "c", "bd", "", "e"));
}

// 2026-03-01 12:00:00 UTC
const TimePoint kNow{std::chrono::seconds(1772366400)};

TEST(SystemLogRecord, isReadFromFilesOfBothForms) {
  for (const char* time : {"Feb 28 11:59:58", "2026-02-28T11:59:58.250000+00:00",
                           "2026-02-28T11:59:58Z", "2026-02-28T11:59:58"}) {
    const auto record =
        recordOfFile(std::string(time) + " box MorvikVM[12]: Sending MSG#012id: \"a\"#012", kNow);
    ASSERT_TRUE(record) << time;
    EXPECT_EQ(record->timeText, time);
    EXPECT_EQ(record->ident, "MorvikVM");
    EXPECT_EQ(record->pid, 12);
    EXPECT_EQ(record->priority, std::nullopt);
    EXPECT_EQ(record->text, "Sending MSG\nid: \"a\"");
  }
  EXPECT_EQ(recordOfFile("<140>Feb  1 00:00:00 box MorvikVM[12]: x", kNow)->priority, LOG_WARNING);
  EXPECT_EQ(recordOfFile("Feb  1 00:00:00 box kernel: x: y", kNow)->text, "x: y");
  EXPECT_EQ(recordOfFile("Feb  1 00:00:00 box kernel: x", kNow)->pid, 0);
}

TEST(SystemLogRecord, isNotReadFromWhatIsNone) {
  for (const char* line : {"", "text", "id: \"a\"", "Feb", "Feb  1 00:00:00", "Feb  1 00:00:00 box",
                           "Feb  1 00:00:00 box no sender here", "<x>Feb  1 00:00:00 box a: b",
                           "<1", "2026-02 b c: d"}) {
    EXPECT_FALSE(recordOfFile(line, kNow)) << line;
  }
}

TEST(SystemLogRecord, takesADateOfLastYearForOne) {
  const auto december = recordOfFile("Dec 31 11:00:00 box a: b", kNow);
  EXPECT_LT(*december->time, kNow);
  EXPECT_GT(*december->time, kNow - std::chrono::hours(24 * 62));
}

class ViewTest : public ::testing::Test {
 protected:
  void read(const std::vector<std::string>& lines) {
    LogView view(std::move(filter_), [this](const std::string& line) { shown_.push_back(line); });
    for (const std::string& line : lines) view.takeFileLine(line, kNow);
    view.finishFile();
  }
  static std::string at(int second, int pid, const std::string& text) {
    const std::string seconds = (second < 10 ? "0" : "") + std::to_string(second);
    return "Feb 28 12:00:" + seconds + " box MorvikVM[" + std::to_string(pid) + "]: " + text;
  }

  LogFilter filter_;
  std::vector<std::string> shown_;
};

// Two applications and their launcher.
std::vector<std::string> sampleLog(std::string (*at)(int, int, const std::string&)) {
  return {
      at(0, 1, "params: /apps"),
      at(1, 2, "running app: /apps/clock"),
      at(1, 2, "decriptor loaded"),
      at(1, 2, "running app: clock"),
      at(2, 3, "running app: /apps/radio"),
      at(2, 2, "JSLOG: tick"),
      at(3, 3, "main.js:2: TypeError: Cannot read properties of undefined (reading 'light')"),
      at(3, 3, "morvik.led.light();"),
      at(3, 3, "           ^"),
      at(11, 2, "/!\\ AUTOKILL, application still not interactive after 10000ms"),
      at(12, 3, "EXIT"),
      at(12, 1, "end process: 3 nbChild 0"),
  };
}

TEST_F(ViewTest, tellsWhichApplicationWroteWhatAndWhyItEnded) {
  read(sampleLog(at));
  EXPECT_THAT(
      shown_,
      ElementsAre(
          "Feb 28 12:00:00 MorvikVM[1] MESSAGE: params: /apps",
          "Feb 28 12:00:01 -- clock[2] started",
          "Feb 28 12:00:01 clock[2]: running app: /apps/clock",
          "Feb 28 12:00:01 clock[2] MESSAGE: decriptor loaded",
          "Feb 28 12:00:01 clock[2]: running app: clock", "Feb 28 12:00:02 -- radio[3] started",
          "Feb 28 12:00:02 radio[3]: running app: /apps/radio",
          "Feb 28 12:00:02 clock[2] JSLOG: tick",
          "Feb 28 12:00:03 radio[3]: main.js:2: TypeError: Cannot read properties of undefined "
          "(reading 'light')",
          "Feb 28 12:00:03 radio[3]: morvik.led.light();", "Feb 28 12:00:03 radio[3]:            ^",
          "Feb 28 12:00:11 clock[2] WARNING: /!\\ AUTOKILL, application still not interactive "
          "after "
          "10000ms",
          "Feb 28 12:00:11 -- clock ended after 10.0 s, not connected, status not known: It was "
          "not "
          "interactive within 10 seconds: the script never called morvik.connect. Connect and ask: "
          "morvik.connect(host, port); morvik.start(function() { ... }, {});",
          "Feb 28 12:00:12 radio[3] DEBUG: EXIT",
          "Feb 28 12:00:12 MorvikVM[1]: end process: 3 nbChild 0",
          "Feb 28 12:00:12 -- radio ended after 10.0 s, not connected, status not known: The "
          "script "
          "called exit()."));
}

TEST_F(ViewTest, showsOneApplication) {
  filter_.setApps({"radio"});
  read(sampleLog(at));
  EXPECT_THAT(shown_, SizeIs(7));
  for (const std::string& line : shown_) EXPECT_THAT(line, HasSubstr("radio")) << line;
}

TEST_F(ViewTest, showsFromALevelOn) {
  EXPECT_EQ(filter_.setLevel("warning"), std::nullopt);
  read(sampleLog(at));
  EXPECT_THAT(shown_, SizeIs(5)) << "starts and ends are told at every level";
  EXPECT_THAT(shown_[2], HasSubstr("AUTOKILL"));
}

TEST_F(ViewTest, showsWhatMatches) {
  EXPECT_EQ(filter_.setPattern("main\\.js:[0-9]+"), std::nullopt);
  read(sampleLog(at));
  EXPECT_THAT(shown_, SizeIs(5));
}

TEST_F(ViewTest, refusesWhatIsNoLevelOrPattern) {
  EXPECT_THAT(filter_.setLevel("loud").value_or(""), StartsWith("there is no level loud"));
  EXPECT_NE(filter_.setPattern("["), std::nullopt);
}

TEST_F(ViewTest, showsFurtherLinesAsContinuation) {
  read({at(1, 2, "Sending MSG#012id: \"a\"#012"), at(1, 2, "JSLOG: x#012WARNING: forged"),
        at(1, 2, "Received MSG"), "id: \"b\""});
  EXPECT_THAT(shown_,
              ElementsAre("Feb 28 12:00:01 MorvikVM[2] DEBUG: Sending MSG\n    | id: \"a\"",
                          "Feb 28 12:00:01 MorvikVM[2] JSLOG: x\n    | WARNING: forged",
                          "Feb 28 12:00:01 MorvikVM[2] DEBUG: Received MSG\n    | id: \"b\""));
}

TEST_F(ViewTest, explainsEndsFromTheSystemLogAlone) {
  const struct {
    std::vector<std::string> lines;
    const char* why;
  } rows[] = {
      {{at(2, 2, "searching descriptor: /apps/clock/descriptor.xml"),
        at(2, 2, "loading descriptor"), at(2, 1, "end process: 2 nbChild 0")},
       "descriptor.xml is missing or not well-formed"},
      {{at(2, 2, "loading source: /apps/clock/main.js"), at(2, 2, "No such file or directory")},
       "There is no /apps/clock/main.js"},
      {{at(2, 2, "Failed to receive bytes length from server")}, "ended or reset the connection"},
      {{at(2, 2, "script engine out of memory: the application's heap has reached its limit of 1")},
       "limit of 10 MiB"},
      {{at(2, 2, "Interactive mode is not valid: EXIT !")}, "refused interactive mode."},
      {{at(2, 2, "interactive mode stopped, autokill in 300000ms"),
        at(9, 2, "interactive mode stopped, autokill")},
       "had stopped interactive mode"},
  };
  for (const auto& row : rows) {
    shown_.clear();
    std::vector<std::string> lines{at(1, 1, "params: /apps"), at(1, 2, "running app: /apps/clock")};
    lines.insert(lines.end(), row.lines.begin(), row.lines.end());
    read(lines);
    EXPECT_THAT(shown_.back(), AllOf(HasSubstr(" -- clock ended after "), HasSubstr(row.why)));
  }
}

TEST_F(ViewTest, takesANumberThatIsUsedAgainForAnotherApplication) {
  read({at(1, 1, "params: /apps"), at(1, 2, "running app: /apps/clock"),
        at(1, 2, "running app: clock"), at(5, 2, "running app: /apps/radio"),
        at(5, 2, "JSLOG: x")});
  EXPECT_EQ(shown_.back(), "Feb 28 12:00:05 radio[2] JSLOG: x");
}

TEST_F(ViewTest, showsWhatOtherProgramsSay) {
  read({"Feb 28 12:00:01 box cron[7]: running app: x", "<27>Feb 28 12:00:01 box kernel: y"});
  EXPECT_THAT(shown_, ElementsAre("Feb 28 12:00:01 cron[7]: running app: x",
                                  "Feb 28 12:00:01 kernel ERROR: y"));
}

TEST(LogFiles, areShownByTheVerb) {
  const test::TemporaryFolder folder;
  std::ofstream(folder / "syslog") << "Feb 28 12:00:01 box MorvikVM[2]: JSLOG: a\n"
                                      "Feb 28 12:00:01 box MorvikVM[2]: JSLOG: b\n";
  const ProgramResult outcome = run({MORVIK_DEV, "log", "--grep=a", folder / "syslog"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.output, "Feb 28 12:00:01 MorvikVM[2] JSLOG: a\n");
  const ProgramResult missing = run({MORVIK_DEV, "log", folder / "none"});
  EXPECT_EQ(missing.status, 1);
  EXPECT_EQ(missing.output,
            "morvik-dev log: cannot read " + (folder / "none") + ": No such file or directory\n");
  EXPECT_EQ(run({MORVIK_DEV, "log", folder.path()}).status, 1) << "a folder";
  EXPECT_EQ(run({MORVIK_DEV, "log", "--level=loud"}).status, 2);
  EXPECT_EQ(run({MORVIK_DEV, "log", "--grep=["}).status, 2);
}

}  // namespace
}  // namespace morvik::test
