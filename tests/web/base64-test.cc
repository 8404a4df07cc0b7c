// Base64: the standard's vectors, every character of the alphabet, and no line breaks.
#include "web/base64.h"

#include <glib.h>
#include <gtest/gtest.h>

#include <memory>
#include <span>
#include <string>
#include <vector>

#include "host/owned.h"

namespace morvik::test {
namespace {

std::string encoded(const std::string& bytes) {
  return base64Encode({reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()});
}

TEST(Base64Test, agreesWithTheStandardsVectors) {
  const struct {
    const char* bytes;
    const char* text;
  } vectors[] = {
      {"", ""},
      {"f", "Zg=="},
      {"fo", "Zm8="},
      {"foo", "Zm9v"},
      {"foob", "Zm9vYg=="},
      {"fooba", "Zm9vYmE="},
      {"foobar", "Zm9vYmFy"},
      {"\xfb\xff\xbf", "+/+/"},
  };
  for (const auto& vector : vectors) EXPECT_EQ(encoded(vector.bytes), vector.text);
}

TEST(Base64Test, encodesEveryByteAtEveryPlace) {
  std::string bytes;
  for (int i = 0; i < 1000; ++i) {
    bytes += static_cast<char>(i * 37);
    const std::unique_ptr<char, Release<g_free>> expected(
        g_base64_encode(reinterpret_cast<const guchar*>(bytes.data()), bytes.size()));
    ASSERT_EQ(encoded(bytes), expected.get());
  }
}

TEST(Base64Test, whatFollowsTheBytesDoesNotCount) {
  constexpr unsigned char kBytes[] = {'f', 'o', 0xff, 0xff};
  EXPECT_EQ(base64Encode(std::span(kBytes).first(1)), "Zg==");
  EXPECT_EQ(base64Encode(std::span(kBytes).first(2)), "Zm8=");
}

TEST(Base64Test, aDigestGives28Characters) {
  const std::string text = encoded(std::string(20, 'x'));
  EXPECT_EQ(text.size(), 28u);
  EXPECT_EQ(text.find('='), 27u);
}

}  // namespace
}  // namespace morvik::test
