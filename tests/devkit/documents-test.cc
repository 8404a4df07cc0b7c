// The documents, done as they say: files are written, commands run, and what they print is what
// stands there. docs/testing.md tells how a block is marked.
#include <csignal>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <regex>

#include "desk-fixture.h"
#include "document-blocks.h"
#include "support/file-content.h"
#include "support/matchers.h"
#include "support/program.h"

namespace morvik::test {
namespace {

namespace fs = std::filesystem;

std::vector<std::string> documents() {
  std::vector<std::string> names{"README.md", "CONTRIBUTING.md"};
  for (const auto& entry : fs::directory_iterator(SOURCE_DIR "/docs")) {
    if (entry.path().extension() == ".md")
      names.push_back("docs/" + entry.path().filename().string());
  }
  std::ranges::sort(names);
  return names;
}

std::vector<DocumentBlock> blocksIn(const std::string& document) {
  return blocksOf(contentOf(fs::path(SOURCE_DIR) / document));
}

std::string joined(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) text += line + '\n';
  return text;
}

// Somebody who follows one document, in a copy of the checkout with the programs built.
class Reader : public DeskTest {
 protected:
  Reader() {
    setenv("XDG_RUNTIME_DIR", folder_.path().c_str(), 1);
    // What the host keeps for life looks like a leak.
    setenv("ASAN_OPTIONS", "detect_leaks=0:verify_asan_link_order=0", 1);
    fs::create_directory(checkout_);
    fs::copy(SOURCE_DIR "/apps", checkout_ / "apps", fs::copy_options::recursive);
    fs::create_directory_symlink(PROGRAMS, checkout_ / "build");
    for (const char* name : {"api", "devkit", "docs", "proto", "script"}) {
      fs::create_directory_symlink(fs::path(SOURCE_DIR) / name, checkout_ / name);
    }
  }
  ~Reader() override {
    unsetenv("XDG_RUNTIME_DIR");
    unsetenv("ASAN_OPTIONS");
  }

  void follow(const std::string& document) {
    for (const DocumentBlock& block : blocksIn(document)) {
      const testing::ScopedTrace place(document.c_str(), static_cast<int>(block.line), "");
      follow(block);
      if (HasFatalFailure()) return;
    }
    endTheOneThatStays();
  }

 private:
  void follow(const DocumentBlock& block) {
    if (block.words.empty() || block.value("unrun")) return;
    if (block.words.front() != "console") return writeFile(block);
    if (block.has("further")) return expectFurther(block.lines);
    const auto commands = commandsOf(block);
    for (std::size_t i = 0; i < commands.size(); ++i) {
      const bool last = i + 1 == commands.size();
      if (last && block.has("stays")) return start(commands[i]);
      runToItsEnd(commands[i], last ? std::stoi(block.value("status").value_or("0")) : 0);
    }
  }

  // A fence with a path behind its language is a file that the reader makes.
  void writeFile(const DocumentBlock& block) const {
    if (block.words.size() < 2) return;
    const fs::path file = checkout_ / block.words[1];
    fs::create_directories(file.parent_path());
    std::ofstream(file) << joined(block.lines);
  }

  [[nodiscard]] std::vector<std::string> inShell(const std::string& text) const {
    return {"/bin/bash", "-c", "cd '" + checkout_.string() + "'\n" + remembered_ + text};
  }

  void runToItsEnd(const DocumentedCommand& command, int status) {
    const ProgramResult result = run(inShell(command.text));
    ASSERT_EQ(result.status, status) << command.text << '\n' << result.output;
    if (command.text.starts_with("export ")) remembered_ += command.text + '\n';
    if (command.output.empty()) return;
    const auto printed = wholeLinesOf(result.output);
    const auto found = findOutput(command.output, printed);
    ASSERT_TRUE(found && (*found == printed.size() || command.output.back() == "..."))
        << command.text << " prints:\n"
        << result.output;
  }

  void start(const DocumentedCommand& command) {
    endTheOneThatStays();
    ASSERT_FALSE(command.output.empty()) << "what does it say first? " << command.text;
    staying_ = std::make_unique<Program>(inShell("exec " + command.text));
    seen_ = 0;
    expectFurther(command.output);
  }

  // Whatever it says in between may stand in front of the first line.
  void expectFurther(std::vector<std::string> documented) {
    ASSERT_TRUE(staying_) << "nothing stays";
    if (seen_ > 0) documented.insert(documented.begin(), "...");
    std::optional<std::size_t> taken;
    const bool came = staying_->saysSoon([&](const std::string& output) {
      auto printed = wholeLinesOf(output);
      printed.erase(printed.begin(), printed.begin() + static_cast<std::ptrdiff_t>(seen_));
      taken = findOutput(documented, printed);
      return taken.has_value();
    });
    ASSERT_TRUE(came) << joined(documented) << "is not in:\n" << staying_->output();
    seen_ += *taken;
  }

  // With Ctrl-C, which a terminal gives to all of a command.
  void endTheOneThatStays() {
    if (!staying_) return;
    kill(-staying_->pid(), SIGINT);
    EXPECT_EQ(staying_->waitForEnd(), 0) << staying_->output();
    staying_.reset();
  }

  fs::path checkout_ = folder_.path() / "checkout";
  std::string remembered_;  // what the reader's shell keeps from command to command
  std::unique_ptr<Program> staying_;
  std::size_t seen_ = 0;  // lines of it that were documented
};

class Documents : public Reader, public testing::WithParamInterface<std::string> {};

TEST_P(Documents, doWhatTheySay) {
  follow(GetParam());
  if (!HasFatalFailure()) expectNothingLeft();
}

INSTANTIATE_TEST_SUITE_P(Each, Documents, testing::ValuesIn(documents()), [](const auto& name) {
  return std::regex_replace(name.param, std::regex("[^A-Za-z0-9]"), "_");
});

using Counts = std::map<std::string, int>;

// Commands that do not run here, by the reason that stands in their blocks.
TEST(DocumentedCommands, thatDoNotRunHereAreFew) {
  Counts unrun;
  for (const std::string& document : documents()) {
    for (const DocumentBlock& block : blocksIn(document)) {
      if (const auto reason = block.value("unrun")) {
        unrun[*reason] += static_cast<int>(commandsOf(block).size());
      }
    }
  }
  // They build with apt's help; open a browser; need a device in a house; use the port that a
  // device has when nothing is said, which another test may have; write to the system's log; ask a
  // registry. What needs the package installed is typed by packaging/in-debian.
  const Counts known{{"system-log", 1}, {"builds", 3},  {"browser", 1},   {"real-device", 1},
                     {"fixed-port", 6}, {"network", 1}, {"installed", 34}};
  EXPECT_EQ(unrun, known);
}

bool isCommand(const std::string& line) {
  static const std::regex command(
      R"(^(\$ |build/|script/|source |ctest|\{ echo|morvikvm |morvik-dev |[A-Z_]+=\S+ ctest).*)");
  return std::regex_match(line, command);
}

// Every other one would be promised and not tried.
TEST(DocumentedCommands, standInConsoleBlocks) {
  Counts others;
  for (const std::string& document : documents()) {
    for (const DocumentBlock& block : blocksIn(document)) {
      if (block.has("console")) continue;
      const auto count = std::ranges::count_if(block.lines, isCommand);
      if (count > 0) others[document] += static_cast<int>(count);
    }
  }
  // How to run this suite, and a synopsis.
  const Counts known{{"CONTRIBUTING.md", 1}, {"docs/processes.md", 1}, {"docs/testing.md", 5}};
  EXPECT_EQ(others, known);
}

}  // namespace
}  // namespace morvik::test
