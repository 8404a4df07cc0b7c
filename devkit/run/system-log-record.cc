// The two usual forms of the system log, of its socket and of its files.
#include "run/system-log-record.h"

#include <syslog.h>

#include <array>
#include <charconv>
#include <ctime>

#include "device/owned.h"

namespace morvik::devkit {
namespace {

// A 0 stands for any digit, a letter for anything.
constexpr std::string_view kDateForm = "Mon da 00:00:00";

// In the order of the priorities' numbers.
constexpr std::array kPriorities = {"EMERGENCY", "ALERT",  "CRITICAL", "ERROR",
                                    "WARNING",   "NOTICE", "INFO",     "DEBUG"};

// Takes "<135>" from the front. False when something else in brackets stands there.
bool takePriority(std::string_view& text, SystemLogRecord& record) {
  if (!text.starts_with('<')) return true;
  const std::size_t end = text.find('>');
  unsigned code = 0;
  if (end == std::string_view::npos) return false;
  const char* last = text.data() + end;
  if (std::from_chars(text.data() + 1, last, code).ptr != last) return false;
  record.priority = static_cast<int>(LOG_PRI(code));
  text.remove_prefix(end + 1);
  return true;
}

bool hasForm(std::string_view text, std::string_view form) {
  if (text.size() < form.size()) return false;
  for (std::size_t i = 0; i < form.size(); ++i) {
    if (form[i] == '0' && (text[i] < '0' || text[i] > '9')) return false;
    if ((form[i] == ':' || form[i] == ' ') && text[i] != form[i]) return false;
  }
  return true;
}

// A log tells no year: the latest that makes the time no later than a day from now.
std::optional<TimePoint> timeOfDate(const std::string& date, TimePoint now) {
  const std::time_t present = std::chrono::system_clock::to_time_t(now);
  std::tm parts{};
  localtime_r(&present, &parts);
  if (strptime(date.c_str(), "%b %d %H:%M:%S", &parts) == nullptr) return std::nullopt;
  parts.tm_isdst = -1;
  std::tm copy = parts;
  TimePoint time = std::chrono::system_clock::from_time_t(std::mktime(&copy));
  if (time <= now + std::chrono::hours(24)) return time;
  parts.tm_year -= 1;
  return std::chrono::system_clock::from_time_t(std::mktime(&parts));
}

bool takeDate(std::string_view& text, SystemLogRecord& record, TimePoint now) {
  if (!hasForm(text, kDateForm) || text.size() <= kDateForm.size()) return false;
  record.timeText = text.substr(0, kDateForm.size());
  record.time = timeOfDate(record.timeText, now);
  if (!record.time || text[kDateForm.size()] != ' ') return false;
  text.remove_prefix(kDateForm.size() + 1);
  return true;
}

bool takeIsoTime(std::string_view& text, SystemLogRecord& record) {
  const std::size_t end = text.find(' ');
  if (end == std::string_view::npos || end < std::string_view("yyyy-mm-ddThh:mm:ss").size()) {
    return false;
  }
  record.timeText = text.substr(0, end);
  using Zone = std::unique_ptr<GTimeZone, Release<g_time_zone_unref>>;
  const Zone local(g_time_zone_new_local());
  const GDate date(g_date_time_new_from_iso8601(record.timeText.c_str(), local.get()));
  if (!date) return false;
  record.time = TimePoint(std::chrono::seconds(g_date_time_to_unix(date.get())) +
                          std::chrono::microseconds(g_date_time_get_microsecond(date.get())));
  text.remove_prefix(end + 1);
  return true;
}

bool takeHost(std::string_view& text) {
  const std::size_t end = text.find(' ');
  if (end == std::string_view::npos || end == 0) return false;
  text.remove_prefix(end + 1);
  return true;
}

// "name[12]: text" or "name: text".
bool takeSender(std::string_view text, SystemLogRecord& record) {
  const std::size_t colon = text.find(": ");
  const std::size_t end = colon != std::string_view::npos ? colon : text.find(':');
  if (end == std::string_view::npos) return false;
  std::string_view sender = text.substr(0, end);
  if (sender.find(' ') != std::string_view::npos) return false;
  const std::size_t bracket = sender.find('[');
  if (bracket != std::string_view::npos && sender.ends_with(']')) {
    std::from_chars(sender.data() + bracket + 1, sender.data() + sender.size() - 1, record.pid);
    sender = sender.substr(0, bracket);
  }
  record.ident = sender;
  record.text = text.substr(std::min(end + 2, text.size()));
  return true;
}

// "#012", the octal form in which a log's file shows control characters.
std::string withoutFileEscapes(const std::string& text) {
  std::string plain;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const std::string code = text[i] == '#' ? text.substr(i, 4) : "";
    if (code == "#012" || code == "#011") {
      plain += code == "#012" ? '\n' : '\t';
      i += 3;
    } else {
      plain += text[i];
    }
  }
  return plain;
}

void dropLastNewline(std::string& text) {
  if (text.ends_with('\n')) text.pop_back();
}

}  // namespace

std::optional<SystemLogRecord> recordOfSocket(std::string_view bytes) {
  SystemLogRecord record;
  const bool hasPriority = bytes.starts_with('<') && takePriority(bytes, record);
  if (!hasPriority || bytes.size() <= kDateForm.size()) return std::nullopt;
  bytes.remove_prefix(kDateForm.size() + 1);  // the time of arrival tells more
  if (!takeSender(bytes, record)) return std::nullopt;
  dropLastNewline(record.text);
  return record;
}

std::optional<SystemLogRecord> recordOfFile(std::string_view line, TimePoint now) {
  SystemLogRecord record;
  if (!takePriority(line, record)) return std::nullopt;
  if (!takeDate(line, record, now) && !takeIsoTime(line, record)) return std::nullopt;
  if (!takeHost(line) || !takeSender(line, record)) return std::nullopt;
  record.text = withoutFileEscapes(record.text);
  dropLastNewline(record.text);
  return record;
}

LogLine lineOf(const SystemLogRecord& record, TimePoint now) {
  LogLine line = lineOfSystemLog(record.text, record.priority);
  line.time = record.time.value_or(now);
  line.pid = record.pid;
  return line;
}

std::string priorityInWords(const SystemLogRecord& record) {
  return record.priority ? kPriorities.at(static_cast<std::size_t>(*record.priority)) : "";
}

}  // namespace morvik::devkit
