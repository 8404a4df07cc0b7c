// The one browser, whose window each test finds empty.
#pragma once

#include <gmock/gmock.h>

#include <string>

#include <nlohmann/json.hpp>

#include "support/browser/browser.h"

namespace morvik::test {

/// Nothing may stand on the browser's console at the end.
class BrowserTest : public ::testing::Test {
 protected:
  BrowserTest();
  void TearDown() override;

  /// The page at this address, opened and greeted.
  void openPage(const std::string& address);
  void waitUntilGreeted();

  /// The page shows what an expression of JavaScript says.
  void expect(const std::string& expression) { driver_.waitFor(expression); }
  /// The page has an element of this CSS selector.
  void expectThere(const std::string& selector);
  /// The first element of this selector has this text somewhere within.
  void expectText(const std::string& selector, const std::string& text);
  /// An attribute of the first element of this selector has this value.
  void expectAttribute(const std::string& selector, const std::string& name,
                       const std::string& value);
  /// The LED glows in this colour, as the browser writes it: "rgb(0, 0, 255)".
  void expectLed(const std::string& color);

  /// Goes by the Tab key alone until this selector has the focus; fails when that does not come.
  void tabTo(const std::string& selector);

  /// From now on notes what an expression gives in each frame of the browser, when it is another
  /// value than in the frame before.
  void watch(const std::string& expression);
  /// Waits until these values were noted, in this order and no others.
  void expectWatched(const nlohmann::json& values);
  /// What was noted since, each as {"time": milliseconds, "value": ...}; nothing is noted any more.
  nlohmann::json watched();

  Browser& browser_ = Browser::shared();
  WebDriver& driver_ = browser_.driver();
  std::string window_ = driver_.window();
};

/// A text as an expression of JavaScript.
std::string quoted(const std::string& text);

/// An expression for the value of an element's attribute.
std::string attributeOf(const std::string& selector, const std::string& name);

}  // namespace morvik::test
