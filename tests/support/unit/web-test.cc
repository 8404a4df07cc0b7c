// The fixture for what reaches the web.
#include "support/unit/web-test.h"

#include <fstream>
#include <ostream>

#include "host/data-object.h"
#include "support/unit/log-texts.h"

namespace morvik::test {
namespace {

// Proxies that the surroundings name must not stand between the test and its server.
void forgetProxies() { setenv("no_proxy", "127.0.0.1", 1); }

}  // namespace

WebTest::WebTest() {
  forgetProxies();
  const v8::Context::Scope entered(context());
  setGlobal("url", toScript(web.url()));
  setGlobal("picture", newDataObject(context(), pictureFile()));
  setGlobal("missing", newDataObject(context(), folder_ / "missing"));
}

void WebTest::writePicture(const std::string& bytes) {
  std::ofstream(pictureFile(), std::ios::binary) << bytes;
}

std::string WebTest::takeBody() { return bodyOf(web.takeRequest()); }

std::vector<std::string> WebTest::logLines() const { return levelled(log.lines()); }

std::string bodyOf(const std::string& request) {
  const std::size_t end = request.find("\r\n\r\n");
  return end == std::string::npos ? "no headers: " + request : request.substr(end + 4);
}

void PrintTo(const Part& part, std::ostream* stream) {
  *stream << "{" << testing::PrintToString(part.head) << ", "
          << testing::PrintToString(part.content) << "}";
}

std::vector<Part> partsOf(const std::string& request) {
  constexpr std::string_view kType = "\r\nContent-Type: multipart/form-data; boundary=";
  const std::size_t type = request.find(kType);
  EXPECT_NE(type, std::string::npos) << request;
  if (type == std::string::npos) return {};
  const std::size_t start = type + kType.size();
  const std::string mark = "--" + request.substr(start, request.find("\r\n", start) - start);
  std::vector<Part> parts;
  std::string rest = bodyOf(request);
  while (rest.starts_with(mark + "\r\n")) {
    rest.erase(0, mark.size() + 2);
    const std::size_t head = rest.find("\r\n\r\n");
    const std::size_t end = rest.find("\r\n" + mark, head);
    EXPECT_NE(end, std::string::npos) << request;
    if (end == std::string::npos) return parts;
    parts.push_back({rest.substr(0, head + 2), rest.substr(head + 4, end - head - 4)});
    rest.erase(0, end + 2);
  }
  EXPECT_EQ(rest, mark + "--\r\n");
  return parts;
}

}  // namespace morvik::test
