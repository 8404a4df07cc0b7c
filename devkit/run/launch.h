// One launcher, the applications that it launches, what they say and how they end.
#pragma once

#include <sys/types.h>

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "device/owned.h"
#include "run/ends.h"
#include "run/evidence.h"
#include "run/file-descriptor.h"
#include "run/hints.h"
#include "run/log-line.h"
#include "run/process.h"
#include "run/record-joiner.h"
#include "run/record-socket.h"

namespace morvik::devkit {

/// Hears of a launch. All calls come from the thread-default main context, `ended` also from
/// Launch::start. No call may destroy the launch.
class LaunchObserver {
 public:
  virtual ~LaunchObserver() = default;
  /// An application has its process; its first line follows.
  virtual void began(const std::string& app, pid_t pid) = 0;
  /// A line of the launcher or of an application.
  virtual void wrote(const LogLine& line) = 0;
  /// Something that an author should know of a living application.
  virtual void hinted(const Hint& hint) = 0;
  /// The end of an application, once for each launch line; all its lines have come before.
  virtual void ended(const End& end) = 0;
  /// Nothing of the launch is left.
  virtual void over() = 0;
};

struct LaunchPlan {
  std::string host;       ///< the path of morvikvm
  std::string appFolder;  ///< the folder that holds the applications' folders
  /// Launch lines without line ends, "name type instance". Most launches have one.
  std::vector<std::string> lines;
  std::vector<std::string> environment;         ///< further variables, as in "NAME=value"
  std::vector<std::string> hostArguments = {};  ///< further options for the host
};

/// A launcher of its own for these lines. It gets an empty line behind them and ends, so that its
/// applications become children of this process (see becomeReaper) and their statuses are seen; its
/// input does not end before that.
class Launch {
 public:
  explicit Launch(LaunchObserver& observer) : observer_(observer) {}
  /// Ends what is left, and waits for it. Nobody is told.
  ~Launch();
  Launch(const Launch&) = delete;
  Launch& operator=(const Launch&) = delete;

  /// Starts everything. Called once.
  void start(LaunchPlan plan);

  /// Tells everything to end, and forces it after a moment.
  void end(EndedBy why);

  bool isOver() const { return over_; }

  /// The processes of its applications that have not ended, with their names.
  std::map<pid_t, std::string> applications() const;

  /// What is known of an application so far; null for a process that is none of its own.
  const Evidence* evidenceOf(pid_t pid) const;

  /// What became of an application's connection, from whoever stands at the device server's side:
  /// it was accepted, or the server is lost, and perhaps why.
  void connected(pid_t pid);
  void left(pid_t pid, ServerLoss loss, const std::string& why);

 private:
  struct App {
    EvidenceCollector collector;
    Hints hints;
    std::unique_ptr<Process> process;
    bool finished = false;
  };

  bool refuseLines();
  bool makeStreams();
  bool spawnLauncher();
  void failAll(LaunchProblem problem, const std::string& text);
  void failOne(const std::string& app, LaunchProblem problem, const std::string& text);

  void onRecord(pid_t pid, std::string_view record);
  void onOutput(pid_t pid, std::string_view line);
  void hear(LogLine line, pid_t pid);
  void hearLauncher(const LogLine& line);
  void hearApplication(App& app, LogLine line);
  void introduce(App& app, const LogLine& line);
  App& appOf(pid_t pid);
  App* known(pid_t pid);

  void settle();
  void settleApp(App& app);
  void settleLauncher();
  void explainMissing();
  void explainSilent(pid_t pid, int status);
  void tellOver();

  void signalAll(int number);
  static gboolean onPatienceOver(gpointer launch);

  LaunchObserver& observer_;
  LaunchPlan plan_;
  TimePoint startedAt_;
  FileDescriptor input_;
  std::unique_ptr<RecordSocket> errors_;
  std::unique_ptr<RecordSocket> output_;
  RecordJoiner records_{[this](pid_t pid, std::string_view record) { onRecord(pid, record); }};
  LineSplitter lines_{[this](pid_t pid, std::string_view line) { onOutput(pid, line); }};
  std::unique_ptr<Process> launcher_;
  bool launcherReaped_ = false;
  std::string announced_;             // the name in the launcher's last launch line
  std::vector<std::string> awaited_;  // names whose process has not shown itself
  std::map<pid_t, App> apps_;
  EndedBy endedBy_ = EndedBy::kItself;
  GSourceOwned patience_;
  bool over_ = false;
};

}  // namespace morvik::devkit
