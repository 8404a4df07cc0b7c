// "main.js:12: text", the source line, the mark: three warnings in a row.
#include "run/exception-report.h"

#include <charconv>
#include <string_view>

namespace morvik::devkit {
namespace {

constexpr const char* kDigits = "0123456789";

// Where ":12: " stands behind a name without blanks; npos when it does not.
std::size_t endOfFileName(std::string_view text) {
  const std::size_t colon = text.find(':');
  if (colon == std::string_view::npos || colon == 0) return std::string_view::npos;
  if (text.substr(0, colon).find(' ') != std::string_view::npos) return std::string_view::npos;
  const std::size_t end = text.find_first_not_of(kDigits, colon + 1);
  const bool numbered = end != std::string_view::npos && end > colon + 1;
  return numbered && text.substr(end).starts_with(": ") ? colon : std::string_view::npos;
}

bool isMark(std::string_view text) {
  return text.find_first_not_of(" ^") == std::string_view::npos;
}

// A file of the system log does not tell levels.
bool mayReport(const LogLine& line) {
  return line.kind == LineKind::kHost &&
         (line.level == LogLevel::kWarning || line.level == LogLevel::kUnknown);
}

}  // namespace

void ReportReader::takeHead(const LogLine& line) {
  const std::string_view text = line.text;
  const std::size_t colon = endOfFileName(text);
  if (colon == std::string_view::npos) return;
  report_ = {};
  report_.file = text.substr(0, colon);
  const char* begin = text.data() + colon + 1;
  const auto number = std::from_chars(begin, text.data() + text.size(), report_.line);
  report_.text = text.substr(static_cast<std::size_t>(number.ptr - text.data()) + 2);
  step_ = Step::kSource;
}

std::optional<ExceptionReport> ReportReader::take(const LogLine& line) {
  if (!mayReport(line)) return std::nullopt;
  if (step_ == Step::kSource) {
    report_.sourceLine = line.text;
    step_ = Step::kMark;
    return std::nullopt;
  }
  if (step_ == Step::kMark && isMark(line.text)) {
    step_ = Step::kHead;
    report_.column = std::min(line.text.find('^'), line.text.size());
    return report_;
  }
  step_ = Step::kHead;
  takeHead(line);
  return std::nullopt;
}

}  // namespace morvik::devkit
