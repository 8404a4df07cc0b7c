// The kept ends, and morvik-dev why, which shows them.

#include <filesystem>
#include <fstream>
#include <thread>

#include <nlohmann/json.hpp>

#include "run/end-history.h"
#include "support/file-content.h"
#include "support/matchers.h"
#include "support/program.h"
#include "support/temporary-folder.h"

namespace morvik::test {

using namespace devkit;
namespace {

End endOf(const std::string& app, EndKind kind = EndKind::kNeverConnected) {
  End end;
  end.app = app;
  end.kind = kind;
  end.pid = 12;
  end.launchedAt = TimePoint(std::chrono::milliseconds(1767225600123));
  end.endedAt = end.launchedAt + std::chrono::milliseconds(10040);
  end.state = "not connected";
  end.status = "status 255";
  end.sentence = "The reason.";
  end.cure = "The cure.";
  end.lastLines = {"log: one", "WARNING: two\nlines"};
  return end;
}

class WhyTest : public ::testing::Test {
 protected:
  std::string file() const { return folder() + "/ends.json"; }
  std::string folder() const { return state_ / "morvik"; }
  void damage() const {
    std::filesystem::create_directories(folder());
    std::ofstream(file()) << "{ no json";
  }

  ProgramResult why(std::vector<std::string> arguments = {}) const {
    std::vector<std::string> command{"/usr/bin/env", "XDG_STATE_HOME=" + state_.path().string(),
                                     MORVIK_DEV, "why"};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return run(command);
  }

  test::TemporaryFolder state_;
  EndHistory history_{folder()};
};

TEST_F(WhyTest, historyGivesBackWhatItWasGiven) {
  EXPECT_EQ(history_.add(endOf("clock")), std::nullopt);
  const auto content = history_.read();
  EXPECT_EQ(content.trouble, "");
  ASSERT_THAT(content.ends, SizeIs(1));
  const End& end = content.ends[0];
  const End given = endOf("clock");
  EXPECT_EQ(end.kind, given.kind);
  EXPECT_EQ(end.pid, given.pid);
  EXPECT_EQ(end.launchedAt, given.launchedAt);
  EXPECT_EQ(end.endedAt, given.endedAt);
  EXPECT_EQ(headlineOf(end), "clock ended after 10.0 s, not connected, status 255");
  EXPECT_EQ(end.sentence, given.sentence);
  EXPECT_EQ(end.cure, given.cure);
  EXPECT_EQ(end.lastLines, given.lastLines);
}

TEST_F(WhyTest, historyKeepsTheLastTen) {
  for (int i = 1; i <= 12; ++i) {
    EXPECT_EQ(history_.add(endOf("app" + std::to_string(i))), std::nullopt);
  }
  const auto ends = history_.read().ends;
  ASSERT_THAT(ends, SizeIs(10));
  EXPECT_EQ(ends.front().app, "app3");
  EXPECT_EQ(ends.back().app, "app12");
}

TEST_F(WhyTest, historyLosesNothingWhenSeveralWrite) {
  std::vector<std::thread> writers;
  writers.reserve(8);
  for (int i = 0; i < 8; ++i) {
    writers.emplace_back([this, i] {
      EXPECT_EQ(EndHistory(folder()).add(endOf("app" + std::to_string(i))), std::nullopt);
    });
  }
  for (std::thread& writer : writers) writer.join();
  EXPECT_THAT(history_.read().ends, SizeIs(8));
}

TEST_F(WhyTest, historyMovesADamagedFileAside) {
  damage();
  EXPECT_EQ(history_.add(endOf("clock")),
            file() + " was damaged; it is now " + file() + ".damaged");
  EXPECT_THAT(history_.read().ends, SizeIs(1));
  EXPECT_EQ(test::contentOf(file() + ".damaged"), "{ no json");
  damage();
  EXPECT_THAT(history_.read().trouble, HasSubstr(".damaged-2"));
  EXPECT_EQ(test::contentOf(file() + ".damaged"), "{ no json");
}

TEST_F(WhyTest, historyTakesJsonOfAnotherShapeForDamaged) {
  std::filesystem::create_directories(folder());
  for (const char* text : {"[]", "{}", R"({"ends": [{"app": 1}]})", R"({"ends": [7]})", ""}) {
    std::ofstream(file()) << text;
    EXPECT_THAT(history_.read().trouble, HasSubstr("was damaged")) << text;
  }
}

TEST_F(WhyTest, historySaysWhyAnEndIsNotKept) {
  std::ofstream(folder()) << "a file in the folder's place";
  EXPECT_THAT(history_.add(endOf("clock")).value_or(""), StartsWith("this end is not kept: "));
}

TEST_F(WhyTest, historyTakesTextThatIsNotUtf8) {
  End end = endOf("clock");
  end.lastLines = {"\xff"};
  EXPECT_EQ(history_.add(end), std::nullopt);
  EXPECT_THAT(history_.read().ends, SizeIs(1));
}

TEST_F(WhyTest, everyKindKeepsItsName) {
  std::set<std::string> names;
  for (const EndKind kind : endKinds()) {
    EXPECT_EQ(endKindOf(nameOf(kind)), kind);
    names.insert(nameOf(kind));
  }
  EXPECT_EQ(names.size(), endKinds().size());
  EXPECT_EQ(endKindOf("of-a-later-version"), EndKind::kUnknown);
}

TEST_F(WhyTest, verbShowsTheLatestFirst) {
  EXPECT_EQ(history_.add(endOf("clock")), std::nullopt);
  EXPECT_EQ(history_.add(endOf("radio")), std::nullopt);
  const ProgramResult outcome = why();
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.output,
            "2026-01-01T00:00:10.163Z  radio ended after 10.0 s, not connected, status 255\n"
            "  The reason.\n"
            "  The cure.\n"
            "  Last lines:\n"
            "    log: one\n"
            "    WARNING: two\n"
            "    | lines\n"
            "2026-01-01T00:00:10.163Z  clock ended after 10.0 s, not connected, status 255\n"
            "  The reason.\n"
            "  The cure.\n"
            "  Last lines:\n"
            "    log: one\n"
            "    WARNING: two\n"
            "    | lines\n");
}

TEST_F(WhyTest, verbShowsOneApplication) {
  EXPECT_EQ(history_.add(endOf("clock")), std::nullopt);
  EXPECT_EQ(history_.add(endOf("radio")), std::nullopt);
  const auto json = nlohmann::json::parse(why({"clock", "--json"}).output);
  ASSERT_THAT(json.at("ends"), SizeIs(1));
  EXPECT_EQ(json["ends"][0]["app"], "clock");
  EXPECT_EQ(json["ends"][0]["kind"], "never-connected");
  EXPECT_EQ(json["ends"][0]["afterMs"], 10040);
}

TEST_F(WhyTest, verbTellsThatNothingIsKnown) {
  const ProgramResult outcome = why({"clock"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.output, "morvik-dev why: no end of clock is known.\n");
  EXPECT_EQ(why().status, 1);
  EXPECT_FALSE(std::filesystem::exists(folder()));
}

TEST_F(WhyTest, verbTellsOfADamagedFile) {
  damage();
  const ProgramResult outcome = why();
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.output, StartsWith("morvik-dev why: " + file() + " was damaged"));
}

TEST_F(WhyTest, verbRefusesWhatMakesNoSense) {
  EXPECT_EQ(why({"clock", "radio"}).status, 2);
  EXPECT_EQ(why({"--soon"}).status, 2);
  const ProgramResult help = why({"--help"});
  EXPECT_EQ(help.status, 0);
  EXPECT_THAT(help.output, HasSubstr("[APP]"));
}

}  // namespace
}  // namespace morvik::test
