// Charsets of responses: which name is found, what is converted, and every line on the way.
// Escaping.
#include "web/encoding.h"

#include "support/matchers.h"
#include "support/unit/captured-log.h"
#include "support/unit/library-spy.h"
#include "support/unit/log-texts.h"

namespace morvik::test {
namespace {

using Lines = std::vector<std::string>;

HttpBuffer bufferOf(const std::string& bytes) {
  HttpBuffer buffer;
  if (!bytes.empty()) assign(buffer, bytes);
  return buffer;
}

class EncodingTest : public testing::Test {
 protected:
  // Converts, keeping what goes to the log and to standard output.
  std::string convert(const std::string& body, const std::string& headers = "") {
    log.clear();
    HttpBuffer buffer = bufferOf(body);
    testing::internal::CaptureStdout();
    convertResponseToUtf8(buffer, bufferOf(headers));
    out = testing::internal::GetCapturedStdout();
    return std::string(buffer.bytes());
  }
  [[nodiscard]] Lines lines() const { return levelled(log.lines()); }
  // The name that was found, as the log tells it.
  [[nodiscard]] std::string name() const {
    constexpr std::string_view kPrefix = "encoding: ";
    for (const std::string& text : log.texts(G_LOG_LEVEL_DEBUG)) {
      if (text.starts_with(kPrefix)) return text.substr(kPrefix.size());
    }
    return "none";
  }

  CapturedLog log;
  std::string out;
};

constexpr const char* kLatinHeader =
    "HTTP/1.1 200 OK\r\nContent-Type: text/html; charset=iso-8859-1\r\n\r\n";

TEST_F(EncodingTest, findsTheName) {
  const struct {
    std::string body;
    std::string headers;
    const char* name;
  } rows[] = {
      {"<?xml version='1.0' encoding='ISO-8859-1'?>", "charset=utf-8", "ISO-8859-1"},
      {"<?xml version=\"1.0\" encoding=\"iso-8859-15\"?>", "", "ISO-8859-15"},
      {"text", kLatinHeader, "ISO-8859-1"},
      {"", "Content-Type: text/html; charset='utf-8'\r\n", "UTF-8"},
      {"", "charset=\"utf-8\"\r\n", "UTF-8"},
      {"", "charset=utf-8\r\n", "UTF-8"},
      {"", "charset=utf-8;x\r\n", "UTF-8;X"},
      {"", "charset=utf8\r\n", "UTF8"},
      {"", "charset=  \t utf-8 b\r\n", "UTF-8"},
      {"", "charset\r\n\r\nutf-8", "UTF-8"},  // one character is passed over, any one
      {"", "charset=a'b\"c\r\n", "A"},        // either quote ends the name
      {"", "charset='a\"b\r\n", "A"},
      {"", "charset=\"\r\n", ""},
      {"", "charset='' \r\n", ""},
      {"", "charset=first\r\nX: charset=second\r\n", "FIRST"},
      {"", "Charset=utf-8\r\n", "none"},
      {"ENCODING=utf-8 Encoding=utf-8", "", "none"},
      {"", "encoding=utf-8\r\n", "none"},  // each word in its own place only
      {"charset=utf-8", "", "none"},
      {"the encoding of bytes", "", "OF"},
      {"transfer-encoding: chunked", "", "CHUNKED"},
      {"encodings and more", "", "AND"},
      {"encoding=" + std::string(60, 'n'), "",
       "NNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNN"},
      {"encoding=\"" + std::string(60, 'n') + "\"", "",
       "NNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNN"},
      {std::string(192, ' ') + "encoding=x", "", "X"},  // ends at byte 200
      {std::string(193, ' ') + "encoding=x", "", "none"},
      {std::string(200, ' ') + "encoding=x", "", "none"},
      {std::string("a\0encoding=x", 12), "", "none"},  // a NUL ends the search
      {"an encoding", "", ""},
      {"an encoding=", "", ""},
      {"an encoding= \r\n\t", "", ""},
      {"", "a charset", ""},
      {"", "a charset=", ""},
      {"", "", "none"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::PrintToString(row.body) + " " + testing::PrintToString(row.headers));
    convert(row.body, row.headers);
    EXPECT_EQ(name(), row.name);
  }
}

TEST_F(EncodingTest, logsItsWay) {
  convert("text", "X: y\r\n");
  EXPECT_THAT(lines(), ElementsAre("DEBUG encoding not in data", "DEBUG encoding not in header"));
  convert("text", "charset=utf-8\r\n");
  EXPECT_THAT(lines(), ElementsAre("DEBUG encoding not in data", "DEBUG encoding: UTF-8",
                                   "DEBUG already UTF-8"));
  convert("encoding='utf-8'");
  EXPECT_THAT(lines(), ElementsAre("DEBUG encoding: UTF-8", "DEBUG already UTF-8"));
  convert("encoding=latin1 text");
  EXPECT_THAT(lines(),
              ElementsAre("DEBUG encoding: LATIN1", "DEBUG in remaining 0 out remaining 2.\n"));
  EXPECT_EQ(out, "");
}

TEST_F(EncodingTest, converts) {
  const struct {
    std::string body;
    std::string headers;
    std::string text;
  } rows[] = {
      {"caf\xe9 au lait", kLatinHeader, "caf\xc3\xa9 au lait"},
      {"<?xml encoding='ISO-8859-1'?>\xe9", "charset=utf-8",
       "<?xml encoding='ISO-8859-1'?>\xc3\xa9"},
      {"caf\xc3\xa9", "charset=utf8\r\n", "caf\xc3\xa9"},
      {std::string("a\0\xe9 and some text", 17), kLatinHeader,
       std::string("a\0\xc3\xa9 and some text", 18)},
      {"plain ASCII text", "charset=us-ascii\r\n", "plain ASCII text"},
      {"1234567\x80", "charset=windows-1252\r\n", "1234567\x80"},  // one byte too few: stays
      {"plain ASCII 123 \x80", "charset=windows-1252\r\n", "plain ASCII 123 \xe2\x82\xac"},
      {"", kLatinHeader, ""},
      {"no word in here \xe9", "", "no word in here \xe9"},
      {"encoding=utf-8 \xe9", kLatinHeader, "encoding=utf-8 \xe9"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::PrintToString(row.body));
    EXPECT_EQ(convert(row.body, row.headers), row.text);
  }
}

TEST_F(EncodingTest, anEmptyBodyPassesThroughTheConversion) {
  EXPECT_EQ(convert("", kLatinHeader), "");
  EXPECT_EQ(out, "");
  EXPECT_THAT(lines(), ElementsAre("DEBUG encoding not in data", "DEBUG encoding: ISO-8859-1",
                                   "DEBUG in remaining 0 out remaining 0.\n"));
}

// This charset holds a letter back until it knows that no accent follows: the last one is lost.
TEST_F(EncodingTest, nothingIsAskedForBehindTheOneCall) {
  EXPECT_EQ(convert("plain ascii text", "charset=windows-1258\r\n"), "plain ascii tex");
  EXPECT_TRUE(log.has(G_LOG_LEVEL_DEBUG, "in remaining 0 out remaining 3.\n"));
}

TEST_F(EncodingTest, hasRoomForAnEighthMoreAndNoMore) {
  const std::string tenAbove = std::string(90, 'a') + std::string(10, '\xe9');
  std::string converted = std::string(90, 'a');
  for (int i = 0; i < 10; ++i) converted += "\xc3\xa9";
  EXPECT_EQ(convert(tenAbove, kLatinHeader), converted);
  EXPECT_TRUE(log.has(G_LOG_LEVEL_DEBUG, "in remaining 0 out remaining 2.\n"));

  const std::string allAbove(100, '\xe9');
  EXPECT_EQ(convert(allAbove, kLatinHeader), allAbove);
  EXPECT_EQ(out, "Fail to convert characters to new code set in remaining 44 out remaining 0.\n");
  EXPECT_THAT(lines(), ElementsAre("DEBUG encoding not in data", "DEBUG encoding: ISO-8859-1"));

  // Seven bytes have no whole eighth.
  EXPECT_EQ(convert("abcdef\xe9", kLatinHeader), "abcdef\xe9");
  EXPECT_EQ(convert("abcdefg\xe9", kLatinHeader), "abcdefg\xc3\xa9");
}

TEST_F(EncodingTest, aFailedConversionKeepsTheBody) {
  const struct {
    std::string body;
    std::string headers;
    const char* out;
  } rows[] = {
      {"text", "charset=klingon\r\n", "Failed to iconv_open KLINGON to UTF-8.\n"},
      {"text", "charset=utf-8;x\r\n", "Failed to iconv_open UTF-8;X to UTF-8.\n"},
      {"the encoding is odd", "", "Failed to iconv_open IS to UTF-8.\n"},
      // Invalid, then cut short.
      {"0123456789abcdef \xff", "charset=utf8\r\n",
       "Fail to convert characters to new code set in remaining 1 out remaining 3.\n"},
      {"0123456789abcdef \xe2\x82", "charset=utf8\r\n",
       "Fail to convert characters to new code set in remaining 2 out remaining 4.\n"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.headers);
    EXPECT_EQ(convert(row.body, row.headers), row.body);
    EXPECT_EQ(out, row.out);
  }
}

// The C library takes the empty name for the locale's charset, which is ASCII here.
TEST_F(EncodingTest, anEmptyNameGoesThroughLikeAnyOther) {
  EXPECT_EQ(convert("text encoding"), "text encoding");
  EXPECT_THAT(lines(), ElementsAre("DEBUG encoding: ", "DEBUG in remaining 0 out remaining 1.\n"));
  EXPECT_EQ(convert("caf\xe9 encoding"), "caf\xe9 encoding");
  EXPECT_EQ(out, "Fail to convert characters to new code set in remaining 10 out remaining 11.\n");
}

TEST_F(EncodingTest, aConverterThatDoesNotCloseKeepsTheText) {
  LibrarySpy spy;
  spy.iconvCloseFails = true;
  EXPECT_EQ(convert("caf\xe9 au lait", kLatinHeader), "caf\xc3\xa9 au lait");
  EXPECT_EQ(out, "Fail to iconv_close.\n");
  // A failed conversion closes as well, but does not look.
  EXPECT_EQ(convert(std::string(100, '\xe9'), kLatinHeader), std::string(100, '\xe9'));
  EXPECT_THAT(out, testing::StartsWith("Fail to convert"));
  EXPECT_THAT(out, testing::Not(testing::HasSubstr("iconv_close")));
}

TEST_F(EncodingTest, withoutMemoryTheProcessEnds) {
  const auto convertFarTooMuch = [] {
    printLog();
    HttpBuffer body = bufferOf("encoding=klingon " + std::string(300, ' '));
    body.len = PTRDIFF_MAX;  // only the first 200 bytes are looked at before
    convertResponseToUtf8(body, {});
  };
  // Before the converter is opened: no word about the unknown name.
  EXPECT_EXIT(convertFarTooMuch(), testing::ExitedWithCode(1), "DEBUG malloc fail\n$");
}

TEST_F(EncodingTest, escapes) {
  const struct {
    std::string text;
    std::string escaped;
  } rows[] = {
      {"", ""},
      {"azAZ09-._~", "azAZ09-._~"},
      {"a b&c=d+e%/?#", "a%20b%26c%3Dd%2Be%25%2F%3F%23"},
      {"\xc3\xa9\xff\x01", "%C3%A9%FF%01"},
      {"http://x", "http%3A%2F%2Fx"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text);
    log.clear();
    char* escaped = nullptr;
    urlEncode(row.text.c_str(), &escaped);
    EXPECT_STREQ(escaped, row.escaped.c_str());
    curl_free(escaped);
    EXPECT_THAT(lines(), ElementsAre("WARNING urlEncode : Encoded URL: " + row.escaped + "\n"));
    EXPECT_EQ(percentEscaped(row.text), row.escaped);
  }
}

TEST_F(EncodingTest, escapingWithoutATargetSaysSo) {
  urlEncode("secret", nullptr);
  EXPECT_THAT(lines(), ElementsAre("WARNING urlEncode : URL encoding failed"));
}

TEST_F(EncodingTest, escapesWithoutAHandle) {
  LibrarySpy spy;
  spy.curlInitFails = true;
  char* escaped = nullptr;
  urlEncode("a b", &escaped);
  EXPECT_STREQ(escaped, "a%20b");
  curl_free(escaped);
}

// libcurl gives up on texts of some megabytes.
TEST_F(EncodingTest, escapesTextsOfAnyLength) {
  const std::string text(10'000'000, '\xe9');
  const std::string escaped = percentEscaped(text);
  ASSERT_EQ(escaped.size(), 30'000'000u);
  for (std::size_t i = 0; i < escaped.size(); i += 3) {
    ASSERT_EQ(escaped.compare(i, 3, "%E9"), 0) << i;
  }
  EXPECT_EQ(percentEscaped(std::string((1 << 20) - 1, 'a') + " b"),
            std::string((1 << 20) - 1, 'a') + "%20b");
  EXPECT_THAT(lines(), ElementsAre());
}

TEST_F(EncodingTest, aTextThatIsTooLongForLibcurlLeavesNothing) {
  const std::string text(10'000'000, '\xe9');
  char* escaped = nullptr;
  urlEncode(text.c_str(), &escaped);
  EXPECT_EQ(escaped, nullptr);
  EXPECT_THAT(lines(), ElementsAre("WARNING urlEncode : Encoded URL: \n"));
}

}  // namespace
}  // namespace morvik::test
