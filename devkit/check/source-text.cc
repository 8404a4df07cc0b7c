// Looks at bytes.
#include "check/source-text.h"

#include <glib.h>

#include <algorithm>

#include "device/owned.h"

namespace morvik::devkit {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kUtf8Mark = "\xef\xbb\xbf";
constexpr std::string_view kUtf16Marks[] = {"\xff\xfe", "\xfe\xff"};
// The script engine's heap.
constexpr std::uintmax_t kLargestSource = 10485760;

FolderTrouble at(const std::string& file, const std::string& bytes, std::size_t offset) {
  const std::string_view before = std::string_view(bytes).substr(0, offset);
  const std::size_t lineBegin = before.rfind('\n') + 1;  // 0 where there is none
  return {.file = file,
          .line = 1 + static_cast<int>(std::ranges::count(before, '\n')),
          .column = 1 + static_cast<int>(offset - lineBegin),
          .refuses = false};
}

void tell(FolderTrouble finding, const char* kind, const char* text, const char* cure,
          std::vector<FolderTrouble>& findings) {
  finding.kind = kind;
  finding.text = text;
  finding.cure = cure;
  findings.push_back(std::move(finding));
}

bool isTold(const char* kind, const std::string& file, const std::vector<FolderTrouble>& findings) {
  return std::ranges::any_of(
      findings, [&](const FolderTrouble& one) { return one.kind == kind && one.file == file; });
}

}  // namespace

std::optional<std::string> bytesOf(const fs::path& path) {
  std::error_code error;
  if (!fs::is_regular_file(path, error) || fs::file_size(path, error) > kLargestSource)
    return std::nullopt;
  char* bytes = nullptr;
  gsize length = 0;
  if (g_file_get_contents(path.c_str(), &bytes, &length, nullptr) == FALSE) return std::nullopt;
  const GText owned(bytes);
  return std::string(bytes, length);
}

std::string lineOf(std::string_view text, int line) {
  std::size_t begin = 0;
  for (int now = 1; now < line && begin != std::string_view::npos; ++now) {
    begin = text.find('\n', begin);
    if (begin != std::string_view::npos) ++begin;
  }
  if (begin == std::string_view::npos) return "";
  return std::string(text.substr(begin, text.find('\n', begin) - begin));
}

void checkByteOrderMark(const std::string& file, const std::string& bytes,
                        std::vector<FolderTrouble>& findings) {
  if (bytes.starts_with(kUtf8Mark)) {
    tell(at(file, bytes, 0), "byte-order-mark", "begins with a byte-order mark",
         "It does no harm here, and may to other programs: save as UTF-8 without it.", findings);
  }
  if (std::ranges::any_of(kUtf16Marks,
                          [&](std::string_view mark) { return bytes.starts_with(mark); })) {
    tell(at(file, bytes, 0), "not-utf8", "is UTF-16", "Save it as UTF-8.", findings);
  }
}

void checkSourceBytes(const std::string& file, const std::string& bytes,
                      std::vector<FolderTrouble>& findings) {
  checkByteOrderMark(file, bytes, findings);
  const std::string text = bytes.substr(0, bytes.find('\0'));
  if (text.size() < bytes.size() && !isTold("zero-byte", file, findings)) {
    tell(at(file, bytes, text.size()), "zero-byte",
         "holds a zero byte, and nothing behind it is read", "Save it as text, in UTF-8.",
         findings);
  }
  const char* wrong = nullptr;
  if (g_utf8_validate(text.data(), static_cast<gssize>(text.size()), &wrong) != FALSE) return;
  if (isTold("not-utf8", file, findings)) return;
  tell(at(file, bytes, static_cast<std::size_t>(wrong - text.data())), "not-utf8",
       "is not UTF-8 from here on: scripts get other characters in its place", "Save it as UTF-8.",
       findings);
}

void checkTextFile(const std::string& file, const std::string& bytes,
                   std::vector<FolderTrouble>& findings) {
  const std::size_t zero = bytes.find('\0');
  if (zero != std::string::npos) {
    tell(at(file, bytes, zero), "zero-byte",
         "holds a zero byte, and a script gets nothing behind it",
         "A script can send or play such a file, and not read it.", findings);
    return;
  }
  const std::size_t windows = bytes.find("\r\n");
  if (windows == std::string::npos) return;
  tell(at(file, bytes, windows), "line-ends",
       "has Windows line ends, and a script that reads it finds a \\r at the end of each line",
       "Save it with Unix line ends, or split it at /\\r?\\n/.", findings);
}

std::string sourceIn(const std::string& bytes) {
  const std::string text = bytes.substr(0, bytes.find('\0'));
  return text.starts_with(kUtf8Mark) ? text.substr(kUtf8Mark.size()) : text;
}

}  // namespace morvik::devkit
