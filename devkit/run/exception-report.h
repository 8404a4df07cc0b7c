// The host's report of an exception that no script caught, put together from its lines.
#pragma once

#include <optional>
#include <string>

#include "run/log-line.h"

namespace morvik::devkit {

struct ExceptionReport {
  std::string file;        ///< main.js or the name that was included
  int line = 0;            ///< counted from 1
  std::string text;        ///< "TypeError: ...", or the text that was thrown
  std::string sourceLine;  ///< as it stands in the file
  std::size_t column = 0;  ///< where the mark below the source line begins, counted from 0

  /// "main.js:12"
  std::string place() const { return file + ':' + std::to_string(line); }
};

/// Hears the lines of one application in order and gives each report with its third line, the mark
/// below the source line.
class ReportReader {
 public:
  std::optional<ExceptionReport> take(const LogLine& line);

 private:
  enum class Step { kHead, kSource, kMark };

  void takeHead(const LogLine& line);

  Step step_ = Step::kHead;
  ExceptionReport report_;
};

}  // namespace morvik::devkit
