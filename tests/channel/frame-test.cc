// The length prefix: four bytes, big-endian.
#include "channel/frame.h"

#include "support/matchers.h"

namespace morvik::test {
namespace {

struct Length {
  std::uint32_t length;
  std::array<std::uint8_t, kFrameHeaderSize> header;
};

constexpr Length kLengths[] = {
    {0, {0, 0, 0, 0}},
    {1, {0, 0, 0, 1}},
    {255, {0, 0, 0, 255}},
    {256, {0, 0, 1, 0}},
    {65536, {0, 1, 0, 0}},
    {0x01020304, {1, 2, 3, 4}},
    {0x80000000, {128, 0, 0, 0}},
    {0xffffffff, {255, 255, 255, 255}},
};

TEST(FrameTest, theHeaderIsTheLengthBigEndian) {
  for (const Length& row : kLengths) EXPECT_EQ(frameHeader(row.length), row.header) << row.length;
}

TEST(FrameTest, theHeaderTellsTheLength) {
  for (const Length& row : kLengths) EXPECT_EQ(bodyLength(row.header), row.length);
}

}  // namespace
}  // namespace morvik::test
