// A browser at the end of the WebDriver protocol, as the W3C describes it
// (https://www.w3.org/TR/webdriver2/).
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace morvik::test {

/// What the browser refused, or what did not come in time.
class WebDriverError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// One session: a browser with its windows. Everything blocks, and throws a WebDriverError when it
/// fails. Elements are meant by a CSS selector, and the first that it finds counts.
class WebDriver {
 public:
  using Json = nlohmann::json;

  /// Begins a session with a driver at this address, such as "http://127.0.0.1:9515".
  WebDriver(std::string driver, const Json& capabilities);
  /// Ends the session, and with it the browser.
  ~WebDriver();
  WebDriver(const WebDriver&) = delete;
  WebDriver& operator=(const WebDriver&) = delete;

  void open(const std::string& address);
  void reload();

  /// Opens an empty window and goes there. Gives its handle.
  std::string openWindow();
  /// The handle of the window that calls act on.
  std::string window() const;
  void switchTo(const std::string& window);
  /// Closes the window that calls act on; there is none until one is switched to.
  void closeWindow();
  std::vector<std::string> windows() const;

  /// What the body of a function gives.
  Json run(const std::string& body, const Json& arguments = Json::array()) const;
  /// The same for one that gives a promise.
  Json runAsync(const std::string& body) const;
  /// Waits until a JavaScript expression is true, or another value that counts as such, and gives
  /// that. Throws with the expression when it does not come true in time.
  Json waitFor(const std::string& expression) const;

  /// Scrolls there and clicks, as a hand does: what lies on top of the element takes the click.
  void click(const std::string& selector) const;
  /// Types into an element; keys without letters are those of `keys` below.
  void type(const std::string& selector, const std::string& text) const;
  /// Types into whatever has the focus.
  void press(const std::string& keys) const;
  /// Replaces what stands in a field.
  void fill(const std::string& selector, const std::string& text) const;
  std::string text(const std::string& selector) const;
  /// Presses the pointer on the middle of one element, takes it to the middle of another one in
  /// steps, and lets go there. Both must be in sight.
  void drag(const std::string& from, const std::string& to) const;

  /// A PNG of the window.
  std::string screenshot() const;

  /// Lines that the page or the browser wrote to the console since this was asked last; each with
  /// "level" and "message".
  Json console() const;

  /// A command of the browser's own inspection protocol.
  Json inspect(const std::string& command, const Json& parameters) const;

 private:
  Json call(const char* method, const std::string& path, const Json& body) const;
  Json ask(const char* method, const std::string& path, const Json& body = nullptr) const {
    return call(method, session_ + path, body);
  }
  std::string element(const std::string& selector) const;

  std::string driver_;
  std::string session_;  // the path of the session
};

/// Keys that are no letters, as WebDriver writes them.
namespace keys {
inline constexpr const char* kTab = "\ue004";
inline constexpr const char* kEnter = "\ue007";
inline constexpr const char* kSpace = " ";
inline constexpr const char* kEscape = "\ue00c";
inline constexpr const char* kUp = "\ue013";
inline constexpr const char* kRight = "\ue014";
inline constexpr const char* kDown = "\ue015";
inline constexpr const char* kLeft = "\ue012";
}  // namespace keys

}  // namespace morvik::test
