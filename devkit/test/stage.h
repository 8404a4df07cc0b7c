// What one test has: a fresh device with fresh applications, in time that goes on only when nothing
// is under way.
#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "device/json.h"
#include "device/owned.h"
#include "run/session-device.h"
#include "run/session.h"
#include "test/clock-server.h"
#include "test/temporary-copy.h"
#include "test/virtual-time.h"

namespace morvik::devkit {

/// The programs that a stage is made with.
struct StageTools {
  std::string host;   ///< the path of morvikvm
  std::string clock;  ///< the path of virtual-clock.so
};

struct StagePlan {
  std::filesystem::path folder;  ///< a copy of it is run
  /// Files of the copy with other contents, or, with nothing, without them.
  std::map<std::string, std::optional<std::string>> files = {};
  /// Launch types and third words, one of each for each application; those without a type are
  /// launched later.
  std::vector<std::optional<std::string>> types;
  std::vector<std::string> instances;
  /// A recording that stands in the place of the device; empty for none.
  std::filesystem::path replay = {};
  Nanoseconds start{0};  ///< the time of day that it begins at, since 1970
};

/// Works on the thread-default main context.
class Stage : private Observer, private RunningAppObserver {
 public:
  using Then = std::function<void()>;

  explicit Stage(const StagePlan& plan);
  /// Ends the applications and waits for them.
  ~Stage() override;
  Stage(const Stage&) = delete;
  Stage& operator=(const Stage&) = delete;

  /// Launches the applications. False when that is not possible, with the reason in `trouble`.
  /// Called once.
  [[nodiscard]] bool begin(const StagePlan& plan, const StageTools& tools, std::string& trouble);

  /// Does to the device what the object says; docs/device-json.md tells its form. `app` is the
  /// place of an application in the plan, from 0.
  Outcome stimulate(Json request);
  /// Launches one of the applications anew, with this launch type.
  void launch(std::size_t app, const std::string& type);
  /// Where the files of the application are.
  const std::filesystem::path& folder() const { return copy_.path(); }

  /// Waits until nothing is under way. When nothing has happened since the last report, lets the
  /// next thing happen that is to come, or time go on until then. `then` is called at the end, not
  /// before this has returned. One step at a time.
  void step(Nanoseconds until, Then then);

  /// All that happened since the last report and how things are: `now`, `news`, `apps`, and `view`
  /// when it has changed.
  Json report();

  /// Which applications have something to do, in words; for a step that does not come to its end.
  std::string whoIsBusy() const;

 private:
  void happened(const Event& event) override;
  void tellDeparture(const Trouble& trouble);
  void launching(const RunningApp& app) override;
  void wrote(const RunningApp& app, const LogLine& line) override;
  void hinted(const RunningApp& app, const Hint& hint) override;
  void found(const RunningApp& app, const FolderTrouble& trouble) override;
  void ended(const RunningApp& app, const End& end) override;
  void saved(const RunningApp& app, const std::set<std::string>& files) override;
  void noted(const RunningApp& app, const std::string& text) override;
  void changed(const RunningApp& app) override;

  SessionPlan sessionPlan(const StagePlan& plan, const StageTools& tools) const;
  std::size_t indexOf(const RunningApp& app) const;
  std::optional<Json> indexOf(AppNumber number);
  Json& addNews(const char* kind, const RunningApp& app);
  Json stateOf(const RunningApp& app) const;

  bool isBusy(const RunningApp& app) const;
  void look();
  static gboolean onLook(gpointer self);
  void lookLater(guint milliseconds);
  void takeTime();
  void goOn();
  void finish();

  VirtualTime time_;
  TemporaryCopy copy_;
  ClockServer clocks_{[this] { look(); }};
  std::unique_ptr<SessionDevice> device_;
  std::unique_ptr<Observation> hears_;
  std::unique_ptr<Session> session_;
  std::map<const RunningApp*, Nanoseconds> launchedAt_;

  Json news_;
  bool viewIsOld_ = true;
  bool somethingHappened_ = false;  // since the applications were told the time
  Nanoseconds until_{0};
  Then then_;  // empty when there is no step
  GSourceAttached looking_;
};

}  // namespace morvik::devkit
