// Windows, and what a page shows in them.
#include "browser-fixture.h"

namespace morvik::test {
namespace {

std::string found(const std::string& selector) {
  return "document.querySelector(" + quoted(selector) + ")";
}

}  // namespace

std::string quoted(const std::string& text) { return nlohmann::json(text).dump(); }

std::string attributeOf(const std::string& selector, const std::string& name) {
  return found(selector) + ".getAttribute(" + quoted(name) + ")";
}

BrowserTest::BrowserTest() {
  browser_.show(1280, 900, /*isDark=*/false);
  driver_.console();  // what older pages said
}

void BrowserTest::TearDown() {
  for (const auto& line : driver_.console()) {
    EXPECT_NE(line.at("level"), "SEVERE") << line.dump();
  }
  for (const std::string& window : driver_.windows()) {
    if (window == window_) continue;
    driver_.switchTo(window);
    driver_.closeWindow();
  }
  driver_.switchTo(window_);
  driver_.open("about:blank");
}

void BrowserTest::openPage(const std::string& address) {
  driver_.open(address);
  waitUntilGreeted();
}

void BrowserTest::waitUntilGreeted() { expect("document.body.dataset.connection === 'open'"); }

void BrowserTest::expectThere(const std::string& selector) { expect(found(selector)); }

void BrowserTest::expectText(const std::string& selector, const std::string& text) {
  expect(found(selector) + ".textContent.includes(" + quoted(text) + ")");
}

void BrowserTest::expectAttribute(const std::string& selector, const std::string& name,
                                  const std::string& value) {
  expect(attributeOf(selector, name) + " === " + quoted(value));
}

void BrowserTest::expectLed(const std::string& color) {
  expect(
      "document.getElementById('led').hasAttribute('data-lit') && "
      "getComputedStyle(document.getElementById('led-disc')).fill === " +
      quoted(color));
}

void BrowserTest::tabTo(const std::string& selector) {
  constexpr int kMostStops = 60;
  const std::string isThere =
      "return document.activeElement?.matches(" + quoted(selector) + ") ?? false";
  for (int i = 0; i < kMostStops && driver_.run(isThere) != true; ++i) driver_.press(keys::kTab);
  ASSERT_EQ(driver_.run(isThere), true) << "the Tab key does not lead to " << selector;
}

void BrowserTest::watch(const std::string& expression) {
  driver_.run(
      "window.noted = [];"
      "const note = () => {"
      "  if (!window.noted) return;"
      "  const value = " +
      expression +
      ";"
      "  if (window.noted.at(-1)?.value !== value) window.noted.push({ time: performance.now(), "
      "value });"
      "  requestAnimationFrame(note);"
      "};"
      "note();");
}

void BrowserTest::expectWatched(const nlohmann::json& values) {
  expect("JSON.stringify(window.noted.map(({ value }) => value)) === " + quoted(values.dump()));
}

nlohmann::json BrowserTest::watched() {
  return driver_.run("const all = window.noted; window.noted = null; return all;");
}

}  // namespace morvik::test
