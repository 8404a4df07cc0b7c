// The user's credentials, messages and contacts: how the device answers for them, and what lines of
// the command input make of them.
#include <google/protobuf/text_format.h>

#include "app-client.h"
#include "bench.h"
#include "device/describe.h"
#include "support/matchers.h"
#include "support/temporary-folder.h"
#include "terminal/display.h"

namespace morvik::test {

using namespace devkit;
namespace {

const std::string kNoMessages = "1: re response { code: OK } morvikMessageResponse { }";

// Somebody else's hand on the same file: nothing more can be written.
void forbidWriting(const std::string& file) {
  Database database;
  ASSERT_TRUE(database.open(file));
  for (const std::string table : {"messages", "contacts", "credentials"}) {
    for (const std::string event : {"INSERT", "UPDATE", "DELETE"}) {
      const std::string trigger = "CREATE TRIGGER " + table + event + " BEFORE " + event + " ON " +
                                  table + " BEGIN SELECT RAISE(FAIL, 'full'); END";
      ASSERT_TRUE(database.does(trigger.c_str())) << database.trouble();
    }
  }
}

class UserDataTest : public ::testing::Test {
 protected:
  // The messages that the device answers a query with, beside OK.
  std::vector<zeph::MorvikMessage> messages(const std::string& query) {
    zeph::ZephMsg request = freshMessage();
    request.set_interactiveid("granted");
    EXPECT_TRUE(
        google::protobuf::TextFormat::ParseFromString(query, request.mutable_morvikmessagequery()));
    bench_.outlet.sent.clear();
    receive(bench_.device, 1, request);
    EXPECT_THAT(bench_.outlet.sent, SizeIs(1));
    if (bench_.outlet.sent.size() != 1) return {};
    const zeph::ZephMsg& answer = bench_.outlet.sent[0].message;
    EXPECT_EQ(answer.correlationid(), request.id());
    EXPECT_EQ(answer.response().code(), zeph::OK);
    EXPECT_TRUE(answer.has_morvikmessageresponse()) << "a script would not hear it";
    const auto& list = answer.morvikmessageresponse().morvikmessagelist();
    return {list.begin(), list.end()};
  }

  std::vector<std::string> texts(const std::string& query) {
    std::vector<std::string> texts;
    for (const auto& message : messages(query)) texts.push_back(message.content().content());
    return texts;
  }

  // A line of the command input that tells its writer something.
  std::string told(const std::string& line) {
    const Outcome outcome = stimulate(bench_.device, line);
    EXPECT_TRUE(outcome.done) << outcome.text;
    return outcome.text;
  }

  Bench bench_;
};

using MessagesTest = UserDataTest;

TEST_F(MessagesTest, anEmptyBoxIsAnEmptyList) {
  for (const char* query : {"LIST", "GET", "DELETE", "READ", "GET id: 'none'"}) {
    EXPECT_THAT(bench_.command("morvikMessageQuery { action: " + std::string(query) + " }"),
                ElementsAre(kNoMessages));
  }
}

TEST_F(MessagesTest, oneThatComesIsUnread) {
  const std::int64_t before = g_get_real_time() / G_USEC_PER_SEC;
  EXPECT_THAT(bench_.stimulus("message anna 'Are you there?' type=MIXED header=h"), IsEmpty());
  const auto all = messages("action: LIST");
  ASSERT_THAT(all, SizeIs(1));
  zeph::MorvikMessageHeader header = all[0].header();
  EXPECT_TRUE(g_uuid_string_is_valid(header.id().c_str()));
  EXPECT_GE(header.date(), before);
  EXPECT_LE(header.date(), g_get_real_time() / G_USEC_PER_SEC);
  header.clear_id();
  header.clear_date();
  EXPECT_EQ(header.ShortDebugString(),
            R"(status: UNREAD from { uuid: "anna" } to { alias: "owner" uuid: "owner" })");
  EXPECT_EQ(all[0].content().ShortDebugString(),
            R"(type: MIXED header: "h" content: "Are you there?")");
}

TEST_F(MessagesTest, oneOfAContactTellsWhoThatIs) {
  bench_.stimulus("contact anna alias=Anna object=1:Lamp");
  bench_.stimulus("message anna hi");
  EXPECT_EQ(messages("action: LIST").at(0).header().from().ShortDebugString(),
            R"(objects { idDB: "1" name: "Lamp" } alias: "Anna" uuid: "anna")");
}

TEST_F(MessagesTest, oneThatIsSentIsKeptAsRead) {
  const auto sent = messages(
      "action: NEW message { header { id: 'mine' date: 1 to { uuid: 'anna' } }"
      " content { type: TEXT content: 'hello' } }");
  ASSERT_THAT(sent, SizeIs(1));
  EXPECT_EQ(sent[0].header().status(), zeph::MorvikMessageHeader::READ);
  EXPECT_EQ(sent[0].header().from().uuid(), "owner");
  EXPECT_EQ(sent[0].header().to().uuid(), "anna");
  EXPECT_NE(sent[0].header().id(), "mine");
  EXPECT_GT(sent[0].header().date(), 1);
  EXPECT_EQ(messages("action: LIST").at(0).SerializeAsString(), sent[0].SerializeAsString());
}

TEST_F(MessagesTest, oneToTheOwnBoxIsUnread) {
  const auto sent = messages(
      "action: NEW message { header { to { uuid: 'owner' } } content { type: TEXT content: '' } }");
  EXPECT_EQ(sent.at(0).header().status(), zeph::MorvikMessageHeader::UNREAD);
}

TEST_F(MessagesTest, areGotMarkedAndDeletedByTheirIds) {
  for (const char* text : {"a", "b", "c"}) bench_.stimulus(std::string("message anna ") + text);
  const auto all = messages("action: LIST");
  const std::string ids =
      " id: '" + all.at(2).header().id() + "' id: '" + all.at(0).header().id() + "' id: 'none'";
  EXPECT_THAT(texts("action: GET" + ids), ElementsAre("c", "a"));
  for (const auto& message : messages("action: READ" + ids)) {
    EXPECT_EQ(message.header().status(), zeph::MorvikMessageHeader::READ);
  }
  EXPECT_EQ(messages("action: LIST").at(0).header().status(), zeph::MorvikMessageHeader::READ);
  EXPECT_EQ(messages("action: LIST").at(1).header().status(), zeph::MorvikMessageHeader::UNREAD);
  EXPECT_THAT(texts("action: DELETE" + ids), ElementsAre("c", "a"));
  EXPECT_THAT(texts("action: LIST"), ElementsAre("b"));
}

TEST_F(MessagesTest, aNewOneNeedsAMessage) {
  EXPECT_THAT(bench_.command("morvikMessageQuery { action: NEW }"),
              ElementsAre(HasSubstr("code: ERROR description: \"a new message needs a message\"")));
}

TEST_F(MessagesTest, canBeAnsweredWithAnError) {
  bench_.stimulus("refuse ERROR morvikMessageQuery");
  EXPECT_THAT(bench_.command("morvikMessageQuery { action: LIST }"),
              ElementsAre(HasSubstr("response { code: ERROR")));
  EXPECT_THAT(bench_.command("morvikMessageQuery { action: LIST }"), ElementsAre(kNoMessages));
}

using ContactsTest = UserDataTest;

TEST_F(ContactsTest, areToldWithoutAResponse) {
  EXPECT_THAT(bench_.command("getcontactList {}"), ElementsAre("1: re contactList { }"));
  bench_.stimulus("contact u1 firstname=Anna lastname=B alias=a object=1:Lamp object=2 object=3:");
  bench_.stimulus("contact u2");
  EXPECT_THAT(bench_.command("getcontactList {}"),
              ElementsAre("1: re contactList { contacts { firstname: \"Anna\" lastname: \"B\" "
                          "objects { idDB: \"1\" name: \"Lamp\" } objects { idDB: \"2\" } "
                          "objects { idDB: \"3\" name: \"\" } alias: \"a\" uuid: \"u1\" } "
                          "contacts { uuid: \"u2\" } }"));
}

using CredentialsTest = UserDataTest;

TEST_F(CredentialsTest, areToldWithoutInteractiveMode) {
  const std::string ask = "interactiveId: '' socialQuery {}";
  EXPECT_THAT(bench_.command(ask), ElementsAre("1: re social { }"));
  bench_.stimulus("credentials facebookToken=abc twitterToken='d e=f'");
  EXPECT_THAT(bench_.command(ask),
              ElementsAre("1: re social { twitterToken: \"d e=f\" facebookToken: \"abc\" }"));
}

TEST_F(CredentialsTest, changeOneByOne) {
  bench_.stimulus("credentials facebookToken=abc soundcloudToken=def");
  EXPECT_THAT(bench_.noted("credentials facebookToken=new soundcloudToken="),
              ElementsAre("credentials kept: facebookToken"));
  EXPECT_THAT(bench_.command("socialQuery {}"),
              ElementsAre("1: re social { facebookToken: \"new\" }"));
  EXPECT_THAT(bench_.noted("credentials facebookToken="), ElementsAre("credentials kept: none"));
}

TEST_F(CredentialsTest, areNamedByTheWordAlone) {
  const std::string names =
      "there are: twitterConsumerKey, twitterConsumerSecret, twitterToken, twitterTokenSecret, "
      "facebookToken, soundcloudToken\n";
  EXPECT_EQ(told("credentials"), "kept: none\n" + names);
  bench_.stimulus("credentials facebookToken=abc twitterToken=def");
  EXPECT_EQ(told("credentials"), "kept: twitterToken facebookToken\n" + names);
  bench_.stimulus("credentials withhold");
  EXPECT_EQ(told("credentials"), "kept: twitterToken facebookToken, withheld\n" + names);
}

TEST_F(CredentialsTest, aWrongNameIsAnsweredWithAllThereAre) {
  const std::string refusal = bench_.refused("credentials twitterKey=abc");
  EXPECT_THAT(refusal, HasSubstr("there is no credential of that name; there are "));
  const auto* credentials = zeph::Social::descriptor();
  ASSERT_GT(credentials->field_count(), 0);
  for (int i = 0; i < credentials->field_count(); ++i) {
    EXPECT_THAT(refusal, HasSubstr(credentials->field(i)->name()));
  }
}

TEST_F(CredentialsTest, canBeWithheld) {
  bench_.stimulus("credentials facebookToken=abc");
  bench_.stimulus("credentials withhold");
  EXPECT_THAT(bench_.command("socialQuery {}"), ElementsAre("1: re social { }"));
  bench_.stimulus("credentials give");
  EXPECT_THAT(bench_.command("socialQuery {}"), ElementsAre(HasSubstr("abc")));
}

TEST_F(CredentialsTest, areInNoAnswerToAWrongLine) {
  for (const char* line :
       {"credentials SECRET", "credentials Token=SECRET", "credentials withhold SECRET",
        "credentials facebookToken='SECRET", "app 1 credentials facebookToken=SECRET",
        "facebookToken=SECRET", "credentials facebookToken=SECRET =SECRET",
        "credentials facebookToken=abc SECRET="}) {
    EXPECT_THAT(bench_.refused(line), Not(HasSubstr("SECRET"))) << line;
  }
  EXPECT_THAT(told("credentials"), StartsWith("kept: none\n"));
}

TEST_F(CredentialsTest, areNeverShown) {
  std::vector<std::string> lines;
  Display display([&](const std::string& line) { lines.push_back(line); }, Display::Colors::kOff);
  zeph::ZephMsg answer = freshMessage();
  answer.mutable_social()->set_facebooktoken("SECRET");
  answer.mutable_social()->set_twittertokensecret("SECRET");
  EXPECT_EQ(describe(answer), "credentials twitterTokenSecret facebookToken");
  const auto show = [&](auto event) {
    event.application = 1;
    event.message = std::make_shared<zeph::ZephMsg>(answer);
    display.happened({1, {}, event});
  };
  show(Sent());
  show(Received());
  answer.mutable_config()->mutable_social()->set_facebooktoken("SECRET");
  answer.mutable_detection();
  show(Received());
  answer.clear_config();
  show(Received());
  EXPECT_THAT(lines, ::testing::Each(Not(HasSubstr("SECRET"))));
  EXPECT_THAT(lines, SizeIs(4));
}

TEST_F(UserDataTest, linesThatMakeNoSenseChangeNothing) {
  for (const char* line :
       {"message", "message anna", "message '' a", "message anna a b", "message anna a type=x",
        "app 1 message anna a", "contact", "contact ''", "contact a b",
        "contact a object=", "contact a object=:Lamp", "app 1 contact a"}) {
    EXPECT_THAT(bench_.refused(line), HasSubstr("Usage: ")) << line;
  }
  EXPECT_THAT(texts("action: LIST"), IsEmpty());
  EXPECT_THAT(bench_.command("getcontactList {}"), ElementsAre("1: re contactList { }"));
}

TEST(UserDataOnDisk, aStoreThatFailsIsAnErrorAndNoLoss) {
  const test::TemporaryFolder folder;
  std::string trouble;
  KeptOutlet outlet;
  HeldScheduler scheduler;
  Device device(outlet, scheduler, Store::open(folder.path(), trouble));
  device.applicationCame(1);
  receive(device, 1, startRequest("granted"));
  ASSERT_TRUE(stimulate(device, "message anna hi").done);
  forbidWriting(folder / "device.sqlite");
  for (const char* line : {"message anna no", "contact anna", "credentials facebookToken=x"}) {
    EXPECT_THAT(stimulate(device, line).text, HasSubstr(": full.")) << line;
  }
  zeph::ZephMsg request = freshMessage();
  request.set_interactiveid("granted");
  request.mutable_morvikmessagequery()->set_action(zeph::MorvikMessageQuery::NEW);
  request.mutable_morvikmessagequery()->mutable_message()->mutable_header()->mutable_to();
  receive(device, 1, request);
  EXPECT_EQ(outlet.sent.back().message.response().ShortDebugString(),
            R"(code: ERROR description: "full")");
  EXPECT_THAT(*device.store().messages(), SizeIs(1));
}

TEST(DescribeUserData, hasWords) {
  const std::pair<const char*, const char*> cases[] = {
      {"morvikMessageQuery { action: READ id: 'a' id: 'b' }", "messages READ a b"},
      {"morvikMessageQuery { action: NEW message { header { to { uuid: 'u' } } content { type: "
       "TEXT "
       "content: 'hi' } } }",
       "messages NEW to u \"hi\""},
      {"response { code: OK } morvikMessageResponse { }", "response OK, 0 messages"},
      {"morvikMessageResponse { morvikMessageList { header { to {} } } }", "1 message"},
      {"getcontactList { }", "contacts?"},
      {"socialQuery { }", "credentials?"},
      {"social { }", "credentials none"},
  };
  for (const auto& [message, words] : cases) {
    zeph::ZephMsg parsed = freshMessage();
    google::protobuf::TextFormat::Parser parser;
    ASSERT_TRUE(parser.MergeFromString(message, &parsed));
    EXPECT_EQ(describe(parsed), words);
  }
}

}  // namespace
}  // namespace morvik::test
