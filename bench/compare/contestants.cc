#include "compare/contestants.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <optional>
#include <stdexcept>

#include "compare/process-facts.h"
#include "compare/results.h"
#include "support/file-content.h"
#include "support/system/app-folder.h"

namespace morvik::bench {
namespace {

constexpr rlim_t kRoom = 2147483648;  // bytes; a million answered requests are some 400 MB
constexpr int kLogDescriptor = 10;    // above all that a new process opens by itself

// The first of the usual folders that has the program; empty when none has.
std::string programNamed(const std::string& name) {
  for (const std::string folder : {"/usr/local/bin/", "/usr/bin/"})
    if (access((folder + name).c_str(), X_OK) == 0) return folder + name;
  return "";
}

// A program that is one application.
class PeerApplication : public Application {
 public:
  explicit PeerApplication(const Command& command) : program_(command) {}
  pid_t pid() override { return program_.pid(); }
  Output& output() override { return program_.output(); }

 private:
  Program program_;
};

class Peer : public Contestant {
 public:
  // `words` stand in front of the task: the program's path, then what it runs. One of them is a
  // file that must be there, besides the program.
  Peer(const char* name, const char* label, std::vector<std::string> words, std::string file)
      : Contestant(name, label), words_(std::move(words)), file_(std::move(file)) {}

  bool installed() const override {
    return !words_.front().empty() && access(file_.c_str(), R_OK) == 0;
  }

  void prepare(int port, const Task& task, bool /*speaks*/) override {
    command_ = {.words = words_};
    for (const std::string& word :
         {std::to_string(port), task.name, std::to_string(task.count), std::to_string(task.others)})
      command_.words.push_back(word);
  }

  std::unique_ptr<Application> launch() override {
    return std::make_unique<PeerApplication>(command_);
  }

 protected:
  Command command_;

 private:
  std::vector<std::string> words_;
  std::string file_;
};

// Gets a socket to the log, since Node.js cannot open one by itself.
class PeerWithDuties : public Peer {
 public:
  PeerWithDuties(const char* name, const char* label, std::vector<std::string> words,
                 std::string file, const SystemLog& log)
      : Peer(name, label, std::move(words), std::move(file)), log_(log) {}

  void prepare(int port, const Task& task, bool speaks) override {
    Peer::prepare(port, task, speaks);
    if (socket_.get() < 0) socket_ = log_.connected();
    command_.environment.push_back("BENCH_LOG_DESCRIPTOR=" + std::to_string(kLogDescriptor));
    command_.prepare = [socket = socket_.get()](int& complaints) -> const char* {
      complaints = fcntl(complaints, F_DUPFD_CLOEXEC, kLogDescriptor + 1);
      return dup2(socket, kLogDescriptor) < 0 ? "log" : nullptr;
    };
  }

 private:
  const SystemLog& log_;
  test::Descriptor socket_;
};

// A child of the launcher: the first one that was not there before.
class HostApplication : public Application {
 public:
  HostApplication(Program& launcher, std::vector<pid_t> before)
      : launcher_(launcher), before_(std::move(before)) {}

  // Its slot is free when the launcher has taken notice.
  ~HostApplication() override {
    if (!findChild()) return;
    kill(pid_, SIGKILL);
    while (isIn(childrenOf(launcher_.pid()), pid_)) pass(0.0005);
  }

  pid_t pid() override {
    test::waitUntil("the launcher's child", [&] { return findChild(); });
    return pid_;
  }
  Output& output() override { return launcher_.output(); }

 private:
  bool findChild() {
    if (pid_ == 0)
      for (const pid_t child : childrenOf(launcher_.pid()))
        if (pid_ == 0 && !isIn(before_, child)) pid_ = child;
    return pid_ != 0;
  }

  static bool isIn(const std::vector<pid_t>& children, pid_t child) {
    return std::ranges::find(children, child) != children.end();
  }

  Program& launcher_;
  std::vector<pid_t> before_;
  pid_t pid_ = 0;
};

class Host : public Contestant {
 public:
  Host(const Places& places, const SystemLog& log)
      : Contestant(kHost, "MorvikVM"), places_(places), log_(log) {
    for (const char* part : {"/application.js", "/morvikvm/main.js"})
      script_ += test::contentOf(places.sources + part);
  }

  void prepare(int port, const Task& task, bool speaks) override {
    apps_.app("bench", {"led", "button", "rfid"},
              "const PORT = " + std::to_string(port) + ", TASK = '" + task.name +
                  "', COUNT = " + std::to_string(task.count) +
                  ", OTHERS = " + std::to_string(task.others) + ";\n" + script_);
    if (!launcher_ || speaks != speaks_ || task.roomy != roomy_) startLauncher(speaks, task.roomy);
  }

  std::unique_ptr<Application> launch() override {
    auto before = childrenOf(launcher_->pid());
    launcher_->write("bench\n");
    return std::make_unique<HostApplication>(*launcher_, std::move(before));
  }

  pid_t launcher() const override { return launcher_->pid(); }

 private:
  // The levels at which a device runs: warnings on standard error, or notices where an application
  // is to be heard.
  void startLauncher(bool speaks, bool roomy) {
    speaks_ = speaks;
    roomy_ = roomy;
    launcher_.emplace(Command{
        .words = {places_.host, "--app_folder=" + apps_.path(), speaks ? "--debug=5" : "--debug=4"},
        .said = Said::kErrors,
        .input = true,
        .prepare = [this](int& /*complaints*/) { return enterPlace(); }});
  }

  // A limit that the launcher was given is left as it is.
  const char* enterPlace() const {
    const rlimit limit{kRoom, kRoom};
    if (roomy_ && setrlimit(RLIMIT_DATA, &limit) != 0) return "limit";
    return log_.enter();
  }

  const Places& places_;
  const SystemLog& log_;
  test::AppFolder apps_;
  std::string script_;
  std::optional<Program> launcher_;
  bool speaks_ = false;
  bool roomy_ = false;
};

}  // namespace

std::vector<std::unique_ptr<Contestant>> contestants(const Places& places, const SystemLog& log) {
  const std::string node = programNamed("node");
  const std::string gjs = programNamed("gjs");
  const auto prepared = [&](const char* file) { return places.peers + "/" + file; };
  std::vector<std::unique_ptr<Contestant>> all;
  const auto add = [&](const char* name, const char* label, std::vector<std::string> words) {
    const std::string file = words.back();
    all.push_back(std::make_unique<Peer>(name, label, std::move(words), file));
  };
  all.push_back(std::make_unique<Host>(places, log));
  add("node", "Node.js", {node, prepared("main.js")});
  // Its first word is the script's, which has none.
  const std::string blob = prepared("snapshot.blob");
  all.push_back(std::make_unique<Peer>(
      "node-snapshot", "Node.js, snapshot",
      std::vector<std::string>{node, "--snapshot-blob", blob, "snapshot"}, blob));
  const std::string duties = prepared("main-with-duties.js");
  all.push_back(std::make_unique<PeerWithDuties>(
      "node-duties", "Node.js with duties", std::vector<std::string>{node, duties}, duties, log));
  add("gjs", "gjs", {gjs, places.sources + "/gjs/main.js"});
  add("floor", "no engine", {places.floor});
  return all;
}

}  // namespace morvik::bench
