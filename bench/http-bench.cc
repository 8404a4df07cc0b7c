// One http.get of an application over the loopback interface, beside the curl program that does the
// same: a request on a new connection to the same nginx, for a body of one KiB.
//
//   http-bench [rounds]
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "support/program.h"
#include "support/system/app-folder.h"
#include "support/system/host-process.h"
#include "support/web/nginx.h"

namespace {

using namespace morvik::test;  // NOLINT(google-build-using-namespace)

constexpr int kBatch = 20;  // a script's clock counts whole milliseconds
constexpr std::string_view kLog = "JSLOG: ";

double median(std::vector<double> values) {
  std::ranges::sort(values);
  return values.at(values.size() / 2);
}

// The script takes the time of each batch and tells it.
std::vector<double> ours(const std::string& url, int rounds) {
  AppFolder apps;
  apps.app("bench", {"http"},
           "for (let round = 0; round < " + std::to_string(rounds) +
               "; ++round) { const start = Date.now(); for (let i = 0; i < " +
               std::to_string(kBatch) + "; ++i) if (http.get('" + url +
               "').length !== 1024) throw 'wrong answer'; log(Date.now() - start); }");
  HostProcess host({.arguments = {"--debug=0", "--app_folder=" + apps.path()}});
  host.line("bench");
  std::vector<double> times;
  int taken = 0;
  while (times.size() < static_cast<std::size_t>(rounds)) {
    int index = 0;
    const LogRecord record = host.waitForLog("a time", [&](const LogRecord& each) {
      return ++index > taken && each.text.starts_with(kLog);
    });
    taken = index;
    times.push_back(std::stod(record.text.substr(kLog.size())) / kBatch);
  }
  return times;
}

// What the curl program prints; nothing when there is none, or it fails.
std::string outputOfCurl(const std::string& url) {
  const auto [status, output] =
      run({"/usr/bin/env", "curl", "-s", "-o", "/dev/null", "-w", "%{time_total}", url});
  return status == 0 ? output : "";
}

// What the curl program says of its request alone, and what the whole process takes.
struct CurlTimes {
  std::vector<double> request;
  std::vector<double> process;
};

CurlTimes curls(const std::string& url, int rounds) {
  CurlTimes times;
  for (int i = 0; i < rounds; ++i) {
    const auto begun = Clock::now();
    const std::string seconds = outputOfCurl(url);
    const std::chrono::duration<double, std::milli> whole = Clock::now() - begun;
    if (seconds.empty()) return {};
    times.request.push_back(std::stod(seconds) * 1000);
    times.process.push_back(whole.count());
  }
  return times;
}

void print(const char* what, const std::vector<double>& times) {
  if (times.empty()) {
    std::printf("%-50s %15s\n", what, "not installed");
  } else {
    std::printf("%-50s %12.3f ms\n", what, median(times));
  }
}

}  // namespace

int main(int argc, char** argv) {
  const int rounds = argc > 1 ? std::atoi(argv[1]) : 50;
  if (rounds < 1) {
    std::fprintf(stderr, "usage: http-bench [rounds]\n");
    return 2;
  }
  const Nginx web("");
  web.file("body.txt", std::string(1024, 'x'));
  const std::string url = web.url("/files/body.txt");
  print("http.get", ours(url, rounds));
  const CurlTimes curl = curls(url, rounds);
  print("the curl program, its request", curl.request);
  print("the curl program, from start to end", curl.process);
  return 0;
}
