// The proxy that ends TLS.
#include "support/web/tls-proxy.h"

#include <openssl/x509v3.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <utility>

namespace morvik::test {
namespace {

constexpr long kDay = 24L * 3600;

int connectTo(int port) {
  const int site = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const sockaddr_in address = loopback(port);
  if (connect(site, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) abort();
  return site;
}

// Byte by byte, since the first bytes of TLS may stand right behind it.
std::string readHead(int client) {
  std::string head;
  char byte = 0;
  while (!head.ends_with("\r\n\r\n") && recv(client, &byte, 1, 0) == 1) head += byte;
  return head;
}

// "CONNECT host:port HTTP/1.1" names the host and the port.
std::string targetOf(const std::string& head) {
  constexpr std::string_view kMethod = "CONNECT ";
  if (!head.starts_with(kMethod)) return {};
  return head.substr(kMethod.size(), head.find(' ', kMethod.size()) - kMethod.size());
}

// One piece from the client to the site. False at the end.
bool passRequest(SSL* tls, int site) {
  std::array<char, 16384> piece;
  const int count = SSL_read(tls, piece.data(), static_cast<int>(piece.size()));
  return count > 0 && send(site, piece.data(), static_cast<std::size_t>(count), MSG_NOSIGNAL) > 0;
}

bool passAnswer(int site, SSL* tls) {
  std::array<char, 16384> piece;
  const ssize_t count = recv(site, piece.data(), piece.size(), 0);
  return count > 0 && SSL_write(tls, piece.data(), static_cast<int>(count)) > 0;
}

void passAll(SSL* tls, int client, int site) {
  for (;;) {
    std::array<pollfd, 2> ends = {pollfd{client, POLLIN, 0}, pollfd{site, POLLIN, 0}};
    if (SSL_pending(tls) == 0 && poll(ends.data(), ends.size(), -1) < 0) return;
    const bool fromClient = SSL_pending(tls) > 0 || ends[0].revents != 0;
    if (fromClient && !passRequest(tls, site)) return;
    if (ends[1].revents != 0 && !passAnswer(site, tls)) return;
  }
}

}  // namespace

// A client that goes away is nothing to die of.
TlsProxy::TlsProxy(const std::string& site)
    : sitePort_(std::atoi(site.substr(site.find(':') + 1).c_str())),
      key_(EVP_EC_gen("P-256")),
      server_([this](int client) { serveOne(client); }) {
  std::signal(SIGPIPE, SIG_IGN);
}

std::vector<std::string> TlsProxy::asked() {
  const std::lock_guard lock(mutex_);
  return asked_;
}

void TlsProxy::certifyAs(std::string name) {
  const std::lock_guard lock(mutex_);
  certifiedName_ = std::move(name);
}

void TlsProxy::serveOne(int client) {
  const std::string target = targetOf(readHead(client));
  const Settings settings = settingsFor(target.substr(0, target.find(':')));
  constexpr std::string_view kGoOn = "HTTP/1.1 200 Connection established\r\n\r\n";
  if (send(client, kGoOn.data(), kGoOn.size(), MSG_NOSIGNAL) < 0) return;
  {
    const std::lock_guard lock(mutex_);
    asked_.push_back(target);
  }
  const Connection tls(SSL_new(settings.get()));
  SSL_set_fd(tls.get(), client);
  char first = 0;  // a client that does not take the certificate sends nothing
  if (SSL_accept(tls.get()) != 1 || SSL_peek(tls.get(), &first, 1) != 1) return;
  const int site = connectTo(sitePort_);
  passAll(tls.get(), client, site);
  SSL_shutdown(tls.get());
  close(site);
}

TlsProxy::Settings TlsProxy::settingsFor(const std::string& host) {
  std::unique_lock lock(mutex_);
  const std::string name = certifiedName_.empty() ? host : certifiedName_;
  lock.unlock();
  Settings settings(SSL_CTX_new(TLS_server_method()));
  if (SSL_CTX_use_certificate(settings.get(), certificateFor(name).get()) != 1) abort();
  if (SSL_CTX_use_PrivateKey(settings.get(), key_.get()) != 1) abort();
  return settings;
}

TlsProxy::Certificate TlsProxy::certificateFor(const std::string& name) const {
  Certificate certificate(X509_new());
  X509_set_version(certificate.get(), X509_VERSION_3);
  ASN1_INTEGER_set(X509_get_serialNumber(certificate.get()), 1);
  X509_gmtime_adj(X509_getm_notBefore(certificate.get()), -kDay);
  X509_gmtime_adj(X509_getm_notAfter(certificate.get()), kDay);
  X509_set_pubkey(certificate.get(), key_.get());
  X509_NAME* subject =
      X509_get_subject_name(certificate.get());  // clients want one that is not empty
  const auto* text = reinterpret_cast<const unsigned char*>(name.c_str());
  X509_NAME_add_entry_by_txt(subject, "CN", MBSTRING_ASC, text, -1, -1, 0);
  X509_set_issuer_name(certificate.get(), subject);
  const std::string names = "DNS:" + name;
  const std::unique_ptr<X509_EXTENSION, Release<X509_EXTENSION_free>> extension(
      X509V3_EXT_conf_nid(nullptr, nullptr, NID_subject_alt_name, names.c_str()));
  X509_add_ext(certificate.get(), extension.get(), -1);
  if (X509_sign(certificate.get(), key_.get(), EVP_sha256()) == 0) abort();
  return certificate;
}

}  // namespace morvik::test
