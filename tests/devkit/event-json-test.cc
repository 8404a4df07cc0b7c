// Events and messages in JSON.
#include "device/event-json.h"

#include <nlohmann/json.hpp>

#include "app-client.h"
#include "bench.h"
#include "device/secrets.h"
#include "support/matchers.h"

namespace morvik::test {

using namespace devkit;
namespace {

using std::chrono::milliseconds;

std::string lineOf(const Event::What& what) {
  return devkit::lineOf(Event{7, milliseconds(5), what});
}

PassedMessage passed(const zeph::ZephMsg& message) {
  return std::make_shared<zeph::ZephMsg>(message);
}

zeph::ZephMsg fade() {
  zeph::ZephMsg message = fadeRequest("abc", "blue", 500);
  message.set_id("3f2a");
  return message;
}

TEST(EventJson, hasAFormForEveryKind) {
  const Underway underway{Work::kLed, 1, "3f2a", milliseconds(4), milliseconds(500)};
  Underway resting = underway;
  resting.length.reset();
  const std::string message =
      R"("message":{"id":"3f2a","interactiveId":"abc","led":{"fade":{"color":"blue","period":500}}},)"
      R"("words":"led fade blue 500 ms")";
  const std::string work = R"("work":"led","application":1,"request":"3f2a","begun":4)";
  const std::pair<Event::What, std::string> cases[] = {
      {Came{1}, R"("came","application":1)"},
      {Left{1}, R"("left","application":1)"},
      {Received{1, passed(fade())}, R"("received","application":1,)" + message},
      {Sent{2, passed(fade())}, R"("sent","application":2,)" + message},
      {Sent{2, passed(fade()), {1, 2}},
       R"("sent","application":2,)" + message + R"(,"together":[1,2])"},
      {Changed{"led"}, R"("changed","part":"led")"},
      {Began{underway}, R"("began",)" + work + R"(,"length":500)"},
      {Began{resting}, R"("began",)" + work},
      {Ended{underway, zeph::TIMEOUT}, R"("ended",)" + work + R"(,"length":500,"code":"TIMEOUT")"},
      {Ended{resting, {}}, R"("ended",)" + work},
      {Stimulated{"stop", 2, {}}, R"("stimulus","name":"stop","application":2,"arguments":{})"},
      {Stimulated{"button", {}, {{"type", {"SIMPLE"}}}},
       R"("stimulus","name":"button","arguments":{"type":["SIMPLE"]})"},
      {Doubted{1, {Doubt::About::kEar, "left 17", "too far"}},
       R"("doubt","application":1,"about":"ear","value":"left 17","text":"too far")"},
      {Noted{"a \"note\""}, R"("note","text":"a \"note\"")"},
      {Trouble{1, "oh"}, R"("trouble","application":1,"text":"oh")"},
      {Trouble{{}, "oh"}, R"("trouble","text":"oh")"},
  };
  for (const auto& [what, members] : cases) {
    EXPECT_EQ(lineOf(what), R"({"number":7,"time":5,"event":)" + members + '}');
  }
}

TEST(EventJson, fitsOnOneLineAndIsUtf8WhateverAnApplicationSends) {
  zeph::ZephMsg message = lightRequest("abc", "two\nlines, \x80\xff and \xc3\xa9");
  const std::string line = lineOf(Received{1, passed(message)});
  EXPECT_THAT(line, Not(HasSubstr("\n")));
  EXPECT_TRUE(g_utf8_validate(line.data(), static_cast<gssize>(line.size()), nullptr));
  EXPECT_THAT(line, HasSubstr("\xc3\xa9"));
  EXPECT_FALSE(Json::parse(line, nullptr, false).is_discarded());
}

TEST(MessageJson, namesFieldsAsTheSchemaDoes) {
  zeph::ZephMsg message = freshMessage();
  message.set_id("x");
  auto& tag = *message.mutable_rfidcallback();
  tag.set_id("04a1");
  tag.set_content(std::string("a\0b", 3));
  tag.set_direction(zeph::RfidCallback::IN);
  EXPECT_EQ(textOf(toJson(message)),
            R"({"id":"x","rfidCallback":{"id":"04a1","content":"YQBi","direction":"IN"}})");
}

// Whatever message the schema has, and wherever it stands in another.
TEST(MessageJson, holdsNoSecret) {
  zeph::ZephMsg message = freshMessage();
  auto& social = *message.mutable_social();
  for (int i = 0; i < zeph::Social::descriptor()->field_count(); ++i) {
    social.GetReflection()->SetString(&social, zeph::Social::descriptor()->field(i), "SECRET");
  }
  *message.mutable_config()->mutable_social() = social;
  message.mutable_config()->mutable_sipinfo()->set_id("ann");
  message.mutable_config()->mutable_sipinfo()->set_password("SECRET");
  message.mutable_authenticationtoken()->set_token("SECRET");
  message.mutable_authenticationresponse()->set_authentication("SECRET");
  message.mutable_m2m()->mutable_account()->set_sippassword("SECRET");
  message.mutable_configapp()->set_apikey("SECRET");
  message.mutable_configapp()->add_configinstance()->set_accesstoken("SECRET");
  message.mutable_runapplication()->set_apikey("SECRET");
  message.mutable_scheduleconfig()->add_scheduleapp()->set_apikey("SECRET");
  EXPECT_THAT(message.ShortDebugString(), HasSubstr("SECRET"));
  const std::string hidden = withoutSecrets(message).ShortDebugString();
  EXPECT_THAT(hidden, Not(HasSubstr("SECRET")));
  EXPECT_THAT(hidden, HasSubstr("facebookToken: \"(secret)\""));
  EXPECT_THAT(hidden, HasSubstr("id: \"ann\""));
}

TEST(MessageJson, holdsNoSecretOfWhatApplicationsSendAndGet) {
  zeph::ZephMsg message = freshMessage();
  message.mutable_social()->set_facebooktoken("SECRET");
  auto& account = *message.mutable_m2m()->mutable_account();
  account.set_sipid("ann");
  account.set_sipdomain("home");
  account.set_sippassword("SECRET");
  account.set_stunserver("s");
  const std::string json = textOf(toJson(message));
  EXPECT_THAT(json, HasSubstr("\"facebookToken\":\"(secret)\""));
  EXPECT_THAT(json, HasSubstr("\"sipPassword\":\"(secret)\""));
  EXPECT_THAT(json, Not(HasSubstr("SECRET")));
}

TEST(MessageJson, tellsTheIdOfOneThatLacksFields) {
  zeph::ZephMsg message = freshMessage();
  message.set_id("x");
  message.mutable_rfidcallback();
  EXPECT_EQ(textOf(toJson(message)), R"({"id":"x"})");
}

// A field of the schema that sounds like a secret is one, or is named here.
TEST(MessageJson, knowsEverySecretOfTheSchema) {
  const auto* file = zeph::ZephMsg::descriptor()->file();
  std::vector<const google::protobuf::Descriptor*> messages;
  for (int i = 0; i < file->message_type_count(); ++i) messages.push_back(file->message_type(i));
  std::size_t found = 0;
  for (std::size_t i = 0; i < messages.size(); ++i) {
    const auto* type = messages[i];
    for (int n = 0; n < type->nested_type_count(); ++n) messages.push_back(type->nested_type(n));
    for (int f = 0; f < type->field_count(); ++f) {
      const auto* field = type->field(f);
      const GText lower(g_ascii_strdown(field->name().c_str(), -1));
      const std::string name = lower.get();
      const bool sounds =
          name.find("password") != std::string::npos || name.find("token") != std::string::npos ||
          name.find("secret") != std::string::npos || name == "apikey" || name == "authentication";
      if (!sounds || field->cpp_type() != field->CPPTYPE_STRING) continue;
      ++found;
      EXPECT_TRUE(isSecret(*field)) << field->full_name();
    }
  }
  EXPECT_GT(found, 10U);
}

}  // namespace
}  // namespace morvik::test
