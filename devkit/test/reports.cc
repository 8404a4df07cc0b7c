// One class for each form.
#include "test/reports.h"

#include <glib.h>

#include <cstdio>
#include <sstream>

#include <nlohmann/json.hpp>

#include "device/json.h"
#include "device/owned.h"
#include "run/duration.h"

namespace morvik::devkit {
namespace {

struct TestColors {
  const char* good = "";
  const char* bad = "";
  const char* faint = "";
  const char* none = "";
};

constexpr TestColors kTerminalColors{"\x1b[32m", "\x1b[31m", "\x1b[2m", "\x1b[0m"};

std::string nameOf(const TestResult& result) {
  return result.name.empty() ? result.file : result.name;
}

std::string indented(const std::string& text, const std::string& indent) {
  std::string result;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) result += indent + line + '\n';
  return result;
}

std::string storyOf(const TestFailure& failure) {
  std::string story;
  for (const std::string& line : failure.story) story += line + '\n';
  return story;
}

std::string inSeconds(std::chrono::milliseconds time) {
  constexpr double kMilli = 1000.0;
  char text[32];
  std::snprintf(text, sizeof text, "%.3f", static_cast<double>(time.count()) / kMilli);
  return text;
}

class PlainReport : public TestReport {
 public:
  explicit PlainReport(bool colors) : colors_(colors ? kTerminalColors : TestColors()) {}

  void told(const TestResult& result) override {
    ++(result.failure ? failed_ : passed_);
    std::printf("%s%s%s %s %s(%s, %s of the device's time)%s\n",
                result.failure ? colors_.bad : colors_.good, result.failure ? "FAILED" : "ok    ",
                colors_.none, nameOf(result).c_str(), colors_.faint, inWords(result.took).c_str(),
                inWords(result.passed).c_str(), colors_.none);
    for (const std::string& comment : result.comments) {
      std::fputs(indented(comment, "  # ").c_str(), stdout);
    }
    if (result.failure) tell(*result.failure);
  }

  void over() override { std::printf("%d passed, %d failed\n", passed_, failed_); }

 private:
  void tell(const TestFailure& failure) const {
    std::fputs(indented(placeOf(failure) + ": " + failure.message, "  ").c_str(), stdout);
    std::istringstream lines(failure.difference);
    for (std::string line; std::getline(lines, line);) {
      const char* color = line.starts_with('-')   ? colors_.bad
                          : line.starts_with('+') ? colors_.good
                                                  : "";
      std::printf("    %s%s%s\n", color, line.c_str(), *color != '\0' ? colors_.none : "");
    }
    if (failure.story.empty()) return;
    std::printf("  %sbefore that:%s\n", colors_.faint, colors_.none);
    std::fputs(indented(storyOf(failure), "    ").c_str(), stdout);
  }

  TestColors colors_;
  int passed_ = 0;
  int failed_ = 0;
};

class TapReport : public TestReport {
 public:
  TapReport() { std::puts("TAP version 14"); }

  void told(const TestResult& result) override {
    ++count_;
    for (const std::string& comment : result.comments) {
      std::fputs(indented(comment, "# ").c_str(), stdout);
    }
    std::printf("%sok %d - %s\n", result.failure ? "not " : "", count_,
                escaped(nameOf(result)).c_str());
    if (!result.failure) return;
    std::puts("  ---");
    tell("message", result.failure->message);
    tell("at", placeOf(*result.failure));
    tell("difference", result.failure->difference);
    tell("before", storyOf(*result.failure));
    std::printf("  duration_ms: %d\n  ...\n", static_cast<int>(result.took.count()));
  }

  void over() override { std::printf("1..%d\n", count_); }

 private:
  // A "#" would begin a directive.
  static std::string escaped(const std::string& name) {
    std::string text;
    for (const char letter : name) {
      if (letter == '#' || letter == '\\') text += '\\';
      text += letter == '\n' ? ' ' : letter;
    }
    return text;
  }

  // Several lines as a block, in which no letter has a meaning; the number tells where lines begin
  // that may begin with blanks.
  static void tell(const char* name, const std::string& text) {
    if (text.empty()) return;
    if (text.find('\n') == std::string::npos) {
      std::printf("  %s: %s\n", name, textOf(Json(text)).c_str());
      return;
    }
    std::printf("  %s: |2-\n%s", name, indented(text, "    ").c_str());
  }

  int count_ = 0;
};

Json jsonOf(const TestFailure& failure) {
  Json json{{"message", failure.message},
            {"file", failure.file},
            {"line", failure.line},
            {"column", failure.column}};
  if (!failure.difference.empty()) json["difference"] = failure.difference;
  if (!failure.story.empty()) json["before"] = failure.story;
  return json;
}

class JsonReport : public TestReport {
 public:
  explicit JsonReport(const std::string& folder)
      : all_{{"folder", folder}, {"passed", 0}, {"failed", 0}, {"tests", Json::array()}} {}

  void told(const TestResult& result) override {
    Json& count = all_[result.failure ? "failed" : "passed"];
    count = count.get<int>() + 1;
    Json test{{"file", result.file},
              {"name", result.name},
              {"passed", !result.failure},
              {"tookMs", result.took.count()},
              {"deviceMs", result.passed.count()}};
    if (!result.comments.empty()) test["comments"] = result.comments;
    if (result.failure) test["failure"] = jsonOf(*result.failure);
    all_["tests"].push_back(std::move(test));
  }

  void over() override { std::printf("%s\n", textOf(all_).c_str()); }

 private:
  Json all_;
};

// XML has no way to tell of other control characters.
std::string inXml(std::string text) {
  for (char& letter : text) {
    const auto byte = static_cast<unsigned char>(letter);
    if (byte < ' ' && letter != '\n' && letter != '\t') letter = '?';
  }
  const GText valid(g_utf8_make_valid(text.c_str(), static_cast<gssize>(text.size())));
  return GText(g_markup_escape_text(valid.get(), -1)).get();
}

std::string junitCase(const TestResult& result) {
  std::string text = "    <testcase classname=\"" + inXml(result.file) + "\" name=\"" +
                     inXml(nameOf(result)) + "\" time=\"" + inSeconds(result.took) + "\"";
  if (!result.failure) return text + "/>\n";
  const TestFailure& failure = *result.failure;
  return text + ">\n      <failure message=\"" + inXml(failure.message) + "\">" +
         inXml(placeOf(failure) + ": " + failure.message + '\n' + failure.difference + '\n' +
               storyOf(failure)) +
         "</failure>\n    </testcase>\n";
}

}  // namespace

std::unique_ptr<TestReport> makePlainReport(bool colors) {
  return std::make_unique<PlainReport>(colors);
}

std::unique_ptr<TestReport> makeTapReport() { return std::make_unique<TapReport>(); }

std::unique_ptr<TestReport> makeJsonReport(const std::string& folder) {
  return std::make_unique<JsonReport>(folder);
}

std::string junitOf(const std::string& folder, const std::vector<TestResult>& results) {
  std::string cases;
  int failures = 0;
  std::chrono::milliseconds took{0};
  for (const TestResult& result : results) {
    cases += junitCase(result);
    failures += result.failure ? 1 : 0;
    took += result.took;
  }
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites>\n  <testsuite name=\"" +
         inXml(folder) + "\" tests=\"" + std::to_string(results.size()) + "\" failures=\"" +
         std::to_string(failures) + "\" time=\"" + inSeconds(took) + "\">\n" + cases +
         "  </testsuite>\n</testsuites>\n";
}

}  // namespace morvik::devkit
