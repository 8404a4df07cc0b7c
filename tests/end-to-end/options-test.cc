// The command line, and the log's two outputs: syslog, which gets everything, and standard error
// under the threshold of --debug=.
#include <syslog.h>

#include <optional>
#include <string>
#include <vector>

#include "support/matchers.h"
#include "support/system/system-test.h"

namespace morvik::test {
namespace {

// GLib's level values, as the threshold compares them.
enum Level { kError = 6, kWarning = 16, kMessage = 32, kDebug = 128 };

std::string labelOf(Level level) {
  switch (level) {
    case kWarning:
      return "WARNING";
    case kMessage:
      return "MESSAGE";
    case kDebug:
      return "DEBUG";
    default:
      return "";
  }
}

class OptionsTest : public SystemTest {
 protected:
  // Runs an application that logs at every level: its main.js is missing, which is fatal. Gives
  // all records in order; `fatal` is the one at the error level.
  struct Run {
    std::vector<LogRecord> records;
    std::string errors;
    std::string output;
  };
  Run runThroughAllLevels(const HostOptions& options) {
    apps.file("broken", "descriptor.xml", descriptorXml({}));
    startHost(options);
    host().line("broken");
    host().waitForLog("a reaped application", [](const LogRecord& record) {
      return record.text.starts_with("end process: ") && record.text.ends_with("nbChild 0");
    });
    host().leaveApps();
    return {host().log(), host().errors().awaitEnd(), host().output().awaitEnd()};
  }

  static Level levelOf(const LogRecord& record) {
    if (record.priority == LOG_WARNING) return kWarning;
    if (record.priority == LOG_NOTICE) return kMessage;
    return record.text == "No such file or directory" ? kError : kDebug;
  }

  // What standard error must hold for these records when levels up to `greatest` pass.
  static std::string printed(const std::vector<LogRecord>& records, std::optional<int> greatest) {
    std::string lines;
    for (const LogRecord& record : records) {
      const Level level = levelOf(record);
      if (greatest && level <= *greatest) lines += labelOf(level) + ": " + record.text + "\n";
    }
    return lines;
  }
};

struct Threshold {
  std::vector<std::string> arguments;
  std::optional<int> greatest;
};

void PrintTo(const Threshold& row, std::ostream* stream) {
  *stream << testing::PrintToString(row.arguments);
}

const std::vector<Threshold> kThresholds{
    {{}, kDebug},
    {{"--debug=7"}, kDebug},
    {{"--debug=30"}, kDebug},
    {{"--debug=8"}, kDebug},
    {{"--debug=6"}, 64},
    {{"--debug=5"}, kMessage},
    {{"--debug=4"}, kWarning},
    {{"--debug=3"}, 8},
    {{"--debug=2"}, 4},
    {{"--debug=0"}, 1},
    {{"--debug=-1"}, std::nullopt},
    {{"--debug=-2147483648"}, std::nullopt},
    {{"--debug=31"}, std::nullopt},
    {{"--debug=39"}, std::nullopt},  // a plain shift would take it for 7
    {{"--debug=2147483647"}, std::nullopt},
    {{"--debug="}, 1},
    {{"--debug=abc"}, 1},
    {{"--debug=5x"}, kMessage},
    {{"--debug= 4"}, kWarning},
    {{"--debug=4", "--debug=6", "--debug=5"}, kMessage},
    {{"--DEBUG=4"}, kDebug},
    {{"--debug", "4"}, kDebug},
    {{"-debug=4"}, kDebug},
    {{"x--debug=4"}, kDebug},
    {{"--", "--debug=4"}, kWarning},
};

class ThresholdTest : public OptionsTest, public testing::WithParamInterface<Threshold> {};

TEST_P(ThresholdTest, standardErrorHoldsTheLevelsUnderIt) {
  const Run run = runThroughAllLevels({.arguments = GetParam().arguments});
  EXPECT_EQ(run.errors, printed(run.records, GetParam().greatest));
  EXPECT_EQ(run.output, "");
}

INSTANTIATE_TEST_SUITE_P(Debug, ThresholdTest, testing::ValuesIn(kThresholds),
                         [](const auto& row) { return "row" + std::to_string(row.index); });

// An error has no label and reaches syslog as a debug message: odd on purpose.
TEST_F(OptionsTest, syslogGetsEveryLevelWhateverTheThreshold) {
  const Run run = runThroughAllLevels({.arguments = {"--debug=0"}});
  std::vector<std::pair<std::string, int>> ofApp;
  for (const LogRecord& record : run.records)
    if (record.pid != host().pid()) ofApp.emplace_back(record.text, record.priority);
  const std::string folder = apps.path() + "/broken";
  EXPECT_THAT(
      ofApp,
      ElementsAre(std::pair("running app: " + folder, LOG_DEBUG),
                  std::pair("searching descriptor: " + folder + "/descriptor.xml", LOG_DEBUG),
                  std::pair("loading descriptor", LOG_DEBUG),
                  std::pair("decriptor loaded", LOG_NOTICE),
                  std::pair("no params loaded: No such file or directory", LOG_WARNING),
                  std::pair("loading source: " + folder + "/main.js", LOG_DEBUG),
                  std::pair("No such file or directory", LOG_DEBUG)));
  EXPECT_EQ(run.errors, "");
}

TEST_F(OptionsTest, percentSignsAndControlBytesPassThroughBothOutputs) {
  startHost({.forkFails = true});
  const std::string line = "100%s%n %d\t\x01 caf\xc3\xa9";
  host().line(line);
  host().leaveApps();
  host().waitForLog("setCmdLine " + line, host().pid());
  EXPECT_THAT(host().errors().awaitEnd(), testing::HasSubstr("DEBUG: setCmdLine " + line + "\n"));
}

struct Folder {
  std::vector<std::string> arguments;
  std::string programName;
  std::string folder;
};

void PrintTo(const Folder& row, std::ostream* stream) { *stream << row.folder; }

const std::vector<Folder> kFolders{
    {{"--app_folder=/srv/apps"}, "morvikvm", "/srv/apps"},
    {{"--app_folder=/one", "--app_folder=/two"}, "morvikvm", "/two"},
    {{"--app_folder=/one", "--app_folder="}, "morvikvm", ""},
    {{"--app_folder=relative/"}, "morvikvm", "relative/"},
    {{"--app_folder= a=b "}, "morvikvm", " a=b "},
    {{"--app_folder=/one", "--APP_FOLDER=/two", "--app_folde=/two", "--app_folder"},
     "morvikvm",
     "/one"},
    {{"--lib_folder=/lib", "--app_folder=/one", "--lib_folder=/usr/lib"}, "morvikvm", "/one"},
    {{"--app_folder=/one", "something", "", "--else"}, "morvikvm", "/one"},
    {{}, "--app_folder=/from-the-name", "/from-the-name"},
    {{"--app_folder=/later"}, "--app_folder=/from-the-name", "/later"},
};

class FolderTest : public SystemTest, public testing::WithParamInterface<Folder> {};

TEST_P(FolderTest, isToldAtTheStartAndLeadsEveryPath) {
  startHost({.arguments = GetParam().arguments, .programName = GetParam().programName});
  host().line("no-such-application");
  const std::string folder = GetParam().folder;
  host().waitForLog("params: " + folder, host().pid());
  host().waitForLog("running app: " + folder + "/no-such-application");
  host().waitForLog("searching descriptor: " + folder + "/no-such-application/descriptor.xml");
}

INSTANTIATE_TEST_SUITE_P(AppFolder, FolderTest, testing::ValuesIn(kFolders),
                         [](const auto& row) { return "row" + std::to_string(row.index); });

TEST_F(SystemTest, withoutAFolderPathsBeginWithASlash) {
  startHost({.programName = "--app_folder="});
  host().line("no-such-application");
  host().waitForLog("params: ", host().pid());
  host().waitForLog("running app: /no-such-application");
  host().waitForLog("searching descriptor: /no-such-application/descriptor.xml");
}

}  // namespace
}  // namespace morvik::test
