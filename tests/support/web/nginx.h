// A real web server, nginx, on free ports of the loopback interface: a child process with a
// configuration and a folder of its own, which ends with the test.
#pragma once

#include <sys/types.h>

#include <string>
#include <string_view>
#include <vector>

#include "support/temporary-folder.h"
#include "support/web/loopback-server.h"

namespace morvik::test {

class Nginx {
 public:
  /// Starts a server with these locations, and whatever else may stand in its "server" block. It
  /// takes connections from now on. TLS has a certificate of its own making for "localhost".
  explicit Nginx(const std::string& locations);
  ~Nginx();
  Nginx(const Nginx&) = delete;
  Nginx& operator=(const Nginx&) = delete;

  /// "127.0.0.1:port", without and with TLS.
  [[nodiscard]] std::string host() const { return hostOn(port_); }
  [[nodiscard]] std::string tlsHost() const { return hostOn(tlsPort_); }
  [[nodiscard]] std::string url(const std::string& path) const { return "http://" + host() + path; }
  /// "https://localhost:port" and the path.
  [[nodiscard]] std::string tlsUrl(const std::string& path) const;

  /// Puts a file where the server finds it: the first part of what it is asked for is "/files".
  void file(const std::string& name, std::string_view bytes) const;

  /// The bodies of the requests to "/bodies", in order, byte for byte. Each is there when its
  /// request has been answered.
  [[nodiscard]] std::vector<std::string> bodies() const;

  /// What it has complained about.
  [[nodiscard]] std::string errors() const;

 private:
  [[nodiscard]] std::string configuration(const std::string& locations) const;
  void start(int plain, int tls);

  TemporaryFolder folder_;
  int port_ = 0;
  int tlsPort_ = 0;
  pid_t pid_ = -1;
};

}  // namespace morvik::test
