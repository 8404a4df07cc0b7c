// A web server of an application's own, for one that asks a server on the web and is to be tried
// without any.
#pragma once

#include <libsoup/soup.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "device/owned.h"

namespace morvik::devkit {

/// What the server answers to one path.
struct BesideAnswer {
  std::string path;                 ///< of the request, without the query
  unsigned status = 200;            ///< of the answer
  std::string type = "text/plain";  ///< of the answer's body
  std::string body;                 ///< `${form}` and `${header:NAME}` stand for what came in
  std::vector<std::string> needs;   ///< names of headers without which the answer is 401
};

/// What `beside.json` in an application's folder says; docs/run.md describes the file.
struct BesidePlan {
  std::string address;  ///< where the application begins: a path, with a query perhaps
  std::vector<BesideAnswer> answers;
};

/// Whether the application asks for a server of its own.
bool wantsBesideServer(const std::filesystem::path& folder);

/// Reads `beside.json` and the files that it names. False when it makes no sense, with the reason
/// in `trouble`.
[[nodiscard]] bool readBesidePlan(const std::filesystem::path& folder, BesidePlan& plan,
                                  std::string& trouble);

/// HTTP on a free port of 127.0.0.1, on the thread-default main context.
class BesideServer {
 public:
  /// Gets a line for each request: "GET /weather.json: 200".
  using Heard = std::function<void(const std::string& line)>;

  BesideServer(BesidePlan plan, Heard heard);
  ~BesideServer();
  BesideServer(const BesideServer&) = delete;
  BesideServer& operator=(const BesideServer&) = delete;

  /// Called once. False when it cannot listen, with the reason in `trouble`.
  [[nodiscard]] bool start(std::string& trouble);

  /// "http://127.0.0.1:PORT/PATH", for the launch line; valid after a successful `start`.
  const std::string& address() const { return address_; }

 private:
  static void onRequest(SoupServer* server, SoupServerMessage* message, const char* path,
                        GHashTable* query, gpointer self);
  void answer(SoupServerMessage* message, const std::string& path) const;

  BesidePlan plan_;
  Heard heard_;
  GOwned<SoupServer> server_;
  std::string address_;
};

}  // namespace morvik::devkit
