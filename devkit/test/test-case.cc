// The script's lines, and what is done for each.
#include "test/test-case.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/wait.h>

#include <array>
#include <cerrno>
#include <cmath>
#include <csignal>
#include <cstring>
#include <map>

#include <nlohmann/json.hpp>

#include "device/stimuli-json.h"
#include "run/duration.h"

namespace morvik::devkit {
namespace {

namespace fs = std::filesystem;
using Milliseconds = std::chrono::milliseconds;

// Of a script, before its first test begins.
constexpr std::chrono::seconds kTimeToLoad{30};

// A script that does not read for so long is stuck.
constexpr timeval kPatienceWithScript = {5, 0};

TestFailure failureOf(const Json& failure) {
  TestFailure told{.message = failure.value("message", ""), .file = "", .line = 0, .column = 0};
  if (const auto place = failure.find("place"); place != failure.end() && place->is_object()) {
    told.file = place->value("file", "");
    told.line = place->value("line", 0);
    told.column = place->value("column", 0);
  }
  told.difference = failure.value("difference", "");
  told.story = failure.value("story", std::vector<std::string>());
  return told;
}

std::string endInWords(int status) {
  if (WIFSIGNALED(status)) return std::string("killed by ") + strsignal(WTERMSIG(status));
  return "status " + std::to_string(WEXITSTATUS(status));
}

// Whole milliseconds, as parts of one would be lost among so many.
Nanoseconds timeOf(const Json& milliseconds) {
  return Milliseconds(static_cast<std::int64_t>(std::ceil(milliseconds.get<double>())));
}

std::optional<std::string> textUnlessNull(const Json& value) {
  return value.is_null() ? std::nullopt : std::optional(value.get<std::string>());
}

// It lies beside the application.
fs::path recordingOf(const fs::path& folder, const Json& question) {
  const auto name = textUnlessNull(question.at("replay"));
  return name ? folder / *name : fs::path();
}

StagePlan stagePlanOf(const fs::path& folder, const Json& question) {
  StagePlan plan{.folder = folder,
                 .types = {},
                 .instances = question.at("instances"),
                 .replay = recordingOf(folder, question),
                 .start = timeOf(question.at("at"))};
  for (const Json& type : question.at("types")) plan.types.push_back(textUnlessNull(type));
  for (const auto& [name, content] : question.at("files").items()) {
    plan.files[name] = content.is_null() ? std::nullopt : std::optional(content.get<std::string>());
  }
  return plan;
}

}  // namespace

TestCase::TestCase(const TestPlan& plan, const fs::path& script, std::function<void()> over)
    : plan_(plan), over_(std::move(over)) {
  result_.file = script;
}

TestCase::~TestCase() {
  lines_.reset();
  channel_.close();
  if (script_) {
    static_cast<void>(script_->send(SIGKILL));
    static_cast<void>(script_->waitForEnd(-1));
    static_cast<void>(script_->reap());
  }
}

void TestCase::start(std::size_t index) {
  index_ = index;
  startedAt_ = g_get_monotonic_time();
  if (spawnScript()) limitTo(kTimeToLoad);
}

void TestCase::limitTo(std::chrono::milliseconds limit) {
  currentLimit_ = limit;
  limit_.reset(g_timeout_source_new(static_cast<guint>(limit.count())));
  g_source_set_callback(limit_.get(), onLimit, this, nullptr);
  g_source_attach(limit_.get(), g_main_context_get_thread_default());
}

bool TestCase::spawnScript() {
  std::array<int, 2> ends{-1, -1};
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) {
    fail(std::string("there is no socket for the script: ") + std::strerror(errno));
    return false;
  }
  channel_ = FileDescriptor(ends[0]);
  const FileDescriptor theirs(ends[1]);
  setsockopt(channel_.get(), SOL_SOCKET, SO_SNDTIMEO, &kPatienceWithScript,
             sizeof kPatienceWithScript);
  std::vector<std::string> words = plan_.scriptCommand;
  words.push_back(result_.file);
  const Spawned spawned =
      spawn({std::move(words), {"TZ=UTC"}, theirs.get(), STDERR_FILENO, STDERR_FILENO});
  if (spawned.pid == 0) {
    fail(std::string("the script cannot be started: ") + std::strerror(spawned.error));
    return false;
  }
  lines_ =
      std::make_unique<LineReader>(channel_.get(), [this](std::string_view line) { hear(line); });
  script_ = std::make_unique<Process>(spawned.pid, [this] { scriptEnded(); });
  return true;
}

// What it wrote last may still wait to be read.
void TestCase::scriptEnded() {
  if (finished_) return;
  const auto status = script_->reap();
  fail("the script of the test ended, " + (status ? endInWords(*status) : "nobody knows why") +
           ", perhaps for want of memory",
       place_);
}

void TestCase::hear(std::string_view line) {
  if (finished_) return;
  const Json message = Json::parse(line, nullptr, /*allow_exceptions=*/false);
  if (!message.is_object()) return fail("the script said what nobody understands");
  try {
    take(message);
  } catch (const Json::exception& error) {
    fail(std::string("the test asks for what makes no sense: ") + error.what(), place_);
  }
}

void TestCase::take(const Json& message) {
  static const std::map<std::string, Handler> handlers{
      {"loaded", &TestCase::loaded},      {"done", &TestCase::done},
      {"broken", &TestCase::done},        {"begin", &TestCase::begin},
      {"stimulus", &TestCase::stimulate}, {"launch", &TestCase::launch},
      {"read", &TestCase::read},          {"step", &TestCase::step}};
  if (message.contains("place")) place_ = message["place"];
  const std::string what = message.at("do");
  if (what == "comment") return result_.comments.push_back(message.at("text"));
  const auto handler = handlers.find(what);
  if (handler == handlers.end()) return answer(message);
  (this->*handler->second)(message);
}

void TestCase::send(const Json& message) {
  const std::string line = textOf(message) + '\n';
  for (std::size_t at = 0; at < line.size();) {
    const ssize_t count = ::send(channel_.get(), line.data() + at, line.size() - at, MSG_NOSIGNAL);
    if (count < 0 && errno != EINTR) return fail("the script of the test does not listen", place_);
    at += count > 0 ? static_cast<std::size_t>(count) : 0;
  }
}

void TestCase::answer(const Json& question, Json answer) {
  answer["id"] = question.at("id");
  send(answer);
}

// --- what a script asks for

void TestCase::loaded(const Json& message) {
  for (const Json& one : message.at("tests")) names_.push_back(one.at("name"));
  if (names_.empty())
    return fail("there is no test in it: test('...', async ({device, app}) => {})");
  result_.name = names_.at(index_);
  place_ = message.at("tests").at(index_).at("place");
  leftOut_ = plan_.wanted && !plan_.wanted(result_.name);
  if (leftOut_) return finish();
  limitTo(plan_.limit);
  send({{"do", "run"}, {"test", index_}, {"stimuli", stimuliJson().at("stimuli")}});
}

void TestCase::done(const Json& message) {
  const Json& failure = message.at("failure");
  if (!failure.is_null()) result_.failure = failureOf(failure);
  if (message.contains("now")) {
    result_.passed = Milliseconds(static_cast<std::int64_t>(message.at("now").get<double>() -
                                                            message.at("begun").get<double>()));
  }
  finish();
}

void TestCase::begin(const Json& question) {
  const StagePlan plan = stagePlanOf(plan_.folder, question);
  std::string trouble;
  stage_ = std::make_unique<Stage>(plan);
  if (!stage_->begin(plan, plan_.tools, trouble)) return answer(question, {{"trouble", trouble}});
  answer(question, stage_->report());
}

void TestCase::stimulate(const Json& question) {
  const Outcome outcome = stage_->stimulate(question.at("request"));
  answer(question, outcome.done ? Json::object() : Json{{"trouble", outcome.text}});
}

void TestCase::launch(const Json& question) {
  stage_->launch(question.at("app"), question.at("type"));
  answer(question);
}

void TestCase::read(const Json& question) {
  const fs::path file = stage_->folder() / question.at("file").get<std::string>();
  char* content = nullptr;
  gsize size = 0;
  GErrorOwned error;
  if (g_file_get_contents(file.c_str(), &content, &size, error.out()) == FALSE) {
    return answer(question, {{"trouble", error.text()}});
  }
  const GText owned(content);
  answer(question, {{"text", std::string(content, size)}});
}

void TestCase::step(const Json& question) {
  stage_->step(timeOf(question.at("until")),
               [this, question] { answer(question, stage_->report()); });
}

// --- the end

void TestCase::fail(const std::string& message, const Json& place) {
  if (finished_) return;
  result_.failure = failureOf({{"message", message}, {"place", place}});
  if (result_.failure->file.empty()) result_.failure->file = result_.file;
  finish();
}

gboolean TestCase::onLimit(gpointer self) {
  auto& test = *static_cast<TestCase*>(self);
  const std::string busy = test.stage_ ? test.stage_->whoIsBusy() : "";
  test.fail("took longer than " + inWords(test.currentLimit_) +
                (busy.empty() ? "" : "; " + busy + " has something to do all the time"),
            test.place_);
  return G_SOURCE_REMOVE;
}

void TestCase::finish() {
  if (finished_) return;
  finished_ = true;
  result_.took = Milliseconds((g_get_monotonic_time() - startedAt_) / G_TIME_SPAN_MILLISECOND);
  over_();
}

}  // namespace morvik::devkit
