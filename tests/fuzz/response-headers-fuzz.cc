// What an HTTP server answers, over a real connection: whatever it is, the script gets an object
// with two texts. An input is all that the server sends before it closes.
#include <glib.h>

#include <cstdlib>
#include <string>

#include "fuzz/fuzz.h"
#include "fuzz/live-script.h"
#include "support/web/recording-server.h"
#include "web/http-call.h"

namespace morvik::test {
namespace {

// Proxies that the surroundings name must not stand between libcurl and this server.
RecordingServer& serverKeptForLife() {
  static auto& server = *new RecordingServer;
  setenv("no_proxy", "127.0.0.1", 1);
  return server;
}

}  // namespace

void fuzz(std::string_view input) {
  const Turn turn;
  RecordingServer& server = serverKeptForLife();
  server.answerWith(std::string(input));
  v8::Isolate* isolate = v8::Isolate::GetCurrent();
  v8::Local<v8::Value> result;
  require(httpCall(isolate, server.url(), nullptr, {}, true).ToLocal(&result),
          "a call gives something");
  server.takeRequest();
  require(result->IsObject(), "an object");
  const std::string header = textOf(result.As<v8::Object>(), "header");
  textOf(result.As<v8::Object>(), "content");
  require(header.empty() || g_ascii_strncasecmp(header.c_str(), "HTTP/", 5) == 0,
          "headers begin with a status line");
}

}  // namespace morvik::test
