// The page as those meet it who have it open.
#include "page/page.h"

#include <malloc.h>

#include <nlohmann/json.hpp>

#include "page-client.h"
#include "support/matchers.h"
#include "support/temporary-folder.h"

namespace morvik::test {

using namespace devkit;
namespace {

class FakeSource : public PageSource {
 public:
  std::string title() const override { return "Hello"; }
  std::string mode() const override { return "run"; }
  std::int64_t now() const override { return 42; }
  Json view() const override {
    ++viewsWritten;
    return {{"led", led}};
  }
  Json stimuli() const override { return Json::array({{{"name", "button"}}}); }
  Json applications() const override { return applications_; }
  Outcome stimulate(const std::string& name, const Json& /*arguments*/,
                    std::optional<unsigned> /*app*/) override {
    return {name == "button", "pressed " + name};
  }
  Outcome act(const PageAct& act) override { return {true, act.action + " " + act.app}; }

  std::string led = "red";
  Json applications_ = Json::array();
  mutable int viewsWritten = 0;
};

class PageTest : public ::testing::Test {
 protected:
  PageTest() {
    std::string text;
    EXPECT_FALSE(page_.listen(0, text)) << text;
  }

  static Json event(int number) { return {{"type", "note"}, {"text", std::to_string(number)}}; }
  // Runs the loop until the page behind this socket has answered everything before.
  static Json roundTrip(PageClient& client) {
    return client.ask({{"type", "stimulus"}, {"id", "trip"}, {"name", "button"}});
  }

  Loop loop_;
  test::TemporaryFolder folder_;
  FakeSource source_;
  Page page_{source_, folder_.path()};
};

TEST_F(PageTest, greetsWithEverythingThatIsKnown) {
  page_.happened(event(1));
  page_.logged({7, "hello", "message", "script", "JSLOG: hi"});
  PageClient client(loop_, page_.address());
  const Json hello = client.receive();
  EXPECT_EQ(hello, Json::parse(R"({
    "seq": 1, "type": "hello", "version": 1, "now": 42, "title": "Hello", "mode": "run",
    "view": {"led": "red"}, "applications": [], "stimuli": [{"name": "button"}], "tags": [],
    "trouble": "", "missed": {"log": 0, "events": 0},
    "log": [{"time": 7, "app": "hello", "level": "message", "kind": "script",
             "text": "JSLOG: hi"}],
    "messages": [{"type": "note", "text": "1"}]})"));
}

TEST_F(PageTest, twoPagesSeeTheSame) {
  PageClient one(loop_, page_.address());
  PageClient two(loop_, page_.address());
  for (PageClient* client : {&one, &two}) EXPECT_EQ(client->receive()["type"], "hello");
  source_.led = "blue";
  page_.viewChanged();
  page_.happened(event(5));
  for (PageClient* client : {&one, &two}) {
    EXPECT_EQ(client->receive("event")["event"], event(5));
    EXPECT_EQ(client->receive("view")["view"]["led"], "blue");
  }
}

TEST_F(PageTest, manyChangesAreOneView) {
  PageClient client(loop_, page_.address());
  client.receive("hello");
  source_.viewsWritten = 0;
  for (int i = 0; i < 100; ++i) page_.viewChanged();
  source_.led = "last";
  EXPECT_EQ(client.receive("view")["view"]["led"], "last");
  EXPECT_EQ(roundTrip(client)["done"], true);
  EXPECT_EQ(source_.viewsWritten, 1);
}

TEST_F(PageTest, tellsOfApplications) {
  PageClient client(loop_, page_.address());
  source_.applications_ = Json::array({"hello"});
  page_.applicationsChanged();
  EXPECT_EQ(client.receive("applications")["applications"], Json::array({"hello"}));
}

TEST_F(PageTest, linesThatComeTogetherAreOneFrame) {
  PageClient client(loop_, page_.address());
  client.receive("hello");
  for (int i = 0; i < 3; ++i) page_.logged({i, "a", "debug", "host", std::to_string(i)});
  const Json frame = client.receive();
  EXPECT_EQ(frame["type"], "log");
  EXPECT_THAT(frame["lines"], SizeIs(3));
  EXPECT_EQ(frame["lines"][2]["text"], "2");
}

TEST_F(PageTest, aLineIsToldOnceToAPageThatOpensAtThatMoment) {
  PageClient first(loop_, page_.address());
  page_.logged({1, "a", "debug", "host", "line"});
  PageClient second(loop_, page_.address());
  EXPECT_THAT(second.receive("hello")["log"], SizeIs(1));
  EXPECT_EQ(roundTrip(second)["seq"], 2) << "nothing between the greeting and the answer";
}

TEST_F(PageTest, textThatIsNoTextComesThrough) {
  PageClient client(loop_, page_.address());
  page_.logged({1, "a", "debug", "host", "\xff\xfe ok"});
  EXPECT_EQ(client.receive("log")["lines"][0]["text"], "\xef\xbf\xbd\xef\xbf\xbd ok");
}

TEST_F(PageTest, bringsBackWhatAPageAsksFor) {
  PageClient client(loop_, page_.address());
  Json outcome = client.ask({{"type", "stimulus"}, {"id", 5}, {"name", "button"}});
  EXPECT_EQ(outcome["id"], 5);
  EXPECT_EQ(outcome["done"], true);
  EXPECT_EQ(outcome["text"], "pressed button");
  outcome = client.ask({{"type", "act"}, {"id", 6}, {"action", "restart"}, {"app", "hello"}});
  EXPECT_EQ(outcome["text"], "restart hello");
  outcome = client.ask({{"type", "save-tags"}, {"id", 7}, {"tags", {{{"id", "04a1"}}}}});
  EXPECT_EQ(outcome["done"], true) << outcome;
}

TEST_F(PageTest, allPagesHaveOneDrawerOfTags) {
  PageClient one(loop_, page_.address());
  PageClient two(loop_, page_.address());
  const Json tags = Json::parse(R"([{"id":"04a1"}])");
  EXPECT_EQ(one.ask({{"type", "save-tags"}, {"tags", tags}})["done"], true);
  EXPECT_EQ(one.receive("tags")["tags"], tags);
  EXPECT_EQ(two.receive("tags")["tags"], tags);
  EXPECT_EQ(PageClient(loop_, page_.address()).receive("hello")["tags"], tags);
}

TEST_F(PageTest, answersWhatMakesNoSenseAndGoesOn) {
  PageClient client(loop_, page_.address());
  for (const char* text : {"{", "null", "", "[1,2]"}) {
    client.sendText(text);
    EXPECT_EQ(client.receive("outcome")["text"], "a frame must be one JSON object");
  }
  client.sendBytes(R"({"type":"stimulus","name":"button"})");
  EXPECT_EQ(client.receive("outcome")["done"], false) << "bytes are no text";
  EXPECT_EQ(roundTrip(client)["done"], true);
}

TEST_F(PageTest, aFrameThatIsTooLargeEndsItsPageAlone) {
  PageClient large(loop_, page_.address());
  PageClient other(loop_, page_.address());
  large.sendText("\"" + std::string(kLargestPageFrame, 'x') + "\"");
  large.closeCode();
  EXPECT_EQ(roundTrip(other)["done"], true);
  EXPECT_TRUE(loop_.runUntil([this] { return page_.pages() == 1; }));
}

TEST_F(PageTest, pagesLeave) {
  { PageClient client(loop_, page_.address()); }
  EXPECT_TRUE(loop_.runUntil([this] { return page_.pages() == 0; }));
  page_.happened(event(1));
  page_.viewChanged();
  PageClient next(loop_, page_.address());
  EXPECT_THAT(next.receive("hello")["messages"], SizeIs(1));
}

TEST_F(PageTest, thereIsAnEndToTheNumberOfPages) {
  std::deque<PageClient> clients;
  for (std::size_t i = 0; i < Page::kMostPages; ++i) {
    clients.emplace_back(loop_, page_.address());
    EXPECT_EQ(clients.back().receive()["type"], "hello");
  }
  EXPECT_EQ(PageClient(loop_, page_.address()).closeCode(), 4000);
  EXPECT_TRUE(loop_.runUntil([this] { return page_.pages() == Page::kMostPages; }));
  clients.pop_front();
  EXPECT_TRUE(loop_.runUntil([this] { return page_.pages() < Page::kMostPages; }));
  EXPECT_EQ(PageClient(loop_, page_.address()).receive()["type"], "hello");
}

TEST_F(PageTest, aPageThatFellAsleepCatchesUp) {
  PageClient client(loop_, page_.address());
  client.receive("hello");
  for (int i = 0; i < 3000; ++i) page_.happened(event(i));
  source_.led = "blue";
  page_.viewChanged();
  EXPECT_EQ(roundTrip(client)["seq"], 1001) << "999 events, and the answer without room";
  client.send({{"type", "seen"}, {"seq", 1001}});
  const Json missed = client.receive();
  EXPECT_EQ(missed["type"], "missed");
  EXPECT_EQ(missed["events"], 3000 - 999);
  EXPECT_EQ(missed["log"], 0);
  EXPECT_EQ(client.receive()["view"]["led"], "blue");
  page_.happened(event(9999));
  EXPECT_EQ(client.receive()["event"], event(9999));
}

TEST_F(PageTest, aPageThatStopsReadingSlowsNobodyAndNothingGrows) {
  DeafPage deaf(loop_, page_.address());
  PageClient awake(loop_, page_.address());
  std::size_t frames = 0;
  const Json event = {{"type", "note"}, {"text", std::string(400, 'x')}};
  const auto pass = [&](int hundreds) {
    for (int i = 0; i < hundreds; ++i) {
      for (int j = 0; j < 100; ++j) page_.happened(event);
      awake.receive();
      frames += 1 + awake.seeAll();
    }
  };
  pass(100);
  // A sanitizer has an allocator of its own, of which nothing is seen here; the program's test
  // measures there as well.
  const auto before = mallinfo2().uordblks;
  pass(900);
  const auto after = mallinfo2().uordblks;
  EXPECT_LT(after, before + std::size_t{256} * 1024) << "bytes in use, before " << before;
  EXPECT_GT(frames, 99000U) << "the one that reads gets nearly all";
  EXPECT_EQ(page_.pages(), 2U);
  EXPECT_EQ(roundTrip(awake)["done"], true);
}

TEST_F(PageTest, aPageThatAsksAndNeverReadsIsShownOut) {
  DeafPage deaf(loop_, page_.address());
  ASSERT_TRUE(loop_.runUntil([this] { return page_.pages() == 1; }));
  deaf.send("{}", 2500);
  EXPECT_TRUE(loop_.runUntil([this] { return page_.pages() == 0; }));
}

}  // namespace
}  // namespace morvik::test
