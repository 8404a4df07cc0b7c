// Records to lines on the screen.
#include "run/log-view.h"

#include "run/duration.h"
#include "run/log-text.h"

namespace morvik::devkit {
namespace {

constexpr const char* kContinuation = "    | ";

std::string timeOf(const SystemLogRecord& record, const LogLine& line) {
  return record.timeText.empty() ? timeOfDay(line.time) : record.timeText;
}

std::string senderOf(const SystemLogRecord& record, const LogLine& line) {
  const std::string name = line.app.empty() ? record.ident : line.app;
  return record.pid != 0 ? name + '[' + std::to_string(record.pid) + ']' : name;
}

std::string levelWord(const SystemLogRecord& record, const LogLine& line) {
  if (!record.isOurs()) return priorityInWords(record);
  return line.kind == LineKind::kScript ? "JSLOG" : wordOf(line.level);
}

std::string endInWords(const End& end) {
  const std::string cure = end.cure.empty() ? "" : ' ' + end.cure;
  return headlineOf(end) + ": " + end.sentence + cure;
}

}  // namespace

void LogView::takeDatagram(std::string_view bytes, TimePoint now) {
  if (const auto record = recordOfSocket(bytes)) return take(*record, now);
  SystemLogRecord unknown;
  unknown.text = bytes;
  take(unknown, now);
}

// A record waits until the line behind it shows that it has no further ones.
void LogView::takeFileLine(std::string_view line, TimePoint now) {
  if (auto record = recordOfFile(line, now)) {
    finishFile();
    fileRecord_ = std::move(record);
  } else if (fileRecord_) {
    fileRecord_->text += '\n' + std::string(line);
  }
}

void LogView::finishFile() {
  if (!fileRecord_) return;
  const SystemLogRecord record = std::move(*fileRecord_);
  fileRecord_.reset();
  take(record, record.time.value_or(TimePoint()));
}

void LogView::take(const SystemLogRecord& record, TimePoint now) {
  if (record.isOurs()) return takeOurs(record, now);
  LogLine line = lineOf(record, now);
  line.text = harmless(record.text);
  if (filter_.wants(line)) showLine(record, line);
}

void LogView::takeOurs(const SystemLogRecord& record, TimePoint now) {
  LogLine line = lineOf(record, now);
  const LogStory::Told told = story_.take(line);
  if (told.started && filter_.wantsApp(line.app)) showNote(record, line, "started");
  if (filter_.wants(line)) showLine(record, line);
  if (told.end && filter_.wantsApp(told.end->app)) {
    showNote(record, line, endInWords(*told.end));
  }
}

void LogView::showLine(const SystemLogRecord& record, const LogLine& line) {
  const std::string sender = senderOf(record, line);
  const std::string word = levelWord(record, line);
  const std::string head = sender + (sender.empty() || word.empty() ? "" : " ") + word;
  show(timeOf(record, line) + ' ' + head + (head.empty() ? "" : ": "), line.text);
}

void LogView::showNote(const SystemLogRecord& record, const LogLine& line,
                       const std::string& text) {
  const std::string who = text == "started" ? senderOf(record, line) + ' ' : "";
  show(timeOf(record, line) + " -- " + who, text);
}

void LogView::show(const std::string& head, const std::string& text) {
  sink_(head + withIndentedLines(text, kContinuation));
}

}  // namespace morvik::devkit
