// Who is measured: the same small application (bench/peers/application.js) on MorvikVM, on what a
// user would pick instead, and without a script engine at all.
#pragma once

#include <sys/types.h>

#include <memory>
#include <string>
#include <vector>

#include "compare/system-log.h"

namespace morvik::bench {

/// What the application is to do (bench/peers/application.js).
struct Task {
  std::string name = "idle";
  int count = 1;       ///< events until it says something, or requests at a press of the button
  int others = 0;      ///< requests that wait, listeners or timers beside the one that is measured
  bool roomy = false;  ///< keeps more than an application may: MorvikVM gets a higher limit
};

/// Where the programs and the peers' files are.
struct Places {
  std::string host;
  std::string floor;
  std::string daemon;
  std::string probe;
  std::string sources;  ///< bench/peers of the checkout
  std::string peers;    ///< what script/bench has made of it; empty where only C++ is measured
};

/// A running application; the destructor ends it.
class Application {
 public:
  virtual ~Application() = default;
  [[nodiscard]] virtual pid_t pid() = 0;
  virtual Output& output() = 0;
};

/// Says "started" as the script's first line and "granted" when it is interactive.
class Contestant {
 public:
  Contestant(std::string name, std::string label)
      : name_(std::move(name)), label_(std::move(label)) {}
  virtual ~Contestant() = default;
  Contestant(const Contestant&) = delete;
  Contestant& operator=(const Contestant&) = delete;

  [[nodiscard]] const std::string& name() const { return name_; }
  [[nodiscard]] const std::string& label() const { return label_; }
  [[nodiscard]] virtual bool installed() const { return true; }

  /// What stands ready before a person wants an application: files, and a launcher where there is
  /// one. `port` is the server's. An application `speaks` where its two words are awaited; MorvikVM
  /// then writes its log's notices to standard error as well.
  virtual void prepare(int port, const Task& task, bool speaks) = 0;
  virtual std::unique_ptr<Application> launch() = 0;
  /// The process beside the applications, whose memory counts as well; 0 where there is none.
  [[nodiscard]] virtual pid_t launcher() const { return 0; }

 private:
  std::string name_;
  std::string label_;
};

/// In the order of the table's columns. The log must outlive them.
std::vector<std::unique_ptr<Contestant>> contestants(const Places& places, const SystemLog& log);

}  // namespace morvik::bench
