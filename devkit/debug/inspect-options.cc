// --inspect and its kin.
#include "debug/inspect-options.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <string_view>

namespace morvik::devkit {
namespace {

constexpr std::string_view kInspect = "--inspect";
constexpr std::string_view kBreak = "--inspect-brk";
constexpr std::string_view kId = "--inspect-id=";

// Nothing when it is no port.
std::optional<std::uint16_t> portIn(std::string_view text) {
  std::uint16_t port = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
  const bool whole = error == std::errc() && end == text.data() + text.size();
  return whole ? std::optional(port) : std::nullopt;
}

// It stands in an address, so it holds nothing that would need another spelling there.
bool isGoodId(std::string_view id) {
  return !id.empty() && std::ranges::all_of(id, [](unsigned char letter) {
    return std::isalnum(letter) != 0 || letter == '-';
  });
}

// "--inspect" or "--inspect=PORT". False when the argument is another one.
bool takePort(std::string_view argument, std::string_view name, InspectOptions& options,
              std::string& trouble) {
  if (argument == name) {
    options.port = kUsualDebugPort;
    return true;
  }
  if (!argument.starts_with(name) || argument[name.size()] != '=') return false;
  options.port = portIn(argument.substr(name.size() + 1));
  if (!options.port) trouble = std::string(argument) + ": a port is a number from 0 to 65535";
  return true;
}

void takeId(std::string_view argument, InspectOptions& options, std::string& trouble) {
  if (!argument.starts_with(kId)) return;
  options.id = argument.substr(kId.size());
  if (!isGoodId(options.id)) trouble = std::string(argument) + ": letters, digits and - only";
}

}  // namespace

std::optional<InspectOptions> readInspectOptions(int count, char** vector, std::string& trouble) {
  InspectOptions options;
  for (int i = 1; i < count && trouble.empty(); ++i) {
    const std::string_view argument = vector[i];
    if (takePort(argument, kBreak, options, trouble)) {
      options.breakFirst = true;
    } else if (!takePort(argument, kInspect, options, trouble)) {
      takeId(argument, options, trouble);
    }
  }
  return trouble.empty() ? std::optional(options) : std::nullopt;
}

}  // namespace morvik::devkit
