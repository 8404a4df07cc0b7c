// Each thing as a row.
#include "run/run-log.h"

#include <algorithm>
#include <cctype>

#include "device/describe.h"
#include "run/duration.h"
#include "run/log-text.h"

namespace morvik::devkit {
namespace {

RowLook lookOf(const LogLine& line) {
  if (line.kind == LineKind::kScript) return RowLook::kSpoken;
  switch (line.level) {
    case LogLevel::kWarning:
      return RowLook::kWarning;
    case LogLevel::kFatal:
      return RowLook::kBad;
    case LogLevel::kDebug:
      return RowLook::kFaint;
    default:
      return line.kind == LineKind::kNoise ? RowLook::kFaint : RowLook::kPlain;
  }
}

// Levels in small letters: what stands out is what the script says.
std::string markOf(const LogLine& line) {
  if (line.kind == LineKind::kScript) return "log";
  if (line.kind == LineKind::kOutput) return "output";
  std::string word = wordOf(line.level);
  std::ranges::transform(word, word.begin(), [](unsigned char letter) {
    return static_cast<char>(std::tolower(letter));
  });
  return word;
}

std::string listOf(const std::set<std::string>& files) {
  constexpr std::size_t kMostNames = 3;
  std::string names;
  std::size_t count = 0;
  for (const std::string& file : files) {
    if (++count > kMostNames)
      return names + " and " + std::to_string(files.size() - kMostNames) + " more";
    names += (names.empty() ? "" : ", ") + (file == "." ? "the folder" : file);
  }
  return names;
}

}  // namespace

bool isAuthors(const End& end) {
  return end.kind == EndKind::kRestarted || end.kind == EndKind::kQuit;
}

bool RunLog::passesFilter(LogLevel level, const std::string& text) const {
  if (level < filter_.least) return false;
  return !filter_.pattern || g_regex_match(filter_.pattern.get(), text.c_str(),
                                           G_REGEX_MATCH_DEFAULT, nullptr) != FALSE;
}

int RunLog::colorOf(const std::string& who) {
  return colors_.try_emplace(who, static_cast<int>(colors_.size()) + 1).first->second;
}

void RunLog::row(const std::string& who, const std::string& mark, const std::string& text,
                 RowLook look, TimePoint time) {
  view_.show({.time = timeOfDay(time),
              .who = who,
              .color = colorOf(who),
              .mark = mark,
              .text = harmless(text),
              .look = look});
}

void RunLog::tell(const RunningApp& app, const std::string& mark, const std::string& text,
                  RowLook look) {
  row(app.name(), mark, text, look);
  told_(app.name(), mark, text, look);
}

void RunLog::launching(const RunningApp& app) { tell(app, "run", "launched", RowLook::kFaint); }

void RunLog::wrote(const RunningApp& app, const LogLine& line) {
  const bool isNoise = line.kind == LineKind::kNoise && !filter_.all;
  if (isNoise) return view_.leaveOut();
  const LogLevel level = line.kind == LineKind::kNoise ? LogLevel::kFatal : line.level;
  if (passesFilter(level, line.text))
    row(app.name(), markOf(line), line.text, lookOf(line), line.time);
}

void RunLog::hinted(const RunningApp& app, const Hint& hint) {
  tell(app, "hint", hint.text, RowLook::kWarning);
}

void RunLog::found(const RunningApp& app, const FolderTrouble& trouble) {
  tell(app, trouble.refuses ? "broken" : "check", inWordsWithCure(trouble),
       trouble.refuses ? RowLook::kBad : RowLook::kWarning);
}

void RunLog::ended(const RunningApp& app, const End& end) {
  if (end.kind == EndKind::kQuit) return tell(app, "end", "ended, as you asked", RowLook::kFaint);
  if (isAuthors(end)) return;
  std::string text = headlineOf(end) + "\n" + end.sentence;
  if (!end.cure.empty()) text += "\n" + end.cure;
  tell(app, "end", text, end.kind == EndKind::kScriptExit ? RowLook::kGood : RowLook::kBad);
}

void RunLog::saved(const RunningApp& app, const std::set<std::string>& files) {
  tell(app, "run", listOf(files) + " saved", RowLook::kFaint);
}

void RunLog::noted(const RunningApp& app, const std::string& text) {
  tell(app, "run", text, RowLook::kFaint);
}

void RunLog::passed(const std::string& who, Direction direction,
                    const net::quelta::zeph::message::ZephMsg& message) {
  const std::string text = describe(message);
  if (!passesFilter(LogLevel::kMessage, text)) return;
  const bool comes = direction == Direction::kFromApplication;
  row(who, comes ? "->" : "<-", text, comes ? RowLook::kIn : RowLook::kOut);
}

void RunLog::doubted(const std::string& who, const Doubt& doubt) {
  row(who, "doubt", doubt.text, RowLook::kWarning);
}

void RunLog::told(const std::string& who, const std::string& text, RowLook look) {
  row(who, "", text, look);
}

}  // namespace morvik::devkit
