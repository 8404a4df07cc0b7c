// A launch of the real host under a test, and what it told.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "loop.h"
#include "run/launch.h"
#include "support/temporary-folder.h"

namespace morvik::test {

// Keeps what a launch tells.
class LaunchRecord : public devkit::LaunchObserver {
 public:
  void began(const std::string& app, pid_t pid) override { processes[app] = pid; }
  void wrote(const devkit::LogLine& line) override { lines.push_back(line); }
  void hinted(const devkit::Hint& hint) override { hints.push_back(hint); }
  void ended(const devkit::End& end) override { ends.push_back(end); }
  void over() override { isOver = true; }

  bool said(const std::string& text) const;
  // Everything, to be printed when a test fails.
  std::string transcript() const;

  std::map<std::string, pid_t> processes;
  std::vector<devkit::LogLine> lines;
  std::vector<devkit::Hint> hints;
  std::vector<devkit::End> ends;
  bool isOver = false;
};

// A folder of applications that the test makes.
class Apps {
 public:
  // Writes one file of an application; the smallest descriptor comes with its folder.
  void file(const std::string& app, const std::string& name, const std::string& content) const;
  // An application with a main.js, and a descriptor that grants the accesses.
  void app(const std::string& name, const std::string& mainJs,
           const std::vector<std::string>& accesses = {}) const;

  std::string path() const { return folder_.path(); }
  std::string operator/(const std::string& name) const { return folder_ / name; }

 private:
  test::TemporaryFolder folder_;
};

// The plan of a launch of the real host.
devkit::LaunchPlan planOf(const Apps& apps, std::vector<std::string> lines);

// Makes the host's timers a hundred times as short, from the interval upwards.
constexpr unsigned kAutokillMs = 10000;
constexpr unsigned kStopAutokillMs = 300000;
void shortenTimers(devkit::LaunchPlan& plan, unsigned fromMs);

// Children of this process, zombies among them.
std::vector<pid_t> children();

}  // namespace morvik::test
