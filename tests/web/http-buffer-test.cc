// Receive buffers: growth, the NUL behind the bytes, and the end for lack of memory.
#include "web/http-buffer.h"

#include <cstdint>
#include <string>

#include "support/matchers.h"
#include "support/unit/log-texts.h"

namespace morvik::test {
namespace {

std::size_t write(HttpBuffer& buffer, std::string bytes, std::size_t size = 1) {
  return httpWriteCallback(bytes.data(), size, bytes.size() / size, &buffer);
}

TEST(HttpBufferTest, startsWithoutMemory) {
  const HttpBuffer buffer;
  EXPECT_EQ(buffer.data, nullptr);
  EXPECT_EQ(buffer.len, 0u);
  EXPECT_EQ(buffer.bytes(), "");
}

TEST(HttpBufferTest, piecesAddUpAndANulFollows) {
  HttpBuffer buffer;
  EXPECT_EQ(write(buffer, "one "), 4u);
  EXPECT_EQ(write(buffer, std::string("t\0o ", 4), 2), 4u);
  EXPECT_EQ(write(buffer, ""), 0u);
  EXPECT_EQ(write(buffer, std::string(100000, 'x')), 100000u);
  std::string expected("one t\0o ", 8);
  expected.append(100000, 'x');
  EXPECT_EQ(buffer.bytes(), expected);
  EXPECT_EQ(buffer.data.get()[buffer.len], 0);
}

TEST(HttpBufferTest, anEmptyPieceLeavesANulAlone) {
  HttpBuffer buffer;
  EXPECT_EQ(httpWriteCallback(nullptr, 1, 0, &buffer), 0u);
  ASSERT_NE(buffer.data, nullptr);
  EXPECT_EQ(buffer.data.get()[0], 0);
  EXPECT_EQ(buffer.len, 0u);
}

TEST(HttpBufferTest, isReplacedAsAWhole) {
  HttpBuffer buffer;
  write(buffer, "something longer than that");
  assign(buffer, "curl error");
  EXPECT_EQ(buffer.len, 10u);
  EXPECT_STREQ(reinterpret_cast<const char*>(buffer.data.get()), "curl error");
  assign(buffer, "");
  EXPECT_EQ(buffer.bytes(), "");
}

TEST(HttpBufferTest, withoutMemoryTheProcessEnds) {
  const struct {
    std::size_t size;
    std::size_t count;
  } pieces[] = {{1, PTRDIFF_MAX - 10}, {1, PTRDIFF_MAX}, {1, SIZE_MAX}, {SIZE_MAX, 2}};
  for (const auto& piece : pieces) {
    SCOPED_TRACE(piece.count);
    const auto writeFarTooMuch = [&] {
      printLog();
      HttpBuffer buffer;
      write(buffer, "held");
      char byte = 'x';
      httpWriteCallback(&byte, piece.size, piece.count, &buffer);
    };
    EXPECT_EXIT(writeFarTooMuch(), testing::ExitedWithCode(1), "DEBUG realloc\\(\\) failed\n$");
  }
  const auto assignFarTooMuch = [] {
    printLog();
    HttpBuffer buffer;
    write(buffer, "held");
    assign(buffer, {"curl error", PTRDIFF_MAX});
  };
  EXPECT_EXIT(assignFarTooMuch(), testing::ExitedWithCode(1), "DEBUG realloc\\(\\) failed\n$");
}

}  // namespace
}  // namespace morvik::test
