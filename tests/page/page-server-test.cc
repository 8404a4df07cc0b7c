// The page's server as a browser, another site and a stranger meet it.
#include "page/page-server.h"

#include "page-client.h"
#include "page/page-files.h"
#include "support/matchers.h"

namespace morvik::test {

using namespace devkit;
namespace {

class PageServerTest : public ::testing::Test {
 protected:
  PageServerTest() {
    std::string text;
    EXPECT_FALSE(server_.listen(0, text)) << text;
  }

  std::uint16_t port() const { return portOf(server_.address()); }
  std::string pathTo(const std::string& name) const { return pathOf(server_.address()) + name; }

  // The whole answer to a request that ends its connection.
  std::string answerTo(const std::string& line, const std::string& more = "") {
    BareClient client(loop_, port());
    client.send(requestHead(line, port(), more + "Connection: close\r\n"));
    return client.waitForEnd();
  }
  std::string answerToHost(const std::string& host) {
    BareClient client(loop_, port());
    client.send("GET " + pathTo("") + " HTTP/1.1\r\n" + host + "Connection: close\r\n\r\n");
    return client.waitForEnd();
  }

  static std::string contentOf(const PageFile& file) {
    gsize size = 0;
    const auto* bytes = static_cast<const char*>(g_bytes_get_data(file.content.get(), &size));
    return {bytes, size};
  }

  Loop loop_;
  int sockets_ = 0;
  PageServer server_{[this](SoupWebsocketConnection* /*connection*/) { ++sockets_; }};
};

TEST_F(PageServerTest, givesThePageToWhoKnowsItsAddress) {
  const auto file = pageFile("index.html");
  ASSERT_TRUE(file);
  for (const char* name : {"", "index.html", "index.html?theme=dark"}) {
    const std::string answer = answerTo("GET " + pathTo(name));
    EXPECT_THAT(answer, StartsWith("HTTP/1.1 200 OK\r\n")) << name;
    EXPECT_THAT(answer, HasSubstr("\r\nContent-Type: text/html; charset=utf-8\r\n"));
    EXPECT_THAT(answer, EndsWith("\r\n\r\n" + contentOf(*file)));
  }
}

TEST_F(PageServerTest, givesAFileWhoseNameBeginsLikeTheSocket) {
  ASSERT_TRUE(pageFile("socket.js"));
  EXPECT_THAT(answerTo("GET " + pathTo("socket.js")), StartsWith("HTTP/1.1 200 OK\r\n"));
  EXPECT_THAT(answerTo("GET " + pathTo("socket.none")), StartsWith("HTTP/1.1 404 "));
}

TEST_F(PageServerTest, tellsTheHeadAlone) {
  const std::string answer = answerTo("HEAD " + pathTo(""));
  const auto size = contentOf(*pageFile("")).size();
  EXPECT_THAT(answer, StartsWith("HTTP/1.1 200 OK\r\n"));
  EXPECT_THAT(answer, HasSubstr("\r\nContent-Length: " + std::to_string(size) + "\r\n"));
  EXPECT_THAT(answer, EndsWith("\r\n\r\n"));
}

TEST_F(PageServerTest, tellsTheBrowserToKeepThePageToItself) {
  for (const std::string& answer :
       {answerTo("GET " + pathTo("")), answerTo("GET /"), answerTo("POST " + pathTo(""))}) {
    for (const char* header :
         {"Content-Security-Policy: default-src 'none'; script-src 'self'; style-src 'self'; ",
          "frame-ancestors 'none'", "X-Content-Type-Options: nosniff\r\n",
          "Referrer-Policy: no-referrer\r\n", "Cache-Control: no-store\r\n",
          "Cross-Origin-Resource-Policy: same-origin\r\n",
          "Cross-Origin-Opener-Policy: same-origin\r\n"}) {
      EXPECT_THAT(answer, HasSubstr(header));
    }
    EXPECT_THAT(answer, Not(HasSubstr("Access-Control-Allow")));
  }
}

TEST_F(PageServerTest, tellsOfAllModulesAtOnce) {
  const std::string answer = answerTo("GET " + pathTo(""));
  EXPECT_THAT(answer, HasSubstr("Link: <main.js>; rel=modulepreload\r\n"));
  EXPECT_THAT(answer, HasSubstr("Link: <socket.js>; rel=modulepreload\r\n"));
  EXPECT_THAT(answer, Not(HasSubstr("Link: <page.css>")));
  EXPECT_THAT(answerTo("GET " + pathTo("main.js")), Not(HasSubstr("Link: ")));
}

TEST_F(PageServerTest, hasNothingButItsOwnFiles) {
  const std::string token = pathTo("");
  for (const std::string& path :
       {std::string("/"), std::string("/index.html"), token + "none.js", token + "../../etc/passwd",
        token + "%2e%2e/%2e%2e/etc/passwd", token + "/etc/passwd", token + "index.html/",
        "/" + std::string(32, '0') + "/index.html", token.substr(0, token.size() - 1)}) {
    EXPECT_THAT(answerTo("GET " + path), StartsWith("HTTP/1.1 404 ")) << path;
  }
}

TEST_F(PageServerTest, refusesOtherMethodsAndKeepsNothingOfWhatTheyBring) {
  EXPECT_THAT(answerTo("POST " + pathTo(""), "Content-Length: 0\r\n"), StartsWith("HTTP/1.1 405 "));
  EXPECT_THAT(answerTo("DELETE " + pathTo("")), HasSubstr("\r\nAllow: GET, HEAD\r\n"));
}

TEST_F(PageServerTest, refusesANameThatWasMadeToPointHere) {
  const std::string port = std::to_string(this->port());
  EXPECT_THAT(answerToHost("Host: localhost:" + port + "\r\n"), StartsWith("HTTP/1.1 200 "));
  EXPECT_THAT(answerToHost("Host: evil.example:" + port + "\r\n"), StartsWith("HTTP/1.1 403 "));
  EXPECT_THAT(answerToHost("Host: 127.0.0.1\r\n"), StartsWith("HTTP/1.1 403 "));
  EXPECT_THAT(answerToHost(""), StartsWith("HTTP/1.1 4"));
}

TEST_F(PageServerTest, refusesOtherSites) {
  EXPECT_THAT(answerTo("GET " + pathTo(""), "Origin: http://evil.example\r\n"),
              StartsWith("HTTP/1.1 403 "));
  EXPECT_THAT(answerTo("GET " + pathTo(""), "Origin: " + originOf(server_.address()) + "\r\n"),
              StartsWith("HTTP/1.1 200 "));
}

TEST_F(PageServerTest, opensSocketsForItsOwnPagesOnly) {
  EXPECT_TRUE(PageClient(loop_, server_.address()).isOpen());
  EXPECT_EQ(sockets_, 1);
  const std::string localhost = "http://localhost:" + std::to_string(port());
  EXPECT_TRUE(PageClient(loop_, server_.address(), localhost).isOpen());
  EXPECT_EQ(sockets_, 2);
  EXPECT_FALSE(PageClient(loop_, server_.address(), "http://evil.example").isOpen());
  EXPECT_FALSE(PageClient(loop_, server_.address(), "").isOpen());
  EXPECT_FALSE(PageClient(loop_, originOf(server_.address()) + "/").isOpen());
  EXPECT_EQ(sockets_, 2);
}

TEST_F(PageServerTest, aSocketIsOpenedByAHandshakeOnly) {
  EXPECT_THAT(
      answerTo("GET " + pathTo("socket"), "Origin: " + originOf(server_.address()) + "\r\n"),
      StartsWith("HTTP/1.1 400 "));
  EXPECT_EQ(sockets_, 0);
}

TEST_F(PageServerTest, everyServerHasATokenOfItsOwn) {
  PageServer other([](SoupWebsocketConnection* /*connection*/) {});
  std::string text;
  ASSERT_FALSE(other.listen(0, text));
  EXPECT_NE(pathOf(other.address()), pathOf(server_.address()));
}

TEST_F(PageServerTest, tellsThatAPortIsTaken) {
  PageServer second([](SoupWebsocketConnection* /*connection*/) {});
  std::string text;
  EXPECT_EQ(second.listen(port(), text), PageServer::Failure::kPortBusy);
  EXPECT_THAT(text, HasSubstr("in use"));
}

TEST(PageFiles, everyFileHasItsType) {
  EXPECT_STREQ(pageFile("")->type, "text/html; charset=utf-8");
  EXPECT_FALSE(pageFile("../page/index.html"));
  EXPECT_FALSE(pageFile("none"));
}

}  // namespace
}  // namespace morvik::test
