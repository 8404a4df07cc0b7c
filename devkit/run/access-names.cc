// Patterns of the engine's texts and of the source in front of the mark.
#include "run/access-names.h"

#include <algorithm>

#include "api/table.h"
#include "device/owned.h"

namespace morvik::devkit {
namespace {

// How much of a source line is looked at; a packed script is one very long line.
constexpr std::size_t kLongestPrefix = 200;

using Pattern = std::unique_ptr<GRegex, Release<g_regex_unref>>;

// What the first group of the pattern matches; nothing when the text does not match.
std::optional<std::string> match(const char* pattern, const std::string& text) {
  const Pattern regex(g_regex_new(pattern, G_REGEX_RAW, GRegexMatchFlags{}, nullptr));
  GMatchInfo* info = nullptr;
  const gboolean found = g_regex_match(regex.get(), text.c_str(), GRegexMatchFlags{}, &info);
  const GText group(found != FALSE ? g_match_info_fetch(info, 1) : nullptr);
  g_match_info_free(info);
  if (!group) return std::nullopt;
  return std::string(group.get());
}

bool isMorvikName(const std::string& name) { return hasObject("morvik." + name); }

std::optional<MissingAccess> onMorvik(const std::optional<std::string>& name) {
  if (!name || !isMorvikName(*name)) return std::nullopt;
  return MissingAccess{"morvik." + *name, *name};
}

std::optional<MissingAccess> onSocial(const std::optional<std::string>& name) {
  if (!name || !hasObject("social." + *name)) return std::nullopt;
  return MissingAccess{"social." + *name, *name};
}

// The mark stands below the member that was to be read: in front of it stands what is undefined.
std::string sourceBefore(const ExceptionReport& report) {
  const std::string before = report.sourceLine.substr(0, report.column);
  return before.substr(before.size() - std::min(before.size(), kLongestPrefix));
}

std::optional<MissingAccess> unreadable(const ExceptionReport& report) {
  if (!report.text.starts_with("TypeError: Cannot read properties of undefined")) {
    return std::nullopt;
  }
  const std::string source = sourceBefore(report);
  if (auto found = onMorvik(match(R"(\bmorvik\s*\.\s*(\w+)\s*[.\[]\s*['"]?$)", source))) {
    return found;
  }
  if (auto found =
          onMorvik(match(R"(\bmorvik\s*\[\s*['"](\w+)['"]\s*\]\s*[.\[]\s*['"]?$)", source))) {
    return found;
  }
  if (auto found = onSocial(match(R"(\bsocial\s*\.\s*(\w+)\s*[.\[]\s*['"]?$)", source))) {
    return found;
  }
  return onMorvik(match(R"((?<![\w.\])])(\w+)\s*[.\[]\s*['"]?$)", source));
}

std::optional<std::string> undefinedName(const ExceptionReport& report) {
  return match(R"(^ReferenceError: (\w+) is not defined$)", report.text);
}

}  // namespace

std::optional<MissingAccess> missingAccess(const ExceptionReport& report) {
  if (auto found = unreadable(report)) return found;
  const char* destructured =
      R"(^TypeError: Cannot destructure .* of 'morvik\.(\w+)' as it is undefined)";
  if (auto found = onMorvik(match(destructured, report.text))) return found;
  if (undefinedName(report) == "http") return MissingAccess{"http", "http"};
  return std::nullopt;
}

std::optional<std::string> misplacedObject(const ExceptionReport& report) {
  auto name = undefinedName(report);
  if (!name || !isMorvikName(*name)) return std::nullopt;
  return name;
}

}  // namespace morvik::devkit
