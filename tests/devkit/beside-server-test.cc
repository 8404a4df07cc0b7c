// The web server beside an application: what its plan says, and what it answers.
#include "run/beside-server.h"

#include <fstream>

#include "loop.h"
#include "support/matchers.h"
#include "support/temporary-folder.h"

namespace morvik::test {

using namespace devkit;
namespace {

struct Answer {
  unsigned status = 0;
  std::string body;
};

class BesideServerTest : public ::testing::Test {
 protected:
  void plan(const std::string& text) { std::ofstream(folder_ / "beside.json") << text; }

  std::string troubleWith(const std::string& text) {
    plan(text);
    BesidePlan read;
    std::string trouble;
    EXPECT_FALSE(readBesidePlan(folder_.path(), read, trouble)) << text;
    return trouble;
  }

  void start(const std::string& text) {
    plan(text);
    BesidePlan read;
    std::string trouble;
    ASSERT_TRUE(readBesidePlan(folder_.path(), read, trouble)) << trouble;
    server_.emplace(read, [this](const std::string& line) { heard_.push_back(line); });
    ASSERT_TRUE(server_->start(trouble)) << trouble;
  }

  static void onAnswer(GObject* session, GAsyncResult* result, gpointer body) {
    static_cast<GBytesKept*>(body)->reset(
        soup_session_send_and_read_finish(SOUP_SESSION(session), result, nullptr));
  }

  Answer ask(SoupMessage* message) {
    const GOwned<SoupMessage> owned(message);
    const GOwned<SoupSession> session(
        soup_session_new_with_options("proxy-resolver", nullptr, nullptr));
    GBytesKept body;
    soup_session_send_and_read_async(session.get(), message, G_PRIORITY_DEFAULT, nullptr, onAnswer,
                                     &body);
    EXPECT_TRUE(loop_.runUntil([&body] { return body != nullptr; }));
    if (!body) return {};
    gsize size = 0;
    const auto* data = static_cast<const char*>(g_bytes_get_data(body.get(), &size));
    return {soup_message_get_status(message), std::string(data, size)};
  }

  SoupMessage* get(const std::string& path) const {
    return soup_message_new("GET", (origin() + path).c_str());
  }
  std::string origin() const {
    return server_->address().substr(0, server_->address().find('/', sizeof("http://")));
  }

  using GBytesKept = std::unique_ptr<GBytes, Release<g_bytes_unref>>;
  Loop loop_;
  test::TemporaryFolder folder_;
  std::vector<std::string> heard_;
  std::optional<BesideServer> server_;
};

TEST_F(BesideServerTest, isWantedByAFolderWithAPlan) {
  EXPECT_FALSE(wantsBesideServer(folder_.path()));
  plan("{}");
  EXPECT_TRUE(wantsBesideServer(folder_.path()));
}

TEST_F(BesideServerTest, refusesAPlanThatMakesNoSense) {
  EXPECT_THAT(troubleWith("{"), HasSubstr("parse error"));
  EXPECT_THAT(troubleWith("{}"), HasSubstr("address"));
  EXPECT_THAT(troubleWith(R"({"address": "/a b", "answers": []})"), HasSubstr("has no blanks"));
  EXPECT_THAT(troubleWith(R"({"address": "/", "answers": [{"path": "/"}]})"), HasSubstr("body"));
  EXPECT_THAT(troubleWith(R"({"address": "/", "answers": [{"path": "/", "file": "no.txt"}]})"),
              HasSubstr("no.txt cannot be read"));
}

TEST_F(BesideServerTest, answersWithTextJsonAndFiles) {
  std::ofstream(folder_ / "page.html") << "<p>hello</p>";
  start(R"({"address": "/a?b=c", "answers": [{"path": "/a", "body": "some text"},
      {"path": "/j", "body": {"x": 1}}, {"path": "/f", "file": "page.html", "status": 203}]})");
  EXPECT_THAT(server_->address(), ::testing::MatchesRegex("http://127.0.0.1:[0-9]+/a[?]b=c"));
  EXPECT_EQ(ask(get("/a?b=c")).body, "some text");
  EXPECT_THAT(ask(get("/j")).body, HasSubstr("\"x\": 1"));
  const Answer file = ask(get("/f"));
  EXPECT_EQ(file.status, 203U);
  EXPECT_EQ(file.body, "<p>hello</p>");
  EXPECT_EQ(ask(get("/nothing")).status, 404U);
  EXPECT_THAT(heard_,
              ElementsAre("GET /a: 200", "GET /j: 200", "GET /f: 203", "GET /nothing: 404"));
}

TEST_F(BesideServerTest, asksForTheHeadersThatItNeeds) {
  start(R"({"address": "/", "answers": [{"path": "/", "needs": ["X-Key"],
      "body": "key ${header:X-Key}, ${header:X-None}${other} ${"}]})");
  const Answer refused = ask(get("/"));
  EXPECT_EQ(refused.status, 401U);
  EXPECT_EQ(refused.body, "the request has no header X-Key");
  SoupMessage* message = get("/");
  soup_message_headers_append(soup_message_get_request_headers(message), "X-Key", "abc");
  EXPECT_EQ(ask(message).body, "key abc, ${other} ${");
}

TEST_F(BesideServerTest, showsTheFormThatCameIn) {
  start(R"({"address": "/", "answers": [{"path": "/", "body": "${form}"}]})");
  const std::unique_ptr<SoupMultipart, Release<soup_multipart_free>> form(
      soup_multipart_new(SOUP_FORM_MIME_TYPE_MULTIPART));
  soup_multipart_append_form_string(form.get(), "title", "From a test");
  const std::unique_ptr<GBytes, Release<g_bytes_unref>> file(g_bytes_new_static("12345", 5));
  soup_multipart_append_form_file(form.get(), "photo", "p.svg", "image/svg+xml", file.get());
  const auto posted = ask(soup_message_new_from_multipart(origin().c_str(), form.get()));
  EXPECT_EQ(posted.body, "title = From a test\nphoto = p.svg, 5 bytes of image/svg+xml");
  EXPECT_EQ(ask(get("/")).body, "");
}

}  // namespace
}  // namespace morvik::test
