// What a reader sees.
#include "terminal/display.h"

#include "app-client.h"
#include "device/describe.h"
#include "device/text.h"
#include "support/matchers.h"

namespace morvik::test {

using namespace devkit;
namespace {

zeph::ZephMsg withId(zeph::ZephMsg message, const std::string& id) {
  message.set_id(id);
  return message;
}

TEST(Describe, hasWordsForWhatTheDeviceKnows) {
  EXPECT_EQ(describe(startRequest("abc")), "interactive mode START abc");
  EXPECT_EQ(describe(stopRequest("abc")), "interactive mode STOP");
  EXPECT_EQ(describe(pingRequest("abc")), "ping");
  EXPECT_EQ(describe(infoRequest("abc")), "info?");
  EXPECT_EQ(describe(lightRequest("abc", "red")), "led light red");
  EXPECT_EQ(describe(fadeRequest("abc", "blue", 500)), "led fade blue 500 ms");
  EXPECT_EQ(describe(pulseRequest("abc", "green", 200, 3)), "led pulse green 200 ms x 3");
}

TEST(Describe, hasWordsForAnswers) {
  zeph::ZephMsg response;
  response.mutable_response()->set_code(zeph::ERROR);
  response.mutable_response()->set_description("why not");
  EXPECT_EQ(describe(response), "response ERROR \"why not\"");
  zeph::ZephMsg event;
  event.mutable_event()->set_code(zeph::TERMINATED);
  EXPECT_EQ(describe(event), "event TERMINATED");
  zeph::ZephMsg info;
  auto* entry = info.mutable_morvikinfo_response()->add_infos();
  entry->set_key("name");
  entry->set_value("me");
  EXPECT_EQ(describe(info), "info name=\"me\"");
}

TEST(Describe, showsEverythingElseFieldByField) {
  zeph::ZephMsg ears = freshMessage();
  ears.set_interactiveid("abc");
  ears.mutable_ears()->set_left(5);
  EXPECT_EQ(describe(ears), "ears { left: 5 }");
  EXPECT_EQ(describe(freshMessage()), "a message that asks for nothing");
}

TEST(Describe, cutsWhatIsTooLongToRead) {
  const std::string words = describe(lightRequest("abc", std::string(5000, 'x')));
  EXPECT_EQ(words.size(), 204U);
  EXPECT_THAT(words, EndsWith("xxx ..."));
}

TEST(Printable, keepsReadableTextsAndReplacesWhatATerminalWouldObey) {
  EXPECT_EQ(printable("r\xc3\xa9"
                      "d"),
            "r\xc3\xa9"
            "d");
  EXPECT_EQ(printable("a\nb\x1b[31m\tc"), "a?b?[31m?c");
  EXPECT_EQ(printable(std::string("a\0b", 3)),
            "a\xef\xbf\xbd"
            "b");
  EXPECT_EQ(printable("a\xff"
                      "b"),
            "a\xef\xbf\xbd"
            "b");
  EXPECT_EQ(printable(""), "");
}

TEST(Cited, fitsIntoASentence) {
  EXPECT_EQ(cited("word"), "word");
  EXPECT_EQ(cited(""), "\"\"");
  EXPECT_EQ(cited("a\nb"), "a?b");
  EXPECT_EQ(cited(std::string(41, 'x')), std::string(40, 'x') + " ...");
}

TEST(Listed, namesAllOrNone) {
  EXPECT_EQ(listed({}), "none");
  EXPECT_EQ(listed({"a"}), "a");
  EXPECT_EQ(listed({"a", "", "c"}), "a, \"\", c");
}

class DisplayTest : public ::testing::Test {
 protected:
  static PassedMessage passed(const zeph::ZephMsg& message) {
    return std::make_shared<zeph::ZephMsg>(message);
  }
  void show(const Event::What& what) { display_.happened({1, {}, what}); }

  std::vector<std::string> lines_;
  Display display_{[this](const std::string& line) { lines_.push_back(line); },
                   Display::Colors::kOff};
};

TEST_F(DisplayTest, aLineTellsTimeApplicationAndDirection) {
  show(Came{1});
  show(Received{1, passed(withId(lightRequest("abc", "red"), "12345678"))});
  show(Trouble{1, "oh\nno"});
  show(Left{1});
  const std::string start = "[0-9][0-9]:[0-9][0-9]:[0-9][0-9]\\.[0-9][0-9][0-9] app 1 ";
  EXPECT_THAT(lines_,
              ElementsAre(MatchesRegex(start + "--  connected"),
                          MatchesRegex(start + "->  led light red  #1234"),
                          MatchesRegex(start + "!!  oh\\?no"), MatchesRegex(start + "--  gone")));
}

TEST_F(DisplayTest, anAnswerCarriesTheMarkOfItsRequest) {
  zeph::ZephMsg answer = withId(zeph::ZephMsg(), "own id");
  answer.set_correlationid("12345678");
  answer.mutable_response()->set_code(zeph::OK);
  show(Sent{2, passed(answer)});
  EXPECT_THAT(lines_, ElementsAre(EndsWith(" app 2 <-  response OK  #1234")));
}

TEST_F(DisplayTest, aNoticeCarriesNoMark) {
  zeph::ZephMsg notice = withId(zeph::ZephMsg(), "own id");
  notice.mutable_interactivemode()->set_action(zeph::InteractiveMode::STOP);
  show(Sent{2, passed(notice)});
  EXPECT_THAT(lines_, ElementsAre(EndsWith(" app 2 <-  interactive mode STOP")));
}

TEST_F(DisplayTest, showsWhatHappensToTheDevice) {
  show(Noted{"wrote\na file"});
  EXPECT_THAT(lines_, ElementsAre(EndsWith(" device --  wrote?a file")));
}

TEST_F(DisplayTest, showsOnceWhatIsSentToAll) {
  zeph::ZephMsg press = withId(zeph::ZephMsg(), "own id");
  press.mutable_buttoncallback()->set_type(zeph::ButtonCallback::SIMPLE);
  for (const AppNumber number : {1U, 2U, 3U}) show(Sent{number, passed(press), {1, 2, 3}});
  show(Sent{3, passed(press)});
  EXPECT_THAT(lines_, ElementsAre(EndsWith(" all <-  buttonCallback { type: SIMPLE }"),
                                  EndsWith(" app 3 <-  buttonCallback { type: SIMPLE }")));
}

TEST_F(DisplayTest, showsDoubts) {
  show(Doubted{2, {Doubt::About::kColor, "rde", "no\ncolour"}});
  EXPECT_THAT(lines_, ElementsAre(EndsWith(" app 2 ??  no?colour")));
}

TEST_F(DisplayTest, cutsWhatIsTooLongToRead) {
  show(Noted{std::string(5000, 'x')});
  EXPECT_THAT(lines_, ElementsAre(EndsWith(" device --  " + std::string(200, 'x') + " ...")));
}

TEST_F(DisplayTest, saysNothingOfWhatMessagesAndNotesTell) {
  show(Changed{"led"});
  show(Began{});
  show(Ended{});
  show(Stimulated{"button", {}, {}});
  EXPECT_THAT(lines_, ::testing::IsEmpty());
}

TEST_F(DisplayTest, showsTroubleThatIsNoApplications) {
  show(Trouble{std::nullopt, "an observer failed"});
  EXPECT_THAT(lines_, ElementsAre(EndsWith(" device !!  an observer failed")));
}

TEST_F(DisplayTest, showsColoursOnlyWhenTheyAreOn) {
  show(Came{1});
  Display colored([this](const std::string& line) { lines_.push_back(line); },
                  Display::Colors::kOn);
  colored.happened({1, {}, Came{1}});
  EXPECT_THAT(lines_, ElementsAre(Not(HasSubstr("\033")), HasSubstr("\033[")));
}

}  // namespace
}  // namespace morvik::test
