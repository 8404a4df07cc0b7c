// A proxy for HTTPS that stands in for every site of the web: it ends TLS itself, with a
// certificate for whatever name it is asked for, and hands the requests to a server of the test's.
#pragma once

#include <openssl/evp.h>
#include <openssl/ssl.h>
#include <openssl/x509.h>

#include <mutex>
#include <string>
#include <vector>

#include "host/owned.h"
#include "support/web/loopback-server.h"

namespace morvik::test {

/// Serves one connection after the other from a thread of its own. Nothing leaves the loopback
/// interface: whoever is asked for, `site` answers.
class TlsProxy {
 public:
  /// `site` is "127.0.0.1:port" of a server without TLS.
  explicit TlsProxy(const std::string& site);

  /// "http://127.0.0.1:port", as the variable https_proxy takes it.
  [[nodiscard]] std::string url() const { return "http://" + server_.host(); }

  /// The "host:port" of every connection that was asked for, in order.
  std::vector<std::string> asked();

  /// From now on the certificates are for this name, whoever is asked for.
  void certifyAs(std::string name);

 private:
  using Key = std::unique_ptr<EVP_PKEY, Release<EVP_PKEY_free>>;
  using Certificate = std::unique_ptr<X509, Release<X509_free>>;
  using Connection = std::unique_ptr<SSL, Release<SSL_free>>;
  using Settings = std::unique_ptr<SSL_CTX, Release<SSL_CTX_free>>;

  void serveOne(int client);
  [[nodiscard]] Certificate certificateFor(const std::string& name) const;
  [[nodiscard]] Settings settingsFor(const std::string& host);

  int sitePort_;
  Key key_;
  std::mutex mutex_;
  std::vector<std::string> asked_;
  std::string certifiedName_;
  LoopbackServer server_;  // the last one: its thread uses the others
};

}  // namespace morvik::test
