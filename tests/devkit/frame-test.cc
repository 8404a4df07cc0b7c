// The frame codec: pieces of any size in, whole payloads out.
#include "server/frame.h"

#include "support/matchers.h"

namespace morvik::test {
namespace {

using devkit::frameOf;
using devkit::FrameReader;
using devkit::kMaxPayload;
using namespace std::string_literals;

TEST(Frame, aHeaderOfFourBytesBigEndianStandsBeforeThePayload) {
  EXPECT_EQ(frameOf("abc"), "\0\0\0\3abc"s);
  EXPECT_EQ(frameOf(""), "\0\0\0\0"s);
  EXPECT_EQ(frameOf(std::string(0x010203, 'x')).substr(0, 5), "\0\1\2\3x"s);
}

TEST(FrameReader, givesNothingBeforeAPayloadIsWhole) {
  FrameReader reader;
  EXPECT_EQ(reader.next(), std::nullopt);
  EXPECT_FALSE(reader.isInsideFrame());
  reader.feed("\0\0\0"s);
  EXPECT_EQ(reader.next(), std::nullopt);
  EXPECT_TRUE(reader.isInsideFrame());
  reader.feed("\2a"s);
  EXPECT_EQ(reader.next(), std::nullopt);
  reader.feed("b");
  EXPECT_EQ(reader.next(), "ab");
  EXPECT_EQ(reader.next(), std::nullopt);
  EXPECT_FALSE(reader.isInsideFrame());
}

TEST(FrameReader, putsFramesTogetherFromSingleBytes) {
  FrameReader reader;
  std::vector<std::string> payloads;
  for (const char byte : frameOf("one") + frameOf("") + frameOf("three")) {
    reader.feed(std::string_view(&byte, 1));
    while (const auto payload = reader.next()) payloads.push_back(*payload);
  }
  EXPECT_THAT(payloads, testing::ElementsAre("one", "", "three"));
}

TEST(FrameReader, givesAllFramesOfOnePieceAndKeepsTheRest) {
  FrameReader reader;
  reader.feed(frameOf("one") + frameOf("two") + frameOf("three").substr(0, 6));
  EXPECT_EQ(reader.next(), "one");
  EXPECT_EQ(reader.next(), "two");
  EXPECT_EQ(reader.next(), std::nullopt);
  reader.feed("ree");
  EXPECT_EQ(reader.next(), "three");
}

TEST(FrameReader, takesTheLargestPayloadAndWaitsForIt) {
  FrameReader reader;
  reader.feed("\x04\0\0\0"s);  // 64 MiB
  EXPECT_EQ(reader.next(), std::nullopt);
  EXPECT_EQ(reader.brokenBy(), std::nullopt);
  reader.feed(std::string(kMaxPayload, 'x'));
  const auto payload = reader.next();
  ASSERT_TRUE(payload.has_value());
  EXPECT_EQ(payload->size(), kMaxPayload);
}

TEST(FrameReader, isBrokenForGoodByALengthAboveTheLimit) {
  FrameReader reader;
  reader.feed(frameOf("good") + "\x04\0\0\1"s + frameOf("never"));
  EXPECT_EQ(reader.next(), "good");
  EXPECT_EQ(reader.brokenBy(), std::nullopt);
  EXPECT_EQ(reader.next(), std::nullopt);
  EXPECT_EQ(reader.brokenBy(), kMaxPayload + 1);
  reader.feed(frameOf("never"));
  EXPECT_EQ(reader.next(), std::nullopt);
}

}  // namespace
}  // namespace morvik::test
