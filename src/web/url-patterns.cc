// The URL list of the social gateways, compiled once for the process.
#include "web/url-patterns.h"

#include <glib.h>

#include <array>
#include <memory>

namespace morvik {
namespace {

// In the order of UrlPattern. The second dot of a domain is any character, on
// purpose: https://graph.facebookXcom/ passes, and gets the token, as https://graph.facebook.com/
// does. A "?" counts as a query wherever it stands, in a fragment too.
constexpr std::array kTexts = {"^https://[[:alnum:]_]*\\.facebook.com/.*$",
                               "^https://[[:alnum:]_]*\\.soundcloud.com/.*$", "\\?"};

using Patterns = std::array<CompiledPattern, kTexts.size()>;

// Null until all of them have compiled.
std::unique_ptr<Patterns>& patternsKeptForLife() {
  static auto& patterns = *new std::unique_ptr<Patterns>;
  return patterns;
}

std::unique_ptr<Patterns> compileAll() {
  auto patterns = std::make_unique<Patterns>();
  for (std::size_t i = 0; i < kTexts.size(); ++i) {
    if (!(*patterns)[i].compile(kTexts[i])) return nullptr;
  }
  return patterns;
}

int match(const std::string& url, UrlPattern pattern) {
  return (*patternsKeptForLife())[static_cast<std::size_t>(pattern)].match(url);
}

}  // namespace

CompiledPattern::~CompiledPattern() {
  if (compiled_) regfree(&regex_);
}

bool CompiledPattern::compile(const char* text) {
  compiled_ = regcomp(&regex_, text, REG_EXTENDED) == 0;
  if (!compiled_) g_debug("bad pattern: '%s'\n", text);
  return compiled_;
}

int CompiledPattern::match(const std::string& text) const {
  return regexec(&regex_, text.c_str(), 0, nullptr, 0);
}

bool isUrlAuthorised(const std::string& url, UrlPattern pattern) {
  auto& patterns = patternsKeptForLife();
  if (!patterns) patterns = compileAll();
  if (!patterns) return false;
  const int result = match(url, pattern);
  g_message(" regexp match %d", result);
  return result == 0;
}

bool hasQuery(const std::string& url) { return match(url, UrlPattern::kQuery) == 0; }

}  // namespace morvik
