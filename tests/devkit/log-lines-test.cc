// docs/log-lines.md: every line that the host can write to its log stands there with its level, and
// nothing else does.
#include <algorithm>
#include <filesystem>
#include <regex>
#include <set>
#include <sstream>
#include <vector>

#include "support/file-content.h"
#include "support/matchers.h"

namespace morvik::test {
namespace {

namespace fs = std::filesystem;

// A level, a blank, and a text with "..." for all that differs.
using LogLines = std::set<std::string>;

constexpr char kLiterals[] = R"re(((?:"(?:[^"\\]|\\.)*"\s*)+))re";

std::string sourcesOfTheHost() {
  std::string all;
  for (const auto& entry : fs::recursive_directory_iterator(SOURCE_DIR "/src")) {
    if (entry.is_regular_file()) all += contentOf(entry.path());
  }
  return all;
}

const std::string& hostSources() {
  static const std::string all = sourcesOfTheHost();
  return all;
}

// Several literals in a row, as one text with its conversions replaced.
std::string pageForm(const std::string& literals) {
  static const std::regex joint(R"("\s*")");
  static const std::regex conversion("%(\\.\\*)?l?z?[a-z]");
  std::string text = std::regex_replace(literals, joint, "");
  text = text.substr(1, text.rfind('"') - 1);
  text = std::regex_replace(text, std::regex(R"(\\\\)"), "\\");
  return std::regex_replace(text, conversion, "...");
}

struct LoggingCall {
  std::string name;
  std::string level;
};
const std::vector<LoggingCall>& loggingCalls() {
  static const std::vector<LoggingCall> all{{"g_debug", "DEBUG"},
                                            {"g_message", "MESSAGE"},
                                            {"g_warning", "WARNING"},
                                            {"g_error", "ERROR"},
                                            {"endWithoutMemory", "DEBUG"},
                                            {"puts", "OUT"},
                                            {"endForWantOfMemory", "ERROR"},
                                            {"printf", "OUT"}};
  return all;
}

std::string levelOfCall(const std::string& name) {
  return std::ranges::find(loggingCalls(), name, &LoggingCall::name)->level;
}

std::regex patternOfCalls() {
  std::string names;
  for (const LoggingCall& call : loggingCalls()) names += (names.empty() ? "" : "|") + call.name;
  return std::regex("\\b(" + names + R"())" + R"(\(\s*)" + kLiterals);
}

void collectCalls(LogLines& lines) {
  const std::regex pattern = patternOfCalls();
  const std::string& text = hostSources();
  for (std::sregex_iterator found(text.begin(), text.end(), pattern), end; found != end; ++found) {
    const std::string line = pageForm(found->str(2));
    if (line != "...") lines.insert(levelOfCall(found->str(1)) + ' ' + line);
  }
}

// What is logged by way of a variable.
void collectHandedOn(const std::string& literal, const std::string& level, LogLines& lines) {
  const std::regex pattern(literal);
  const std::string& text = hostSources();
  for (std::sregex_iterator found(text.begin(), text.end(), pattern), end; found != end; ++found) {
    lines.insert(level + ' ' + pageForm(found->str()));
  }
}

LogLines linesOfTheSource() {
  LogLines lines;
  collectCalls(lines);
  collectHandedOn(R"("MULTIMEDIA: [A-Za-z]+")", "MESSAGE", lines);
  collectHandedOn(R"("has_(response|event)( Webcam)?")", "DEBUG", lines);
  collectHandedOn(R"("(out of memory: no|script engine out|the application's heap)[^"]*")", "ERROR",
                  lines);
  return lines;
}

// The rows that begin with a line of the log.
LogLines linesOfThePage() {
  static const std::regex row(R"(\| `(.+?)` \| ([A-Z]+) \| .+ \|)");
  std::istringstream page(contentOf(SOURCE_DIR "/docs/log-lines.md"));
  LogLines lines;
  std::smatch parts;
  for (std::string line; std::getline(page, line);) {
    if (!std::regex_match(line, parts, row)) continue;
    EXPECT_TRUE(lines.insert(parts.str(2) + ' ' + parts.str(1)).second) << "twice: " << line;
  }
  return lines;
}

// Texts that are put together from pieces: the source holds only how they begin.
const LogLines& piecedLines() {
  static const LogLines all{
      "OUT Failed to iconv_open ... to ....",
      "OUT Fail to convert characters to new code set in remaining ... out remaining ....",
      "OUT Fail to iconv_close.", "OUT Memoire insuffisante", "WARNING access denied: ..."};
  return all;
}

TEST(LogLinesPage, hasEachLineOfTheHostAndNoOther) {
  LogLines source = linesOfTheSource();
  EXPECT_THAT(source, SizeIs(testing::Gt(150U)));
  for (const std::string& line : piecedLines()) {
    const std::string text = line.substr(line.find(' ') + 1);
    EXPECT_THAT(hostSources(), HasSubstr('"' + text.substr(0, text.find("..."))));
    source.insert(line);
  }
  EXPECT_THAT(linesOfThePage(), testing::ContainerEq(source));
}

}  // namespace
}  // namespace morvik::test
