// Who may come to a target, and what anybody can do to it.
#include "debug/debug-server.h"

#include <thread>

#include "debug-client.h"
#include "support/matchers.h"

namespace morvik::test {

using namespace devkit;
namespace {

constexpr const char* kUpgrade =
    "Upgrade: websocket\r\nConnection: Upgrade\r\nSec-WebSocket-Version: 13\r\n"
    "Sec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\n";

bool any(const ClientEvent& /*event*/) { return true; }

class DebugServerTest : public ::testing::Test {
 protected:
  DebugServerTest() {
    std::string trouble;
    EXPECT_TRUE(server_.start(0, 1, trouble)) << trouble;
  }

  std::uint16_t port() const { return server_.target().port; }
  std::string address() const { return socketAddressOf(server_.target()); }

  // The server's answer to a request with this head, which it does not leave open.
  std::string answerTo(const std::string& head) {
    BareClient client(loop_, port());
    client.send(head);
    return client.waitForEnd();
  }
  std::string get(const std::string& path, const std::string& more = "Connection: close\r\n") {
    return answerTo(requestHead("GET " + path, port(), more));
  }

  ClientEvent event() { return queue_.await(any); }

  Loop loop_;
  // As long as the thread: for ever.
  ClientQueue& queue_ = *new ClientQueue;
  DebugServer& server_ =
      *new DebugServer({.id = "0123abc", .title = "app", .url = "file:///app/main.js"}, queue_);
};

TEST_F(DebugServerTest, tellsWhereToAttach) {
  for (const char* path : {"/json", "/json/", "/json/list"}) {
    const std::string answer = get(path);
    EXPECT_THAT(answer, HasSubstr("200 OK"));
    EXPECT_THAT(answer, HasSubstr("\"webSocketDebuggerUrl\": \"" + address() + "\""));
    EXPECT_THAT(answer, HasSubstr("\"url\": \"file:///app/main.js\""));
  }
  EXPECT_THAT(get("/json/version"), HasSubstr("\"Protocol-Version\": \"1.3\""));
}

TEST_F(DebugServerTest, passesMessagesOnBothWaysAndTellsWhoLeft) {
  {
    DebugClient client(loop_, address());
    client.sendText(R"({"id":1})");
    EXPECT_EQ(event().kind, ClientEvent::Kind::kCame);
    const ClientEvent said = event();
    EXPECT_EQ(said.kind, ClientEvent::Kind::kSaid);
    EXPECT_EQ(said.text, R"({"id":1})");
    server_.send(R"({"first":1})");
    server_.send(R"({"second":2})");
    EXPECT_TRUE(client.receive().contains("first"));
    EXPECT_TRUE(client.receive().contains("second"));
  }
  EXPECT_EQ(event().kind, ClientEvent::Kind::kLeft);
}

TEST_F(DebugServerTest, refusesASecondDebuggerAndSaysWhy) {
  const DebugClient first(loop_, address());
  ASSERT_TRUE(first.isOpen());
  EXPECT_FALSE(DebugClient(loop_, address()).isOpen());
  const std::string refusal = get("/0123abc", kUpgrade);
  EXPECT_THAT(refusal, HasSubstr("409 Conflict"));
  EXPECT_THAT(refusal, HasSubstr("A debugger is attached to this application already."));
  EXPECT_THAT(get("/json/list"), Not(HasSubstr("ws://")));
}

TEST_F(DebugServerTest, takesTheNextDebuggerWhenOneHasLeft) {
  for (int round = 0; round < 3; ++round) {
    EXPECT_TRUE(DebugClient(loop_, address()).isOpen());
    EXPECT_EQ(event().kind, ClientEvent::Kind::kCame);
    EXPECT_EQ(event().kind, ClientEvent::Kind::kLeft);
  }
}

TEST_F(DebugServerTest, refusesWebPagesAndForeignNames) {
  for (const char* origin : {"http://evil.example", "null", "http://127.0.0.1:80", ""}) {
    const std::string from = "Origin: " + std::string(origin) + "\r\n";
    EXPECT_THAT(get("/0123abc", kUpgrade + from), HasSubstr("403 Forbidden")) << origin;
    EXPECT_THAT(get("/json/list", from), HasSubstr("403 Forbidden")) << origin;
  }
  for (const char* host : {"evil.example", "127.0.0.1", "127.0.0.1:1", "localhost.evil.example"}) {
    const std::string head = std::string("GET /json/list HTTP/1.1\r\nHost: ") + host + "\r\n\r\n";
    EXPECT_THAT(answerTo(head), HasSubstr("403 Forbidden")) << host;
  }
}

TEST_F(DebugServerTest, letsTheToolsOfABrowserIn) {
  EXPECT_TRUE(SocketClient(loop_, address(), "devtools://devtools").isOpen());
}

TEST_F(DebugServerTest, answersWhatMakesNoSenseAndLivesOn) {
  EXPECT_THAT(get("/"), HasSubstr("404 Not Found"));
  EXPECT_THAT(get("/0123abcd", kUpgrade), HasSubstr("404 Not Found"));
  EXPECT_THAT(get("/0123ab", kUpgrade), HasSubstr("404 Not Found"));
  EXPECT_THAT(get("/0123abc/more", kUpgrade), HasSubstr("404 Not Found"));
  EXPECT_THAT(answerTo(requestHead("POST /json", port(), "Content-Length: 0\r\n")),
              HasSubstr("405 Method Not Allowed"));
  EXPECT_THAT(answerTo(std::string(3000, '\xff') + "\r\n\r\n"), HasSubstr("400 Bad Request"));
  EXPECT_THAT(get("/json/list"), HasSubstr("200 OK"));
}

TEST_F(DebugServerTest, sendsOneAwayWhoseFramesAreNoTexts) {
  DebugClient client(loop_, address());
  client.sendBytes("\x01\x02\x03");
  EXPECT_EQ(client.closeCode(), 1003);
  EXPECT_EQ(event().kind, ClientEvent::Kind::kCame);
  EXPECT_EQ(event().kind, ClientEvent::Kind::kLeft);
}

TEST_F(DebugServerTest, deliversEverythingBeforeItCloses) {
  DebugClient client(loop_, address());
  for (int number = 0; number < 100; ++number) server_.send(Json{{"number", number}}.dump());
  std::thread closing([this] { server_.close(); });
  for (int number = 0; number < 100; ++number) EXPECT_EQ(client.receive()["number"], number);
  EXPECT_EQ(client.closeCode(), 1001);
  closing.join();
}

TEST_F(DebugServerTest, takesTheNextPortWhereOneIsTaken) {
  DebugServer other({.id = "other", .title = "", .url = ""}, queue_);  // gets no thread
  std::string trouble;
  EXPECT_FALSE(other.start(port(), 1, trouble));
  EXPECT_THAT(trouble, HasSubstr("in use"));
  auto& third = *new DebugServer({.id = "third", .title = "", .url = ""}, queue_);
  EXPECT_TRUE(third.start(port(), 3, trouble)) << trouble;
  EXPECT_GT(third.target().port, port());
}

}  // namespace
}  // namespace morvik::test
