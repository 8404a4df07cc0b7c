// Launching through the real host: processes, lines, statuses, and nothing left behind.
#include "run/launch.h"

#include <signal.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "launched.h"
#include "run/folder.h"
#include "support/matchers.h"

namespace morvik::test {

using namespace devkit;
namespace {

// Runs until it is ended.
constexpr char kPatient[] =
    "morvik.ticks = 0; log('here'); setTimeout(50, function() { return true; });";

class LaunchTest : public ::testing::Test {
 protected:
  LaunchTest() { EXPECT_TRUE(becomeReaper()); }

  // An application that lives longer than the test.
  LaunchPlan patient(const std::string& line = "app") {
    apps_.app("app", kPatient);
    return planOf(apps_, {line});
  }

  // A program in the host's place.
  std::string script(const std::string& lines) const {
    std::string path = apps_ / "host";
    std::ofstream(path) << "#!/bin/sh\n" << lines;
    std::filesystem::permissions(path, std::filesystem::perms::owner_all);
    return path;
  }

  void expectSaid(const std::string& text) {
    EXPECT_TRUE(loop_.runUntil([&] { return record_.said(text); })) << record_.transcript();
  }
  void expectOver() {
    EXPECT_TRUE(loop_.runUntil([this] { return record_.isOver; })) << record_.transcript();
    EXPECT_THAT(children(), IsEmpty());
  }

  Loop loop_;
  Apps apps_;
  LaunchRecord record_;
};

TEST_F(LaunchTest, tellsLinesWithTheirApplicationProcessAndLevel) {
  Launch launch(record_);
  launch.start(patient());
  expectSaid("here");
  const auto line = std::ranges::find(record_.lines, LineKind::kScript, &LogLine::kind);
  ASSERT_NE(line, record_.lines.end());
  EXPECT_EQ(line->text, "here");
  EXPECT_EQ(line->app, "app");
  EXPECT_EQ(line->pid, record_.processes.at("app"));
  EXPECT_EQ(line->level, LogLevel::kMessage);
}

TEST_F(LaunchTest, takesTheLargestDescriptor) {
  std::string descriptor = "<descriptor><accesses/></descriptor>";
  descriptor.resize(kLargestDescriptor, '\n');
  const LaunchPlan plan = patient();
  apps_.file("app", "descriptor.xml", descriptor);
  EXPECT_THAT(checkFolder(apps_ / "app"), IsEmpty());
  Launch launch(record_);
  launch.start(plan);
  expectSaid("here");
}

TEST_F(LaunchTest, endsWhatItStartedWhenItIsTold) {
  Launch launch(record_);
  launch.start(patient());
  expectSaid("here");
  launch.end(EndedBy::kQuit);
  expectOver();
  ASSERT_THAT(record_.ends, SizeIs(1));
  EXPECT_EQ(record_.ends[0].kind, EndKind::kQuit);
  EXPECT_EQ(record_.ends[0].status, "killed by SIGTERM");
}

TEST_F(LaunchTest, endsWhatItStartedWhenItGoesItself) {
  {
    Launch launch(record_);
    launch.start(patient());
    expectSaid("here");
  }
  EXPECT_THAT(children(), IsEmpty());
  EXPECT_THAT(record_.ends, IsEmpty());
}

TEST_F(LaunchTest, endsWhatHasNotSaidAWordYet) {
  { Launch(record_).start(patient()); }
  EXPECT_THAT(children(), IsEmpty());
}

TEST_F(LaunchTest, endsWhatHasNotSaidAWordYetWhenItIsTold) {
  Launch launch(record_);
  launch.start(patient());
  launch.end(EndedBy::kRestart);
  expectOver();
  ASSERT_THAT(record_.ends, SizeIs(1));
  EXPECT_EQ(record_.ends[0].kind, EndKind::kRestarted);
}

TEST_F(LaunchTest, explainsFromTheLogAloneWhatTheLauncherReaped) {
  LaunchPlan plan = patient();
  plan.host = script("( echo \"DEBUG: running app: " + apps_.path() +
                     "/app\" >&2; echo DEBUG: EXIT >&2 ) &\nwait\n");
  Launch launch(record_);
  launch.start(plan);
  expectOver();
  ASSERT_THAT(record_.ends, SizeIs(1));
  EXPECT_EQ(record_.ends[0].kind, EndKind::kScriptExit);
  EXPECT_EQ(record_.ends[0].status, "status not known");
}

TEST_F(LaunchTest, forcesWhatDoesNotEndWhenItIsTold) {
  LaunchPlan plan = patient();
  plan.host = script(
      "trap '' TERM\n"
      "echo MESSAGE: here >&2\n"
      "read line <\"$0.input\"\n");
  ASSERT_EQ(mkfifo((plan.host + ".input").c_str(), S_IRUSR | S_IWUSR), 0);
  Launch launch(record_);
  launch.start(plan);
  expectSaid("here");
  launch.end(EndedBy::kRestart);
  expectOver();
  ASSERT_THAT(record_.ends, SizeIs(1));
  EXPECT_EQ(record_.ends[0].kind, EndKind::kRestarted);
}

TEST_F(LaunchTest, passesTheWholeLineOn) {
  apps_.app("app", "log(launchType.name + '|' + instanceName);");
  Launch launch(record_);
  launch.start(planOf(apps_, {"app plain two words"}));
  expectSaid("plain|two words");
}

TEST_F(LaunchTest, launchesThreeAndTellsThatAFourthIsTooMany) {
  for (const char* name : {"a", "b", "c", "d"}) apps_.app(name, kPatient);
  LaunchPlan plan = planOf(apps_, {"a", "b", "c", "d"});
  Launch launch(record_);
  launch.start(plan);
  EXPECT_TRUE(loop_.runUntil([&] {
    return record_.processes.size() == 3 && !record_.ends.empty();
  })) << record_.transcript();
  EXPECT_EQ(record_.ends[0].kind, EndKind::kLauncherFull);
  EXPECT_EQ(record_.ends[0].app, "d");
  expectSaid("too many mvm ignore request");
  EXPECT_THAT(launch.applications(), SizeIs(3));
  launch.end(EndedBy::kQuit);
  expectOver();
  EXPECT_THAT(record_.ends, SizeIs(4));
}

TEST_F(LaunchTest, takesNoLineOfAScriptForALineOfTheHost) {
  apps_.app("app",
            "log('x\\nWARNING: forged');"
            "log(Array(8192 - 'MESSAGE: JSLOG: '.length + 1).join('y') + '\\nDEBUG: far');"
            "log('end');");
  Launch launch(record_);
  launch.start(planOf(apps_, {"app"}));
  expectSaid("end");
  EXPECT_TRUE(record_.said("x\nWARNING: forged"));
  EXPECT_FALSE(record_.said("forged"));
  EXPECT_FALSE(record_.said("far"));
}

TEST_F(LaunchTest, putsLongLinesTogether) {
  apps_.app("app", "log(Array(50001).join('y')); log('\\u00e9t\\u00e9'); log('end');");
  Launch launch(record_);
  launch.start(planOf(apps_, {"app"}));
  expectSaid("end");
  EXPECT_TRUE(record_.said(std::string(50000, 'y')));
  EXPECT_TRUE(record_.said("été"));
}

TEST_F(LaunchTest, leavesNothingAfterManyLaunches) {
  const LaunchPlan plan = patient();
  const auto openFiles = [] {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
  };
  const auto before = openFiles();
  for (int i = 0; i < 30; ++i) {
    LaunchRecord record;
    Launch launch(record);
    launch.start(plan);
    EXPECT_TRUE(loop_.runUntil([&] { return record.said("here"); })) << record.transcript();
    launch.end(EndedBy::kRestart);
    EXPECT_TRUE(loop_.runUntil([&] { return record.isOver; })) << record.transcript();
    ASSERT_THAT(record.ends, SizeIs(1));
    EXPECT_EQ(record.ends[0].kind, EndKind::kRestarted) << record.transcript();
  }
  EXPECT_THAT(children(), IsEmpty());
  EXPECT_EQ(openFiles(), before);
}

TEST_F(LaunchTest, hearsOfTheConnectionFromWhoeverHasTheServer) {
  Launch launch(record_);
  launch.start(patient());
  expectSaid("here");
  const pid_t pid = record_.processes.at("app");
  launch.connected(pid);
  launch.left(pid, ServerLoss::kReset, "broken");
  const Evidence* evidence = launch.evidenceOf(pid);
  ASSERT_NE(evidence, nullptr);
  EXPECT_EQ(evidence->state, AppState::kConnected);
  EXPECT_EQ(evidence->serverLoss, ServerLoss::kReset);
  EXPECT_EQ(evidence->serverLeft, "broken");
  launch.connected(pid);
  EXPECT_EQ(evidence->serverLoss, ServerLoss::kNone);
  EXPECT_EQ(launch.evidenceOf(getpid()), nullptr);
}

}  // namespace
}  // namespace morvik::test
