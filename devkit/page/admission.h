// Who may come in: the rules by which the page's server takes or refuses a request, without any
// socket.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace morvik::devkit {

/// 128 random bits in hexadecimal digits. Empty when the system has no randomness to give.
std::string freshToken();

/// The rules of one server. Other people of this machine do not know the token; other sites do not
/// know it either, and their Origin shows them; a foreign name that was made to point at this
/// machine shows in Host.
class Admission {
 public:
  enum class Verdict { kWelcome, kWrongMethod, kForeign, kUnknown };

  /// What a request shows. A header that it does not have is nothing.
  struct Request {
    std::string_view method;
    std::string_view path;
    std::optional<std::string_view> host;
    std::optional<std::string_view> origin;
  };

  /// `port` is the one that the server listens on.
  Admission(std::string token, std::uint16_t port);

  /// A file of the page.
  Verdict forFile(const Request& request) const;
  /// The page's socket: browsers always tell where the page came from that opens one.
  Verdict forSocket(const Request& request) const;

  /// The part of a path behind the token: "index.html" of "/TOKEN/index.html". Nothing when the
  /// token is not there. The time that it takes tells nothing of the token.
  std::optional<std::string_view> nameIn(std::string_view path) const;

  /// The address that opens the page, with a slash at its end.
  std::string address() const;
  const std::string& token() const { return token_; }
  std::uint16_t port() const { return port_; }
  /// A request's Host that names this server by an address of this machine.
  bool isOurs(std::string_view host) const;

 private:
  bool isOurOrigin(std::string_view origin) const;

  std::string token_;
  std::uint16_t port_;
};

}  // namespace morvik::devkit
