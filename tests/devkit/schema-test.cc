// The device takes part in every message of an application: it answers those that an application
// sends, and can be made to send those that an application reads.

#include <set>

#include "bench.h"
#include "device/payload.h"
#include "support/matchers.h"

namespace morvik::test {

using namespace devkit;
namespace {

// What applications send, each in a form that the device takes part in.
struct FromApplications {
  const char* payload;
  const char* fields;
};
constexpr FromApplications kFromApplications[] = {
    {"ears", "left: 3"},
    {"led", "light { color: 'red' }"},
    {"asr", "dictionary: 'yes' lang: 'en'"},
    {"tts", "action: START text: 'a'"},
    {"multimedia", "getsong {}"},
    {"webcam", "photo: 'x'"},
    {"m2m", "call { address: 'x' }"},
    {"serial", "open { port: 'p' baud: 9600 }"},
    {"interactiveMode", "action: START interactiveId: 'granted'"},
    {"serialCallback", "readline { port: 'p' data: '' base: 'h' }"},
    {"getcontactList", ""},
    {"morvikMessageQuery", "action: LIST"},
    {"ping", ""},
    {"morvikinfo_query", ""},
    {"socialQuery", ""},
    {"dock", "move { cmd: UP }"},
};

// What applications read: the command that must come before, if any, and the line that makes the
// device send it; without a line the command alone does.
struct ToApplications {
  const char* payload;
  const char* command;
  const char* line;
};
constexpr ToApplications kToApplications[] = {
    {"ears", "ears { reset: true left: 1 right: 1 }", ""},
    {"multimedia", "multimedia { getartist {} }", ""},
    {"response", "", "refuse BUSY ping"},
    {"interactiveMode", "", "stop"},
    {"event", "webcam { photo: 'x' }", "finish photo ERROR 'too dark'"},
    {"asrCallback", "asr { dictionary: 'yes' }", "recognition yes 80 <a/>"},
    {"buttonCallback", "", "button DOUBLE"},
    {"earsCallback", "", "ear LEFT 3"},
    {"rfidCallback", "", "rfid 04a1 IN"},
    {"multimediaCallback", "", "player MUSIC_UPDATE"},
    {"m2mCallback", "", "call INCOMING somebody"},
    {"serialCallback", "", "serial p text"},
    {"contactList", "getcontactList {}", ""},
    {"morvikMessageResponse", "morvikMessageQuery { action: LIST }", ""},
    {"morvikinfo_response", "morvikinfo_query {}", ""},
    {"social", "socialQuery {}", ""},
    {"dock", "", "dock 1 2"},
};

// What no application sends or reads.
constexpr const char* kStrangers[] = {
    "choreography",
    "webcamDirectResponse",
    "scheduleEvent",
    "authenticationToken",
    "config",
    "configApp",
    "authenticationResponse",
    "configResponse",
    "system",
    "scheduleConfig",
    "runApplication",
    "runApplicationResponse",
    "pendingmessage",
    "detection",
    "serverQuery",
};

TEST(Schema, everyPayloadIsKnownHere) {
  std::set<std::string> known(std::begin(kStrangers), std::end(kStrangers));
  for (const auto& sent : kFromApplications) known.insert(sent.payload);
  for (const auto& read : kToApplications) known.insert(read.payload);
  std::set<std::string> payloads;
  const auto& schema = *zeph::ZephMsg::descriptor();
  for (int i = 0; i < schema.field_count(); ++i) {
    if (schema.field(i)->number() >= kFirstPayload) payloads.insert(schema.field(i)->name());
  }
  EXPECT_EQ(known, payloads);
}

TEST(Schema, theDeviceAnswersWhatApplicationsSend) {
  for (const auto& [payload, fields] : kFromApplications) {
    Bench bench;
    const Lines said = bench.command(std::string(payload) + " { " + fields + " }");
    ASSERT_FALSE(said.empty()) << payload;
    EXPECT_THAT(said[0], ::testing::StartsWith("1: re ")) << payload;
    EXPECT_THAT(said[0], Not(HasSubstr("code: ERROR"))) << payload;
  }
}

TEST(Schema, theDeviceSendsWhatApplicationsRead) {
  for (const auto& [payload, command, line] : kToApplications) {
    Bench bench;
    Lines said;
    if (*command != '\0') said = bench.command(command);
    if (*line != '\0') said = bench.stimulus(line);
    // A refusal is told by the next command.
    if (said.empty()) said = bench.command("ping {}");
    const std::string words = ' ' + std::string(payload) + " {";
    EXPECT_THAT(said, ::testing::Contains(HasSubstr(words))) << payload;
  }
}

TEST(Schema, theDeviceHasNoAnswerToStrangers) {
  for (const char* payload : kStrangers) {
    const auto* field = zeph::ZephMsg::descriptor()->FindFieldByName(payload);
    ASSERT_NE(field, nullptr) << payload;
    if (field->message_type() == nullptr) continue;
    Bench bench;
    zeph::ZephMsg request;
    request.set_id("x");
    request.GetReflection()->MutableMessage(&request, field);
    receive(bench.device, 1, request);
    EXPECT_THAT(bench.said(), ::testing::ElementsAre(HasSubstr("this device has no answer to " +
                                                               std::string(payload))));
  }
}

}  // namespace
}  // namespace morvik::test
