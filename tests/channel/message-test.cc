// Fresh messages, enum names, and what is kept of payloads that do not parse.
#include "channel/message.h"

#include <set>

#include "support/fresh-id.h"
#include "support/matchers.h"
#include "support/text-message.h"

namespace morvik::test {
namespace {

TEST(MessageTest, aNewMessageHasAnIdAndNothingElse) {
  const auto message = newZephMsg(nullptr);
  EXPECT_THAT(message->id(), testing::MatchesRegex(kUuid));
  message->clear_id();
  EXPECT_EQ(message->ShortDebugString(), "");
}

TEST(MessageTest, aNewMessageTakesTheInteractiveId) {
  for (const char* interactiveId : {"", "granted"}) {
    const auto message = newZephMsg(interactiveId);
    EXPECT_THAT(message->id(), testing::MatchesRegex(kUuid));
    EXPECT_TRUE(message->has_interactiveid());
    EXPECT_EQ(message->interactiveid(), interactiveId);
  }
}

TEST(MessageTest, everyIdIsFresh) {
  constexpr std::size_t kCount = 1000;
  std::set<std::string> ids;
  while (ids.size() < kCount && ids.insert(newZephMsg(nullptr)->id()).second) {
  }
  EXPECT_EQ(ids.size(), kCount);
}

TEST(MessageTest, anIdMadeAheadIsTakenOnce) {
  std::set<std::string> ids;
  for (int i = 0; i < 100; ++i) {
    ids.insert(newZephMsg(nullptr)->id());
    makeIdAhead();
    makeIdAhead();
  }
  EXPECT_EQ(ids.size(), 100U);
}

// Making one sets the C library's random numbers to a seed of its own, which a script could tell.
TEST(MessageTest, noIdIsMadeAheadBeforeOneWasNeeded) {
  newZephMsg(nullptr);
  makeIdAhead();
  const auto numbersBehind = [](auto work) {
    std::srand(1);
    work();
    return std::rand();
  };
  const int expected = numbersBehind([] {});
  EXPECT_EQ(numbersBehind(makeIdAhead), expected);
  EXPECT_EQ(numbersBehind([] { newZephMsg(nullptr); }), expected) << "the one made ahead";
  EXPECT_NE(numbersBehind(makeIdAhead), expected);
}

TEST(MessageTest, scriptsSeeTheNamesOfResultCodes) {
  const std::pair<zeph::VReturnCode, const char*> names[] = {
      {zeph::OK, "OK"},
      {zeph::ERROR, "ERROR"},
      {zeph::TIMEOUT, "TIMEOUT"},
      {zeph::TERMINATED, "TERMINATED"},
      {zeph::CANCELLED, "CANCELLED"},
      {zeph::BUSY, "BUSY"},
      {zeph::BAD_INTERACTIVEID, "BAD_INTERACTIVEID"},
      {zeph::SCHEDULE_EVENT, "SCHEDULE_EVENT"},
      {zeph::NOT_CONNECTED, "NOT_CONNECTED"},
  };
  for (const auto& [code, name] : names) EXPECT_EQ(nameOf(code), name);
  EXPECT_EQ(std::size(names), std::size_t{zeph::VReturnCode_ARRAYSIZE - zeph::VReturnCode_MIN});
}

std::string keptOf(const std::string& payload) {
  zeph::ZephMsg message;
  parseZephMsg({reinterpret_cast<const std::uint8_t*>(payload.data()), payload.size()}, message);
  return message.ShortDebugString();
}

struct Payload {
  const char* what;
  std::string bytes;
  const char* kept;
};

TEST(MessageTest, aPayloadThatParsesIsTakenWhole) {
  const Payload payloads[] = {
      {"nothing at all", "", ""},
      {"whole", wireForm("id: 'i' response { code: OK }"), "id: \"i\" response { code: OK }"},
      {"without the required id", wireForm("response { code: OK }"), "response { code: OK }"},
      {"a required field missing inside", wireForm("id: 'i' event { description: 'd' }"),
       "id: \"i\" event { description: \"d\" }"},
      {"an unknown field", wireForm("id: 'i'") + "\xc0\xbb\x01\x05", "id: \"i\" 3000: 5"},
      {"a field of another type", wireForm("id: 'i'") + "\x10\x05", "id: \"i\" 2: 5"},
      {"an unknown result code", wireForm("id: 'i'") + "\xc2\x0c\x02\x08\x63",
       "id: \"i\" response { 1: 99 }"},
  };
  for (const Payload& row : payloads) EXPECT_EQ(keptOf(row.bytes), row.kept) << row.what;
}

// What stands in front of each kind of damage.
const std::string kInFront = wireForm("id: 'i' correlationId: 'c'");
constexpr const char* kKeptInFront = "id: \"i\" correlationId: \"c\"";

TEST(MessageTest, ofADamagedPayloadTheFieldsInFrontAreKept) {
  using namespace std::string_literals;
  const Payload damages[] = {
      {"cut inside a tag", "\xc2", ""},
      {"cut behind a tag", "\xc2\x0c", ""},
      {"cut inside a length", "\xc2\x0c\x80", ""},
      {"cut inside a text", "\x1a\x05gran", ""},
      {"cut inside a number", "\xb0\x29\x80", ""},
      {"cut inside a part", "\xc2\x0c\x02\x08", ""},
      {"a part whose inside is damaged", "\xc2\x0c\x02\x08\x80", ""},
      {"a part that holds more than its length", "\xc2\x0c\x03\x12\x02x", ""},
      {"a length beyond everything", "\x1a\xff\xff\xff\xff\x0f", ""},
      {"a number that does not end", "\x08\xff\xff\xff\xff\xff\xff\xff\xff\xff\xff\xff", ""},
      {"field number zero", "\x02\x01x", ""},
      {"a zero byte", "\0"s, ""},
      {"a wire type that does not exist", "\x1e", ""},
      {"the end of a group that never began", "\x1c", ""},
      {"a group that never ends", "\x1b\x08\x01", ""},
  };
  const std::string behind = wireForm("event { code: TERMINATED }");
  for (const Payload& row : damages) {
    EXPECT_EQ(keptOf(kInFront + row.bytes), kKeptInFront) << row.what;
    EXPECT_EQ(keptOf(row.bytes), "") << row.what;
  }
  // What follows the damage is lost as well, even where it could be read.
  EXPECT_EQ(keptOf(kInFront + "\xc2\x0c\x02\x08\x80" + behind), kKeptInFront);
}

TEST(MessageTest, keptFieldsMergeAsInAWholePayload) {
  const std::string cut = "\xc2";
  const Payload payloads[] = {
      {"the last text wins", wireForm("id: 'a'") + wireForm("id: 'b'") + cut, "id: \"b\""},
      {"parts of one field come together",
       wireForm("response { code: OK }") + wireForm("response { description: 'd' }") + cut,
       "response { code: OK description: \"d\" }"},
      {"repeated ones stay in order",
       wireForm("morvikinfo_response { infos { key: 'a' value: '1' } }") +
           wireForm("morvikinfo_response { infos { key: 'b' value: '2' } }") + cut,
       "morvikinfo_response { infos { key: \"a\" value: \"1\" }"
       " infos { key: \"b\" value: \"2\" } }"},
      {"unknown fields stay", "\xc0\xbb\x01\x05" + wireForm("id: 'i'") + cut, "id: \"i\" 3000: 5"},
      {"required fields may be missing inside", wireForm("event { description: 'd' }") + cut,
       "event { description: \"d\" }"},
  };
  for (const Payload& row : payloads) EXPECT_EQ(keptOf(row.bytes), row.kept) << row.what;
}

// Whole texts that the damage of a later one cannot touch: cut at every byte.
TEST(MessageTest, everyCutKeepsExactlyTheWholeFields) {
  const std::string parts[] = {wireForm("id: 'i'"), wireForm("correlationId: 'c'"),
                               wireForm("response { code: OK description: 'd' }"),
                               wireForm("event { code: BUSY }")};
  const char* const kept[] = {
      "", "id: \"i\"", "id: \"i\" correlationId: \"c\"",
      R"(id: "i" correlationId: "c" response { code: OK description: "d" })"};
  std::string whole;
  for (std::size_t part = 0; part < std::size(parts); ++part) {
    for (std::size_t cut = 0; cut < parts[part].size(); ++cut) {
      EXPECT_EQ(keptOf(whole + parts[part].substr(0, cut)), kept[part]) << part << " " << cut;
    }
    whole += parts[part];
  }
}

}  // namespace
}  // namespace morvik::test
