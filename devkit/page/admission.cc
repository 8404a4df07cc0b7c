// Host, Origin and token.
#include "page/admission.h"

#include <unistd.h>

#include <array>
#include <utility>

namespace morvik::devkit {
namespace {

constexpr std::size_t kTokenBytes = 16;

// Looks at every byte, whatever the first ones were.
bool sameInConstantTime(std::string_view left, std::string_view right) {
  if (left.size() != right.size()) return false;
  volatile unsigned char difference = 0;
  for (std::size_t i = 0; i < left.size(); ++i) {
    difference = static_cast<unsigned char>(difference | (left[i] ^ right[i]));
  }
  return difference == 0;
}

}  // namespace

std::string freshToken() {
  std::array<unsigned char, kTokenBytes> bytes{};
  if (getentropy(bytes.data(), bytes.size()) != 0) return "";
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string token;
  for (const unsigned char byte : bytes) {
    token += kDigits[byte >> 4U];
    token += kDigits[byte & 15U];
  }
  return token;
}

Admission::Admission(std::string token, std::uint16_t port)
    : token_(std::move(token)), port_(port) {}

Admission::Verdict Admission::forFile(const Request& request) const {
  if (request.method != "GET" && request.method != "HEAD") return Verdict::kWrongMethod;
  if (!request.host || !isOurs(*request.host)) return Verdict::kForeign;
  if (request.origin && !isOurOrigin(*request.origin)) return Verdict::kForeign;
  return nameIn(request.path) ? Verdict::kWelcome : Verdict::kUnknown;
}

Admission::Verdict Admission::forSocket(const Request& request) const {
  if (request.method != "GET") return Verdict::kWrongMethod;
  return request.origin ? forFile(request) : Verdict::kForeign;
}

std::optional<std::string_view> Admission::nameIn(std::string_view path) const {
  const std::size_t before = token_.size() + 2;  // a slash on either side
  if (path.size() < before || path.front() != '/' || path[before - 1] != '/') return std::nullopt;
  if (!sameInConstantTime(path.substr(1, token_.size()), token_)) return std::nullopt;
  return path.substr(before);
}

std::string Admission::address() const {
  return "http://127.0.0.1:" + std::to_string(port_) + "/" + token_ + "/";
}

bool Admission::isOurs(std::string_view host) const {
  const std::string port = ":" + std::to_string(port_);
  return host == "127.0.0.1" + port || host == "localhost" + port;
}

bool Admission::isOurOrigin(std::string_view origin) const {
  constexpr std::string_view kScheme = "http://";
  return origin.starts_with(kScheme) && isOurs(origin.substr(kScheme.size()));
}

}  // namespace morvik::devkit
