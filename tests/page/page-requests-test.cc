// What pages may ask for, and what they are told when it makes no sense.
#include "page/page-requests.h"

#include <vector>

#include <nlohmann/json.hpp>

#include "support/matchers.h"

namespace morvik::test {

using namespace devkit;
namespace {

class KeptRequests : public PageRequestTaker {
 public:
  bool seen(std::uint64_t number) override {
    calls.push_back("seen " + std::to_string(number));
    return number <= 10;
  }
  Outcome stimulate(const std::string& name, const Json& arguments,
                    std::optional<unsigned> app) override {
    calls.push_back(name + " " + arguments.dump() + " " + (app ? std::to_string(*app) : "all"));
    return {true, "well"};
  }
  Outcome act(const PageAct& act) override {
    calls.push_back(act.action + " " + act.app + " " + act.launchType);
    return {false, "not now"};
  }
  Outcome saveTags(const Json& tags) override {
    calls.push_back("tags " + tags.dump());
    return {true, ""};
  }

  std::vector<std::string> calls;
};

class PageRequestsTest : public ::testing::Test {
 protected:
  Json answerTo(const std::string& frame) {
    const auto outcome = takeRequest(frame, taker_);
    EXPECT_TRUE(outcome) << frame;
    return outcome.value_or(Json());
  }

  KeptRequests taker_;
};

TEST_F(PageRequestsTest, doesAStimulus) {
  const Json outcome = answerTo(
      R"({"type":"stimulus","id":7,"name":"button","arguments":{"type":"SIMPLE","n":2},"app":3})");
  EXPECT_EQ(outcome, Json::parse(R"({"type":"outcome","id":7,"done":true,"text":"well"})"));
  EXPECT_THAT(taker_.calls, ElementsAre(R"(button {"type":"SIMPLE","n":2} 3)"));
}

TEST_F(PageRequestsTest, aStimulusIsForAllUnlessItSaysForWhom) {
  answerTo(R"({"type":"stimulus","id":"a","name":"noise"})");
  answerTo(R"({"type":"stimulus","id":"a","name":"noise","arguments":null,"app":null})");
  EXPECT_THAT(taker_.calls, ElementsAre("noise {} all", "noise {} all"));
}

TEST_F(PageRequestsTest, actsOnAnApplication) {
  const Json outcome =
      answerTo(R"({"type":"act","id":"x","action":"launch","app":"hello","launchType":"plain"})");
  EXPECT_EQ(outcome, Json::parse(R"({"type":"outcome","id":"x","done":false,"text":"not now"})"));
  answerTo(R"({"type":"act","action":"restart","app":"hello"})");
  answerTo(R"({"type":"act","action":"launch","app":"hello","launchType":"RFID;04a1"})");
  EXPECT_THAT(taker_.calls,
              ElementsAre("launch hello plain", "restart hello ", "launch hello RFID;04a1"));
}

TEST_F(PageRequestsTest, savesTags) {
  EXPECT_EQ(answerTo(R"({"type":"save-tags","id":1,"tags":[{"id":"04a1","name":"Tag"}]})")["done"],
            true);
  EXPECT_THAT(taker_.calls, ElementsAre(R"(tags [{"id":"04a1","name":"Tag"}])"));
}

TEST_F(PageRequestsTest, aGoodAcknowledgementHasNoAnswer) {
  EXPECT_FALSE(takeRequest(R"({"type":"seen","seq":10})", taker_));
  EXPECT_THAT(taker_.calls, ElementsAre("seen 10"));
}

TEST_F(PageRequestsTest, tellsWhatMakesNoSenseAndDoesNothing) {
  const std::pair<std::string, const char*> cases[] = {
      {"", "a frame must be one JSON object"},
      {"{", "a frame must be one JSON object"},
      {"[]", "a frame must be one JSON object"},
      {"{} {}", "a frame must be one JSON object"},
      {"{\"type\":\"\xff\"}", "a frame must be one JSON object"},
      {std::string(60000, '['), "a frame must be one JSON object"},
      {std::string(30000, '[') + std::string(30000, ']'), "a frame must be one JSON object"},
      {"{}", "\"type\" must be a text"},
      {R"({"type":5})", "\"type\" must be a text"},
      {R"({"type":"fly"})", "there is no such type of request"},
      {R"({"type":"stimulus"})", "\"name\" must be a text"},
      {R"({"type":"stimulus","name":")" + std::string(201, 'x') + R"("})", "\"name\" is too long"},
      {R"({"type":"stimulus","name":"b","arguments":[1]})",
       "\"arguments\" must be an object of texts, numbers and lists"},
      {R"({"type":"stimulus","name":"b","arguments":{"a":[{"b":[]}]}})",
       "\"arguments\" must be an object of texts, numbers and lists"},
      {R"({"type":"stimulus","name":"b","app":-1})",
       "\"app\" must be the number of an application, or null"},
      {R"({"type":"stimulus","name":"b","app":4294967296})",
       "\"app\" must be the number of an application, or null"},
      {R"({"type":"stimulus","name":"b","app":"1"})",
       "\"app\" must be the number of an application, or null"},
      {R"({"type":"act","action":"fly","app":"a"})", "\"action\" must be restart, launch or stop"},
      {R"({"type":"act","action":"launch","app":"a","launchType":"demo"})",
       "\"launchType\" must be plain, RFID;... or ASR;..."},
      {R"({"type":"act","action":"launch","app":"a"})", "\"launchType\" must be a text"},
      {R"({"type":"act","action":"stop"})", "\"app\" must be a text"},
      {R"({"type":"act","action":"launch","app":"a","launchType":"ASR;a\nb"})",
       "texts must be one line"},
      {R"({"type":"save-tags"})", "\"tags\" must be at most 200 objects of short texts"},
      {R"({"type":"save-tags","tags":[[]]})",
       "\"tags\" must be at most 200 objects of short texts"},
      {R"({"type":"save-tags","tags":[{"id":1}]})",
       "\"tags\" must be at most 200 objects of short texts"},
  };
  for (const auto& [frame, text] : cases) {
    const Json outcome = answerTo(frame);
    EXPECT_EQ(outcome["done"], false) << frame;
    EXPECT_EQ(outcome["text"], text) << frame;
  }
  EXPECT_THAT(taker_.calls, IsEmpty());
}

TEST_F(PageRequestsTest, tellsOfAnAcknowledgementThatCannotBe) {
  for (const char* frame : {R"({"type":"seen"})", R"({"type":"seen","seq":-1})",
                            R"({"type":"seen","seq":11})", R"({"type":"seen","seq":"1"})"}) {
    EXPECT_EQ(answerTo(frame)["text"], "\"seq\" must be the number of a frame that was sent");
  }
}

TEST_F(PageRequestsTest, answersUnderTheIdThatItCan) {
  EXPECT_EQ(answerTo(R"({"type":"fly","id":4})")["id"], 4);
  EXPECT_EQ(answerTo(R"({"type":"fly","id":"four"})")["id"], "four");
  for (const char* id : {"[4]", "null", "1.5", "{}", "true"}) {
    EXPECT_TRUE(answerTo(R"({"type":"fly","id":)" + std::string(id) + "}")["id"].is_null()) << id;
  }
}

}  // namespace
}  // namespace morvik::test
