// JSON over HTTP to the driver.
#include "support/browser/web-driver.h"

#include <curl/curl.h>
#include <glib.h>

#include <memory>

namespace morvik::test {
namespace {

using Json = WebDriver::Json;

// How long a test waits for what must come. A passing test never waits that long, but where many
// share a processor a browser takes its time.
constexpr int kPatienceMs = 60000;
constexpr long kAnswerPatienceMs = 180000;

// How the protocol marks an element.
constexpr const char* kElementKey = "element-6066-11e4-a52e-4f735466cecf";

template <auto release>
struct Release {
  void operator()(auto* thing) const { release(thing); }
};
using Curl = std::unique_ptr<CURL, Release<curl_easy_cleanup>>;
using Headers = std::unique_ptr<curl_slist, Release<curl_slist_free_all>>;

std::size_t append(char* bytes, std::size_t size, std::size_t count, void* text) {
  static_cast<std::string*>(text)->append(bytes, size * count);
  return size * count;
}

std::string transfer(const char* method, const std::string& address, const std::string& body) {
  const Curl curl(curl_easy_init());
  const Headers headers(curl_slist_append(nullptr, "Content-Type: application/json"));
  std::string answer;
  curl_easy_setopt(curl.get(), CURLOPT_URL, address.c_str());
  curl_easy_setopt(curl.get(), CURLOPT_CUSTOMREQUEST, method);
  curl_easy_setopt(curl.get(), CURLOPT_PROXY, "");
  curl_easy_setopt(curl.get(), CURLOPT_TIMEOUT_MS, kAnswerPatienceMs);
  curl_easy_setopt(curl.get(), CURLOPT_WRITEFUNCTION, append);
  curl_easy_setopt(curl.get(), CURLOPT_WRITEDATA, &answer);
  if (!body.empty()) {
    curl_easy_setopt(curl.get(), CURLOPT_HTTPHEADER, headers.get());
    curl_easy_setopt(curl.get(), CURLOPT_POSTFIELDS, body.c_str());
  }
  const CURLcode code = curl_easy_perform(curl.get());
  if (code != CURLE_OK) throw WebDriverError(address + ": " + curl_easy_strerror(code));
  return answer;
}

std::string bytesOf(const std::string& base64) {
  gsize size = 0;
  const std::unique_ptr<guchar, Release<g_free>> bytes(g_base64_decode(base64.c_str(), &size));
  return {reinterpret_cast<const char*>(bytes.get()), size};
}

}  // namespace

WebDriver::WebDriver(std::string driver, const Json& capabilities) : driver_(std::move(driver)) {
  const Json begun = call("POST", "/session", {{"capabilities", {{"alwaysMatch", capabilities}}}});
  session_ = "/session/" + begun.at("sessionId").get<std::string>();
  ask("POST", "/timeouts", {{"script", 2 * kPatienceMs}, {"pageLoad", kPatienceMs}});
}

WebDriver::~WebDriver() {
  try {
    ask("DELETE", "");
  } catch (const std::exception&) {  // a browser that is gone already
  }
}

Json WebDriver::call(const char* method, const std::string& path, const Json& body) const {
  const std::string text = body.is_null() ? "" : body.dump();
  const Json answer = Json::parse(transfer(method, driver_ + path, text));
  Json value = answer.value("value", Json());
  if (value.is_object() && value.contains("error")) {
    throw WebDriverError(value["error"].get<std::string>() + ": " +
                         value.value("message", std::string()));
  }
  return value;
}

void WebDriver::open(const std::string& address) { ask("POST", "/url", {{"url", address}}); }

void WebDriver::reload() { ask("POST", "/refresh", Json::object()); }

std::string WebDriver::openWindow() {
  const Json window = ask("POST", "/window/new", {{"type", "window"}});
  switchTo(window.at("handle"));
  return window.at("handle");
}

std::string WebDriver::window() const { return ask("GET", "/window"); }

void WebDriver::switchTo(const std::string& window) {
  ask("POST", "/window", {{"handle", window}});
}

void WebDriver::closeWindow() { ask("DELETE", "/window"); }

std::vector<std::string> WebDriver::windows() const { return ask("GET", "/window/handles"); }

Json WebDriver::run(const std::string& body, const Json& arguments) const {
  return ask("POST", "/execute/sync", {{"script", body}, {"args", arguments}});
}

Json WebDriver::runAsync(const std::string& body) const {
  const std::string script =
      "const done = arguments[arguments.length - 1];"
      "(async () => {" +
      body +
      "})().then("
      "(value) => done({value}), (error) => done({error: String(error)}));";
  const Json outcome = ask("POST", "/execute/async", {{"script", script}, {"args", Json::array()}});
  if (outcome.contains("error")) throw WebDriverError(outcome["error"].get<std::string>());
  return outcome.value("value", Json());
}

Json WebDriver::waitFor(const std::string& expression) const {
  const std::string script = R"js(
    const end = performance.now() + )js" +
                             std::to_string(kPatienceMs) + R"js(;
    let last = null;
    for (;;) {
      try {
        last = )js" + expression +
                             R"js(;
        if (last) return last;
      } catch (error) {
        last = String(error);
      }
      if (performance.now() > end) throw new Error('it is still ' + JSON.stringify(last));
      await new Promise((again) => setTimeout(again, 10));
    })js";
  try {
    return runAsync(script);
  } catch (const WebDriverError& error) {
    throw WebDriverError("waited in vain for " + expression + ": " + error.what());
  }
}

std::string WebDriver::element(const std::string& selector) const {
  return ask("POST", "/element", {{"using", "css selector"}, {"value", selector}}).at(kElementKey);
}

void WebDriver::click(const std::string& selector) const {
  ask("POST", "/element/" + element(selector) + "/click", Json::object());
}

void WebDriver::type(const std::string& selector, const std::string& text) const {
  ask("POST", "/element/" + element(selector) + "/value", {{"text", text}});
}

void WebDriver::fill(const std::string& selector, const std::string& text) const {
  ask("POST", "/element/" + element(selector) + "/clear", Json::object());
  type(selector, text);
}

void WebDriver::press(const std::string& keys) const {
  Json actions = Json::array();
  for (const char* at = keys.c_str(); *at != '\0'; at = g_utf8_next_char(at)) {
    const std::string key(at, static_cast<const char*>(g_utf8_next_char(at)));
    for (const char* type : {"keyDown", "keyUp"})
      actions.push_back({{"type", type}, {"value", key}});
  }
  ask("POST", "/actions",
      {{"actions", {{{"type", "key"}, {"id", "keyboard"}, {"actions", actions}}}}});
}

std::string WebDriver::text(const std::string& selector) const {
  return ask("GET", "/element/" + element(selector) + "/text");
}

void WebDriver::drag(const std::string& from, const std::string& to) const {
  const auto move = [this](const std::string& selector, int beside) {
    return Json{{"type", "pointerMove"},
                {"origin", {{kElementKey, element(selector)}}},
                {"duration", 0},
                {"x", beside},
                {"y", 0}};
  };
  constexpr int kBeside = 20;  // pixels: a way that leads there
  const Json actions{move(from, 0),       {{"type", "pointerDown"}, {"button", 0}},
                     move(from, kBeside), move(to, kBeside),
                     move(to, 0),         {{"type", "pointerUp"}, {"button", 0}}};
  ask("POST", "/actions",
      {{"actions",
        {{{"type", "pointer"},
          {"id", "mouse"},
          {"parameters", {{"pointerType", "mouse"}}},
          {"actions", actions}}}}});
}

std::string WebDriver::screenshot() const { return bytesOf(ask("GET", "/screenshot")); }

Json WebDriver::console() const { return ask("POST", "/se/log", {{"type", "browser"}}); }

Json WebDriver::inspect(const std::string& command, const Json& parameters) const {
  return ask("POST", "/goog/cdp/execute", {{"cmd", command}, {"params", parameters}});
}

}  // namespace morvik::test
