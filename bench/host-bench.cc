// The real program beside Node.js, which is what people would otherwise run such scripts on: time
// from the launch line to the script's first line, private memory of an idle application that is
// connected, and the round trip of a request with an answer.
//
//   host-bench [rounds]
#include <sys/wait.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <thread>

#include "support/process.h"
#include "support/system/app-folder.h"
#include "support/system/host-process.h"
#include "support/system/test-device.h"

namespace {

using namespace morvik::test;  // NOLINT(google-build-using-namespace)
using Milliseconds = std::chrono::duration<double, std::milli>;

constexpr int kRoundTrips = 2000;

struct Result {
  std::string what;
  std::string unit;
  double ours = 0;
  std::optional<double> node;
};

double median(std::vector<double> values) {
  std::ranges::sort(values);
  return values.at(values.size() / 2);
}

bool nodeIsThere() { return std::system("node --version >/dev/null 2>&1") == 0; }

// Private_Clean + Private_Dirty of a process.
double privateMiB(pid_t process) {
  std::ifstream rollup("/proc/" + std::to_string(process) + "/smaps_rollup");
  double kib = 0;
  for (std::string line; std::getline(rollup, line);) {
    if (line.starts_with("Private_Clean:") || line.starts_with("Private_Dirty:")) {
      kib += std::stod(line.substr(line.find(':') + 1));
    }
  }
  return kib / 1024;
}

// Node.js running a script, with its standard output in our hands.
class NodeProcess {
 public:
  explicit NodeProcess(const std::string& script) {
    Pipe output = makePipe();
    pid_ = startProcess({.program = "/usr/bin/env",
                         .arguments = {"env", "node", "-e", script},
                         .environment = ownEnvironment(),
                         .streams = {0, output.writing.get(), 2}});
    output_ = std::make_unique<Stream>(std::move(output.reading));
  }
  NodeProcess(const NodeProcess&) = delete;
  NodeProcess& operator=(const NodeProcess&) = delete;
  ~NodeProcess() {
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
  }
  void await(const char* text) const { output_->await(text); }
  [[nodiscard]] pid_t pid() const { return pid_; }

 private:
  pid_t pid_ = -1;
  std::unique_ptr<Stream> output_;
};

// The host with one application folder and a device server.
struct Bench {
  AppFolder apps;
  TestDevice server;

  HostOptions options() const {
    return {.arguments = {"--debug=0", "--app_folder=" + apps.path()}};
  }

  void app(const std::string& script) {
    apps.app("bench", {"led"}, "const PORT = " + std::to_string(server.port()) + "; " + script);
  }
};

Result startUp(int rounds) {
  Bench bench;
  bench.app("log('started'); setTimeout(0, function() { exit(); });");
  HostProcess host(bench.options());
  host.waitForLog("MorvikVM started...");
  std::vector<double> ours;
  for (int i = 1; i <= rounds; ++i) {
    const auto launched = Clock::now();
    host.line("bench");
    ours.push_back(
        Milliseconds(host.waitForLogTimes("JSLOG: started", i).arrival - launched).count());
    host.waitForLogTimes("end process: sigchild", i);
  }
  Result result{"launch line to the script's first line", "ms", median(ours), {}};
  if (nodeIsThere()) {
    std::vector<double> node;
    for (int i = 0; i < rounds; ++i) {
      const auto launched = Clock::now();
      const NodeProcess process("console.log('started')");
      process.await("started");
      node.push_back(Milliseconds(Clock::now() - launched).count());
    }
    result.node = median(node);
  }
  return result;
}

const char* const kStart =
    "morvik.connect('127.0.0.1', PORT); morvik.start(function() { log('granted'); ";

std::string nodeClient(int port, const std::string& rest) {
  return "const s = require('net').connect(" + std::to_string(port) +
         ", '127.0.0.1', function() { console.log('granted'); }); s.setNoDelay(true); " + rest;
}

Result idleMemory() {
  Bench bench;
  bench.app(std::string(kStart) + "}, {});");
  HostProcess host(bench.options());
  host.line("bench");
  DeviceLink link = bench.server.accept();
  link.grant(link.receive());
  const pid_t app = host.waitForLog("JSLOG: granted").pid;
  std::this_thread::sleep_for(std::chrono::seconds(2));  // what comes to rest, comes to rest
  Result result{"private memory of an idle, connected application", "MiB", privateMiB(app), {}};
  if (nodeIsThere()) {
    const NodeProcess process(nodeClient(bench.server.port(), "s.on('data', function() {});"));
    const DeviceLink peer = bench.server.accept();
    process.await("granted");
    std::this_thread::sleep_for(std::chrono::seconds(2));
    result.node = privateMiB(process.pid());
  }
  return result;
}

// Answers every request until the application has had enough.
template <typename Answer>
double roundTripUs(Answer answer) {
  answer();  // the first one warms up
  const auto begun = Clock::now();
  for (int i = 1; i < kRoundTrips; ++i) answer();
  return Milliseconds(Clock::now() - begun).count() * 1000 / (kRoundTrips - 1);
}

Result roundTrip() {
  Bench bench;
  bench.app("let n = 0; function next() { if (n++ < " + std::to_string(kRoundTrips) +
            ") ping(next); } " + kStart + "next(); }, {});");
  HostProcess host(bench.options());
  host.line("bench");
  DeviceLink link = bench.server.accept();
  link.grant(link.receive());
  Result result{"round trip of ping with callback",
                "us",
                roundTripUs([&] { link.reply(link.receive(), "OK"); }),
                {}};
  if (nodeIsThere()) {
    const std::size_t size = frameOf(newMessage()).size();
    const NodeProcess process(nodeClient(
        bench.server.port(), "const m = Buffer.alloc(" + std::to_string(size) +
                                 "); s.on('data', function() { s.write(m); }); s.write(m);"));
    DeviceLink peer = bench.server.accept();
    const std::string reply(size, '\0');
    result.node = roundTripUs([&] {
      peer.receiveBytes(size);
      peer.sendBytes(reply);
    });
  }
  return result;
}

void print(const Result& result) {
  std::printf("%-50s %10.2f %-4s", result.what.c_str(), result.ours, result.unit.c_str());
  if (result.node) {
    std::printf(" %10.2f %-4s\n", *result.node, result.unit.c_str());
  } else {
    std::printf(" %15s\n", "not installed");
  }
  std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) {
  const int rounds = argc > 1 ? std::atoi(argv[1]) : 50;
  if (rounds < 1) {
    std::fprintf(stderr, "usage: host-bench [rounds]\n");
    return 2;
  }
  std::printf("%-50s %15s %15s\n", "", "morvikvm", "node");
  print(startUp(rounds));
  print(idleMemory());
  print(roundTrip());
  return 0;
}
