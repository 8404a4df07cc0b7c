// One test from its script's start to its result.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

#include "device/owned.h"
#include "run/process.h"
#include "terminal/line-reader.h"
#include "test/stage.h"
#include "test/test-plan.h"
#include "test/test-result.h"

namespace morvik::devkit {

/// Works on the default main context.
class TestCase {
 public:
  /// The plan must outlive it; `over` is called once there is a result.
  TestCase(const TestPlan& plan, const std::filesystem::path& script, std::function<void()> over);
  /// Ends what still runs.
  ~TestCase();
  TestCase(const TestCase&) = delete;
  TestCase& operator=(const TestCase&) = delete;

  /// Starts the script, which is to run this one of its tests, from 0.
  void start(std::size_t index);
  /// The names of all tests of the script; empty when it could not be loaded. Valid at the end.
  const std::vector<std::string>& names() const { return names_; }
  /// Whether the plan leaves this test out.
  bool isLeftOut() const { return leftOut_; }
  /// Whether there is a result; it may be there at once.
  bool isFinished() const { return finished_; }
  const TestResult& result() const { return result_; }

 private:
  using Handler = void (TestCase::*)(const Json& question);

  bool spawnScript();
  void limitTo(std::chrono::milliseconds limit);
  void hear(std::string_view line);
  void take(const Json& message);
  void loaded(const Json& message);
  void done(const Json& message);
  void answer(const Json& question, Json answer = Json::object());
  void send(const Json& message);

  void begin(const Json& question);
  void stimulate(const Json& question);
  void launch(const Json& question);
  void read(const Json& question);
  void step(const Json& question);

  void scriptEnded();
  void fail(const std::string& message, const Json& place = nullptr);
  void finish();
  static gboolean onLimit(gpointer self);

  const TestPlan& plan_;
  std::function<void()> over_;
  std::size_t index_ = 0;
  std::vector<std::string> names_;
  TestResult result_;
  bool finished_ = false;
  bool leftOut_ = false;
  std::int64_t startedAt_ = 0;
  Json place_;  // of what the script asked for last
  FileDescriptor channel_;
  std::unique_ptr<LineReader> lines_;
  std::unique_ptr<Process> script_;
  std::unique_ptr<Stage> stage_;
  std::chrono::milliseconds currentLimit_{0};
  GSourceAttached limit_;
};

}  // namespace morvik::devkit
