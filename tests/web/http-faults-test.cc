// Web servers that cut, lie about lengths, or send headers without end: the script gets a text, and
// the next request is as ever.
#include "support/matchers.h"
#include "support/unit/web-test.h"

namespace morvik::test {
namespace {

using HttpFaultsTest = WebTest;

constexpr char kOk[] = "HTTP/1.1 200 OK\r\n";
constexpr char kError[] = "curl error";

// What libcurl makes of these has changed from one release to the next.
const auto kErrorOrBody = AnyOf(kError, "body", "");

std::string lines(int count, std::size_t length) {
  std::string text;
  for (int i = 0; i < count; ++i)
    text += "X-" + std::to_string(i) + ": " + std::string(length, 'x') + "\r\n";
  return text;
}

TEST_F(HttpFaultsTest, whateverComesBackIsOneTextOrAnother) {
  const std::string ok = kOk;
  const struct {
    const char* fault;
    std::string bytes;
    testing::Matcher<std::string> content;
  } rows[] = {
      {"nothing at all", "", kError},
      {"no line", "H", kErrorOrBody},
      {"cut in the status", "HTTP/1.1 2", kErrorOrBody},
      {"cut in a header", ok + "Content-Le", kErrorOrBody},
      {"cut behind the headers", ok + "Content-Length: 4\r\n\r\n", kError},
      {"cut in the body", ok + "Content-Length: 4\r\n\r\nbod", kError},
      {"a length that is too small", ok + "Content-Length: 2\r\n\r\nbody", "bo"},
      {"a length below nothing", ok + "Content-Length: -1\r\n\r\nbody", kError},
      {"a length beyond all", ok + "Content-Length: 99999999999999999999\r\n\r\nbody",
       kErrorOrBody},
      {"two lengths", ok + "Content-Length: 1\r\nContent-Length: 4\r\n\r\nbody", kErrorOrBody},
      {"a length that is no number", ok + "Content-Length: four\r\n\r\nbody", kErrorOrBody},
      {"a chunk that is cut", ok + "Transfer-Encoding: chunked\r\n\r\n4\r\nbo", kError},
      {"a chunk without a length", ok + "Transfer-Encoding: chunked\r\n\r\nbody", kError},
      {"a chunk beyond all", ok + "Transfer-Encoding: chunked\r\n\r\nffffffffffffffff\r\nbody",
       kError},
      {"one header of 64 KiB", ok + lines(1, 1 << 16) + "Content-Length: 4\r\n\r\nbody", "body"},
      {"one header of two megabytes", ok + lines(1, 2 << 20) + "\r\nbody", kError},
      {"headers of four megabytes", ok + lines(1000, 4096) + "Content-Length: 4\r\n\r\nbody",
       kErrorOrBody},
      {"a zero byte in a header", ok + std::string("X: a\0b\r\n\r\nbody", 13), kError},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.fault);
    web.answerWith(row.bytes);
    const std::string content = run("http.get(url)");
    EXPECT_THAT(content, row.content);
  }
  web.answerWith(response("as ever"));
  EXPECT_EQ(run("http.get(url)"), "as ever");
}

}  // namespace
}  // namespace morvik::test
