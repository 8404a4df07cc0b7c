// The tool as a program, whose lines tell where to attach.
#include "debug-fixture.h"

#include <algorithm>

#include "support/file-content.h"

namespace morvik::test {

using namespace devkit;

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kListening = "debugger: listening on ";

}  // namespace

std::string scriptAddress(const fs::path& folder) {
  return "file://" + fs::canonical(folder).string() + "/main.js";
}

void DebugTest::start(const std::vector<std::string>& words) {
  std::vector<std::string> command{MORVIK_DEV, "debug", "--port=0"};
  command.insert(command.end(), words.begin(), words.end());
  if (std::ranges::find(words, "--page=0") == words.end()) command.emplace_back("--no-page");
  run_ = std::make_unique<Program>(command);
}

std::string DebugTest::target() const {
  const std::string said = run_->waitFor(std::string(kListening));
  const std::size_t from = said.rfind(kListening) + kListening.size();
  return run_->waitForLine(from);
}

void DebugTest::waitForLaunches(int count) const {
  waitUntil("the launch",
            [this, count] { return countOf(std::string(kListening), run_->output()) == count; });
}

std::unique_ptr<DebugClient> DebugTest::attach() {
  auto client = std::make_unique<DebugClient>(loop_, target());
  EXPECT_TRUE(client->isOpen());
  client->enable();
  return client;
}

int DebugTest::setBreakpoint(DebugClient& client, const fs::path& folder, const std::string& text) {
  const std::string source = contentOf(folder / "main.js");
  const auto end = source.begin() + static_cast<std::ptrdiff_t>(source.find(text));
  const auto line = std::count(source.begin(), end, '\n');
  const Json set = client.call("Debugger.setBreakpointByUrl",
                               {{"url", scriptAddress(folder)}, {"lineNumber", line}});
  EXPECT_EQ(set["locations"].size(), 1U) << set;
  return static_cast<int>(line) + 1;
}

}  // namespace morvik::test
