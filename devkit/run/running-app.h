// One application of a session: its folder, its launches one after the other, and what an author is
// told of them.
#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "device/owned.h"
#include "run/beside-server.h"
#include "run/debugger-pause.h"
#include "run/folder-watch.h"
#include "run/folder.h"
#include "run/launch.h"

namespace morvik::devkit {

class RunningApp;

/// Hears of the applications of a session. No call may end an application or the session; launching
/// and stopping are fine.
class RunningAppObserver {
 public:
  virtual ~RunningAppObserver() = default;
  /// It is about to be launched.
  virtual void launching(const RunningApp& app) = 0;
  /// A line of its log, or of its launcher.
  virtual void wrote(const RunningApp& app, const LogLine& line) = 0;
  virtual void hinted(const RunningApp& app, const Hint& hint) = 0;
  /// What its folder's check found.
  virtual void found(const RunningApp& app, const FolderTrouble& trouble) = 0;
  virtual void ended(const RunningApp& app, const End& end) = 0;
  /// Its author has saved these files, names relative to the folder.
  virtual void saved(const RunningApp& app, const std::set<std::string>& files) = 0;
  /// A line of the web server beside it, or something else worth a line.
  virtual void noted(const RunningApp& app, const std::string& text) = 0;
  /// Its phase or state is another.
  virtual void changed(const RunningApp& app) = 0;
};

/// Where an application of a session stands.
enum class RunPhase {
  kEnding,   ///< is being ended, by its author
  kRunning,  ///< is launched
  kBroken,   ///< cannot be launched as its folder is; the next save is waited for
  kEnded,    ///< has ended
};

struct RunningAppPlan {
  std::filesystem::path folder;
  std::string name;       ///< the first word of its launch line
  std::string appFolder;  ///< the folder in which that is
  std::string host;       ///< the path of morvikvm
  std::string instance;   ///< the third word of the launch line, unless a server beside it is that
  FolderCheck check;
  std::vector<std::string> environment = {};    ///< of its launcher: "NAME=value"
  std::vector<std::string> hostArguments = {};  ///< further options for the host
};

/// Works on the thread-default main context.
class RunningApp : private LaunchObserver {
 public:
  RunningApp(RunningAppObserver& observer, RunningAppPlan plan);
  /// Ends what runs, and waits for it.
  ~RunningApp() override;
  RunningApp(const RunningApp&) = delete;
  RunningApp& operator=(const RunningApp&) = delete;

  /// Watches the folder: from now on a save launches it again. False when that is not possible,
  /// with the reason in `trouble`; all else works.
  [[nodiscard]] bool watch(std::string& trouble);

  /// Launches it with this launch type, once what runs has ended, which is ended for it. Blanks,
  /// which a launch line cannot carry there, become "_".
  void launch(const std::string& type);
  /// The same with the type of the last launch.
  void restart() { launch(type_); }
  /// Ends what runs and launches nothing.
  void stop();
  /// The device has its connection, of which the application itself says nothing.
  void connected();
  /// It has lost its device server; `why` is for its explained end, and may be empty.
  void left(ServerLoss loss, const std::string& why);

  const std::string& name() const { return plan_.name; }
  const std::filesystem::path& folder() const { return plan_.folder; }
  RunPhase phase() const { return phase_; }
  /// How far it has come; only while it runs.
  AppState state() const { return state_; }
  /// Since when phase and state are what they are.
  TimePoint since() const { return since_; }
  /// When the host ends it unless something happens before; nothing when it does not.
  std::optional<TimePoint> autokillAt() const;
  /// Where a debugger has it paused, "at main.js:12"; empty when none has.
  const std::string& paused() const { return pause_.place(); }
  /// Its process; 0 when there is none, or it has not shown itself yet.
  pid_t process() const { return process_; }
  /// The end of its last launch; nothing while there is none.
  const std::optional<End>& end() const { return end_; }
  /// What the last check of its folder found, and what was hinted at since its launch.
  const std::vector<FolderTrouble>& troubles() const { return troubles_; }
  const std::vector<Hint>& hints() const { return hints_; }

 private:
  void began(const std::string& app, pid_t pid) override;
  void wrote(const LogLine& line) override;
  void hinted(const Hint& hint) override;
  void ended(const End& end) override;
  void over() override;

  static gboolean onSettled(gpointer self);
  void settleSoon();
  void begin();
  bool check();
  bool prepareBesideServer();
  void enter(RunPhase phase, AppState state);
  void lookAtState();
  void giveUp(FolderTrouble trouble);
  void lookAtPause(const LogLine& line);

  RunningAppObserver& observer_;
  RunningAppPlan plan_;
  std::string type_ = "plain";
  std::optional<std::string> wanted_;  // the type of the launch that is to come
  RunPhase phase_ = RunPhase::kEnded;
  AppState state_ = AppState::kLaunched;
  TimePoint since_;
  TimePoint startedAt_;  // main.js began
  TimePoint stoppedAt_;  // the server stopped interactive mode
  DebuggerPause pause_;
  bool compiled_ = false;
  pid_t process_ = 0;
  std::optional<End> end_;
  std::vector<FolderTrouble> troubles_;
  std::vector<Hint> hints_;
  std::unique_ptr<FolderWatch> watch_;
  std::unique_ptr<BesideServer> beside_;
  std::unique_ptr<Launch> launch_;
  GSourceOwned settling_;
};

}  // namespace morvik::devkit
