// What `morvik-dev run` puts before an author: applications on a device, one log of everything,
// keys, and the page.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "control/control-server.h"
#include "device/owned.h"
#include "replay/recorder.h"
#include "run-page.h"
#include "run/end-history.h"
#include "run/run-log.h"
#include "run/session.h"
#include "terminal/key-menu.h"
#include "terminal/key-mode.h"
#include "terminal/keys.h"
#include "terminal/line-reader.h"
#include "terminal/merged-view.h"
#include "until-told.h"

namespace morvik::devkit {

struct DeskPlan {
  SessionPlan session;
  RunLogFilter filter;
  std::string realDevice;  ///< "HOST:PORT"; empty for the virtual one
  std::uint16_t devicePort = 0;
  std::string stateFolder;
  std::optional<std::uint16_t> page = 0;  ///< its port, 0 for any; nothing for no page
  bool openPage = false;
  std::string record;    ///< a file to be made for what passes; empty for none
  int seconds = 0;       ///< to the end; 0 for none
  std::string greeting;  ///< further lines behind the first ones
};

/// Works on the default main context.
class Desk : private RunningAppObserver, private Observer {
 public:
  explicit Desk(DeskPlan plan);
  ~Desk() override;
  Desk(const Desk&) = delete;
  Desk& operator=(const Desk&) = delete;

  /// Runs until somebody ends it, and ends everything that it has started. The reason when it
  /// cannot begin.
  [[nodiscard]] std::optional<std::string> run();

 private:
  void launching(const RunningApp& app) override;
  void wrote(const RunningApp& app, const LogLine& line) override;
  void hinted(const RunningApp& app, const Hint& hint) override;
  void found(const RunningApp& app, const FolderTrouble& trouble) override;
  void ended(const RunningApp& app, const End& end) override;
  void saved(const RunningApp& app, const std::set<std::string>& files) override;
  void noted(const RunningApp& app, const std::string& text) override;
  void changed(const RunningApp& app) override;
  void happened(const Event& event) override;

  std::optional<std::string> begin();
  std::optional<std::string> beginPage();
  void beginControl();
  void greet();
  void beginKeys();
  std::string nameOf(AppNumber application);
  void showEvent(const Event& event);
  void press(const std::string& key);
  void obey(const KeyCommand& command);
  void stimulate(const std::string& line);
  Outcome outcomeOf(std::string_view line);
  void openPage();
  void write(const std::string& bytes);
  MergedView::Style style() const;

  DeskPlan plan_;
  UntilTold untilTold_;
  MergedView view_;
  RunLog log_;
  std::unique_ptr<SessionDevice> device_;
  std::unique_ptr<Recorder> recorder_;
  std::unique_ptr<Observation> hears_;
  std::unique_ptr<RunPage> page_;
  std::unique_ptr<ControlServer> control_;
  std::unique_ptr<Session> session_;
  std::unique_ptr<KeyMode> keyMode_;
  std::unique_ptr<Keys> keys_;
  std::unique_ptr<KeyMenu> menu_;
  std::unique_ptr<LineReader> lines_;
  EndHistory history_{EndHistory::usualFolder()};
  bool writable_ = true;
};

}  // namespace morvik::devkit
