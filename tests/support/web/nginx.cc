// nginx as a child process. It inherits sockets that listen already, so that the ports are free
// ones for certain, and connections wait in them until it has started.
#include "support/web/nginx.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <stdexcept>

#include "support/file-content.h"
#include "support/process.h"

namespace morvik::test {
namespace {

void makeCertificate(const std::string& folder) {
  const std::string command =
      "openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes -days 1"
      " -subj /CN=localhost -addext subjectAltName=DNS:localhost -keyout " +
      folder + "/key.pem -out " + folder + "/certificate.pem 2>" + folder + "/openssl.log";
  if (std::system(command.c_str()) != 0) throw std::runtime_error("openssl made no certificate");
}

}  // namespace

Nginx::Nginx(const std::string& locations) {
  for (const char* part : {"files", "bodies"}) std::filesystem::create_directory(folder_ / part);
  const Listener plain = listenOnLoopback();
  const Listener tls = listenOnLoopback();
  port_ = plain.port;
  tlsPort_ = tls.port;
  makeCertificate(folder_.path());
  std::ofstream(folder_ / "nginx.conf") << configuration(locations);
  start(plain.socket, tls.socket);
  close(plain.socket);
  close(tls.socket);
}

Nginx::~Nginx() {
  kill(pid_, SIGTERM);  // it takes its worker along
  waitpid(pid_, nullptr, 0);
}

std::string Nginx::tlsUrl(const std::string& path) const {
  return "https://localhost:" + std::to_string(tlsPort_) + path;
}

void Nginx::file(const std::string& name, std::string_view bytes) const {
  std::ofstream stream(folder_ / ("files/" + name), std::ios::binary);
  stream << bytes << std::flush;
  if (!stream) throw std::runtime_error("cannot write " + name);
}

// nginx names the files by numbers that begin with zeros, and grow.
std::vector<std::string> Nginx::bodies() const {
  std::vector<std::filesystem::path> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder_ / "bodies"))
    names.push_back(entry.path());
  std::ranges::sort(names);
  std::vector<std::string> bodies;
  for (const auto& name : names) bodies.push_back(contentOf(name));
  return bodies;
}

std::string Nginx::errors() const { return contentOf(folder_ / "error.log"); }

// In the foreground, with every file in its own folder, which belongs to root when root runs the
// tests. A body is read when it is to be passed on, so "/bodies" passes it to the server itself.
std::string Nginx::configuration(const std::string& locations) const {
  const std::string folder = folder_.path();
  std::string temporary;
  for (const char* user : {"proxy", "fastcgi", "uwsgi", "scgi"})
    temporary += std::string(user) + "_temp_path " + folder + "/temporary;\n";
  return "daemon off;\nuser root;\npid " + folder + "/pid;\nerror_log " + folder +
         "/error.log;\nevents { worker_connections 64; }\nhttp {\naccess_log off;\n" + temporary +
         "client_body_temp_path " + folder + "/bodies;\nclient_max_body_size 0;\n" +
         "proxy_http_version 1.1;\n" + "server {\nlisten " + host() + ";\nlisten " + tlsHost() +
         " ssl;\nssl_certificate " + folder + "/certificate.pem;\nssl_certificate_key " + folder +
         "/key.pem;\nroot " + folder + ";\n" +
         "location = /bodies { client_body_in_file_only on; proxy_pass http://" + host() +
         "/taken; }\nlocation = /taken { default_type text/plain; return 200 taken; }\n" +
         locations + "\n}\n}\n";
}

void Nginx::start(int plain, int tls) {
  const std::string configurationFile = folder_ / "nginx.conf";
  const std::string log = folder_ / "error.log";
  const std::string sockets = "NGINX=" + std::to_string(plain) + ";" + std::to_string(tls) + ";";
  const pid_t parent = getpid();
  const auto prepare = [&](int& /*complaints*/) -> const char* {
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (getppid() != parent) return "its parent died before it could be watched";
    for (const int socket : {plain, tls}) fcntl(socket, F_SETFD, 0);
    return nullptr;
  };
  pid_ = startProcess({.program = NGINX,
                       .arguments = {"nginx", "-e", log, "-c", configurationFile},
                       .environment = {sockets},
                       .prepare = prepare});
}

}  // namespace morvik::test
