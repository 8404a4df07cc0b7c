// What a session tells its author on the terminal: lines, messages, ends and their cures, in one
// log.
#pragma once

#include <zeph-message.pb.h>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "device/doubt.h"
#include "device/owned.h"
#include "run/log-line.h"
#include "run/message-facts.h"
#include "run/running-app.h"
#include "terminal/merged-view.h"

namespace morvik::devkit {

using GPattern = std::unique_ptr<GRegex, Release<g_regex_unref>>;

/// What an author wants to see.
struct RunLogFilter {
  LogLevel least = LogLevel::kMessage;
  GPattern pattern = {};  ///< texts without a match are not shown; null shows all
  bool all = false;       ///< lines that say nothing as well
};

class RunLog {
 public:
  /// Hears each row that is neither a line nor a message: its application, its mark ("hint", "end",
  /// "run", ...), its text and its look.
  using Told = std::function<void(const std::string& app, const std::string& mark,
                                  const std::string& text, RowLook look)>;

  /// The view must outlive the log.
  RunLog(MergedView& view, RunLogFilter filter, Told told)
      : view_(view), filter_(std::move(filter)), told_(std::move(told)) {}

  /// Ends, hints, doubts, troubles and what is noted are shown whatever the filter says; only lines
  /// and messages are filtered.
  void launching(const RunningApp& app);
  void wrote(const RunningApp& app, const LogLine& line);
  void hinted(const RunningApp& app, const Hint& hint);
  void found(const RunningApp& app, const FolderTrouble& trouble);
  void ended(const RunningApp& app, const End& end);
  void saved(const RunningApp& app, const std::set<std::string>& files);
  void noted(const RunningApp& app, const std::string& text);

  /// A message of `who`, an application's name or what stands for it.
  void passed(const std::string& who, Direction direction,
              const net::quelta::zeph::message::ZephMsg& message);
  void doubted(const std::string& who, const Doubt& doubt);
  /// Something of the device or of the tool itself.
  void told(const std::string& who, const std::string& text, RowLook look);

 private:
  void tell(const RunningApp& app, const std::string& mark, const std::string& text, RowLook look);
  bool passesFilter(LogLevel level, const std::string& text) const;
  void row(const std::string& who, const std::string& mark, const std::string& text, RowLook look,
           TimePoint time = std::chrono::system_clock::now());
  int colorOf(const std::string& who);

  MergedView& view_;
  RunLogFilter filter_;
  Told told_;
  std::map<std::string, int> colors_;
};

/// The author has just asked for this end, and needs no explanation.
bool isAuthors(const End& end);

}  // namespace morvik::devkit
