// Texts made printable, short and part of a sentence.
#include "device/text.h"

#include "device/owned.h"

namespace morvik::devkit {
namespace {

// In characters; more tells a reader nothing.
constexpr glong kLongestText = 200;
constexpr glong kLongestWord = 40;

std::string cut(const std::string& text, glong length) {
  if (g_utf8_strlen(text.c_str(), -1) <= length) return text;
  const char* end = g_utf8_offset_to_pointer(text.c_str(), length);
  return text.substr(0, static_cast<std::size_t>(end - text.c_str())) + " ...";
}

}  // namespace

std::string printable(std::string_view text) {
  const GText valid(g_utf8_make_valid(text.data(), static_cast<gssize>(text.size())));
  std::string line;
  const char* at = valid.get();
  while (*at != '\0') {
    const char* next = g_utf8_next_char(at);
    const bool visible = g_unichar_isprint(g_utf8_get_char(at)) != FALSE;
    line.append(visible ? std::string_view(at, static_cast<std::size_t>(next - at)) : "?");
    at = next;
  }
  return line;
}

std::string shortened(std::string_view text) { return cutShort(printable(text)); }

std::string cutShort(const std::string& text) { return cut(text, kLongestText); }

std::string cited(const std::string& word) {
  return word.empty() ? "\"\"" : cut(printable(word), kLongestWord);
}

std::string quotedIfAny(const std::string& text) {
  return text.empty() ? "" : " \"" + printable(text) + '"';
}

std::string listed(const std::vector<std::string>& names) {
  std::string list;
  for (const std::string& name : names) list += (list.empty() ? "" : ", ") + cited(name);
  return list.empty() ? "none" : list;
}

std::string joined(const std::vector<std::string>& names, char separator) {
  std::string all;
  for (const std::string& name : names) {
    if (!all.empty()) all += separator;
    all += name;
  }
  return all;
}

std::string thereIsNo(const std::string& what, const std::vector<std::string>& names) {
  return "there is no " + what + (names.size() == 1 ? "; there is " : "; there are ") +
         listed(names);
}

std::string appName(AppNumber application) { return "app " + std::to_string(application); }

std::string inMilliseconds(int length) { return std::to_string(length) + " ms"; }

}  // namespace morvik::devkit
