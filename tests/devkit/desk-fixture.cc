// What tests of `morvik-dev run` share.
#include "desk-fixture.h"

#include <sys/prctl.h>
#include <sys/wait.h>

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <iterator>

namespace morvik::test {

using namespace devkit;
namespace {

namespace fs = std::filesystem;

gboolean lookAgain(gpointer /*nothing*/) { return G_SOURCE_CONTINUE; }

}  // namespace

// What the tool keeps, for ever or for a while, goes into the test's own folder.
DeskTest::DeskTest() {
  prctl(PR_SET_CHILD_SUBREAPER, 1);
  setenv("XDG_STATE_HOME", (folder_ / "state").c_str(), 1);
  setenv("TMPDIR", folder_.path().c_str(), 1);
}

DeskTest::~DeskTest() { unsetenv("TMPDIR"); }

fs::path DeskTest::write(const std::string& app, const std::string& script,
                         const std::string& accesses) {
  fs::path folder = folder_.path() / app;
  writeApplication(folder, script, accesses);
  return folder;
}

std::vector<std::string> DeskTest::command(const std::vector<std::string>& words) {
  std::vector<std::string> command{MORVIK_DEV, "run", "--no-page"};
  command.insert(command.end(), words.begin(), words.end());
  return command;
}

bool DeskTest::comesTrue(const std::function<bool()>& condition) {
  const GSourceOwned clock(g_timeout_source_new(10));
  g_source_set_callback(clock.get(), lookAgain, nullptr, nullptr);
  g_source_attach(clock.get(), loop_.context());
  const bool came = loop_.runUntil(condition);
  g_source_destroy(clock.get());
  return came;
}

// The kernel may take a moment to end what was told to end.
bool DeskTest::isSoonAlone() {
  return comesTrue([] { return waitpid(-1, nullptr, WNOHANG) < 0 && errno == ECHILD; });
}

void DeskTest::expectNothingLeft() {
  EXPECT_TRUE(isSoonAlone());
  for (const auto& entry : fs::directory_iterator(folder_.path())) {
    EXPECT_FALSE(entry.path().filename().string().starts_with("morvik-run-")) << entry.path();
  }
}

std::vector<int> childrenOf(int process) {
  const std::string number = std::to_string(process);
  std::ifstream list("/proc/" + number + "/task/" + number + "/children");
  return {std::istream_iterator<int>(list), {}};
}

std::size_t descriptorsOf(int process) {
  std::error_code error;
  const fs::directory_iterator entries("/proc/" + std::to_string(process) + "/fd", error);
  return static_cast<std::size_t>(std::distance(fs::begin(entries), fs::end(entries)));
}

int countOf(const std::string& text, const std::string& within) {
  int count = 0;
  for (std::size_t at = within.find(text); at != std::string::npos;
       at = within.find(text, at + text.size())) {
    ++count;
  }
  return count;
}

}  // namespace morvik::test
