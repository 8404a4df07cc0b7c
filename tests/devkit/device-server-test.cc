// The device behind its socket: real connections on the loopback interface.
#include "server/device-server.h"

#include <dlfcn.h>
#include <sys/socket.h>

#include "app-client.h"
#include "device/stimuli.h"
#include "support/matchers.h"

namespace {

std::vector<std::string>* recordedSends = nullptr;

}  // namespace

// Stands in front of the C library's, so that a test sees which bytes leave in one call.
extern "C" ssize_t send(int fd, const void* bytes, size_t count, int flags) {
  using Send = ssize_t (*)(int, const void*, size_t, int);
  static const auto real = reinterpret_cast<Send>(dlsym(RTLD_NEXT, "send"));
  if (recordedSends != nullptr) recordedSends->emplace_back(static_cast<const char*>(bytes), count);
  return real(fd, bytes, count, flags);
}

namespace morvik::test {

using namespace devkit;
namespace {

using namespace std::string_literals;

// What passes between the device and its applications, as short texts.
class Diary : public Observer {
 public:
  void happened(const Event& event) override {
    std::visit([this](const auto& what) { add(what); }, event.what);
  }

  bool has(const std::string& entry) const {
    return std::find(entries.begin(), entries.end(), entry) != entries.end();
  }

  std::vector<std::string> entries;

 private:
  void add(const Came& came) { note(came.application, "came"); }
  void add(const Left& left) { note(left.application, "left"); }
  void add(const Received& received) {
    note(received.application, "received " + received.message->id());
  }
  void add(const Sent& sent) { note(sent.application, "sent " + sent.message->correlationid()); }
  void add(const Trouble& trouble) { note(*trouble.application, "trouble: " + trouble.text); }
  void add(const Noted& noted) { entries.push_back(noted.text); }
  template <class Other>
  void add(const Other& /*other*/) {}

  void note(AppNumber application, const std::string& what) {
    entries.push_back(std::to_string(application) + ' ' + what);
  }
};

class DeviceServerTest : public ::testing::Test {
 protected:
  DeviceServerTest() : server_(std::make_unique<DeviceServer>()) {
    server_->device().events().add(diary_);
    EXPECT_EQ(server_->listen(0, text_), std::nullopt) << text_;
  }

  // A new application, with interactive mode under the given id.
  std::unique_ptr<AppClient> interactive(const std::string& id) {
    auto client = connect();
    EXPECT_EQ(client->ask(startRequest(id)).response().code(), zeph::OK);
    return client;
  }

  std::unique_ptr<AppClient> connect() {
    return std::make_unique<AppClient>(loop_, server_->port());
  }

  Outcome stimulate(std::string_view line) { return devkit::stimulate(server_->device(), line); }

  bool happens(const std::string& entry) {
    return loop_.runUntil([&] { return diary_.has(entry); });
  }

  // The application is shown the door with the given words, and another one is still served.
  void expectClosedAlone(AppClient& bad, AppClient& good, const std::string& words) {
    EXPECT_TRUE(bad.sawEnd());
    EXPECT_THAT(diary_.entries, Contains(HasSubstr("trouble: " + words)));
    EXPECT_EQ(good.ask(pingRequest("good")).response().code(), zeph::OK);
  }

  Loop loop_;
  Diary diary_;
  std::string text_;
  std::unique_ptr<DeviceServer> server_;
};

TEST_F(DeviceServerTest, takesAFreePort) { EXPECT_NE(server_->port(), 0); }

TEST_F(DeviceServerTest, saysThatAPortIsBusy) {
  DeviceServer second;
  EXPECT_EQ(second.listen(server_->port(), text_), DeviceServer::Failure::kPortBusy);
  EXPECT_FALSE(text_.empty());
}

TEST_F(DeviceServerTest, aPortIsFreeAgainAfterTheServerEnds) {
  const auto client = interactive("x");
  const std::uint16_t port = server_->port();
  server_.reset();
  loop_.runReady();
  DeviceServer second;
  EXPECT_EQ(second.listen(port, text_), std::nullopt) << text_;
}

TEST_F(DeviceServerTest, servesAConversation) {
  const auto client = interactive("mine");
  EXPECT_EQ(client->ask(pingRequest("mine")).response().code(), zeph::OK);
  EXPECT_GT(client->ask(infoRequest("mine")).morvikinfo_response().infos_size(), 2);
  EXPECT_EQ(client->ask(fadeRequest("mine", "blue", 5)).response().code(), zeph::OK);
  EXPECT_EQ(client->receive().event().code(), zeph::TERMINATED);
  EXPECT_EQ(server_->device().state().led.color, "blue");
  EXPECT_EQ(client->ask(stopRequest("mine")).interactivemode().action(),
            zeph::InteractiveMode::STOP);
}

TEST_F(DeviceServerTest, tellsItsObserversInTheOrderOfEvents) {
  auto client = connect();
  zeph::ZephMsg request = startRequest("mine");
  request.set_id("first");
  client->ask(request);
  client->disconnect();
  EXPECT_TRUE(happens("1 left"));
  EXPECT_THAT(diary_.entries, ElementsAre("1 came", "1 received first", "1 sent first", "1 left"));
}

TEST_F(DeviceServerTest, everyMessageHasAnIdOfItsOwn) {
  const auto client = interactive("mine");
  const std::string first = client->ask(pingRequest("mine")).id();
  const std::string second = client->ask(pingRequest("mine")).id();
  EXPECT_TRUE(g_uuid_string_is_valid(first.c_str()));
  EXPECT_NE(first, second);
}

TEST_F(DeviceServerTest, servesManyApplicationsWithOneGrantEach) {
  std::vector<std::unique_ptr<AppClient>> clients;
  for (int i = 0; i < 50; ++i) clients.push_back(interactive("id " + std::to_string(i)));
  for (std::size_t i = 0; i < clients.size(); ++i) {
    const std::string own = "id " + std::to_string(i);
    const std::string other = "id " + std::to_string((i + 1) % clients.size());
    EXPECT_EQ(clients[i]->ask(pingRequest(own)).response().code(), zeph::OK);
    EXPECT_EQ(clients[i]->ask(pingRequest(other)).response().code(), zeph::BAD_INTERACTIVEID);
  }
}

TEST_F(DeviceServerTest, readsFramesInPiecesAndTogether) {
  const auto client = interactive("mine");
  const zeph::ZephMsg first = pingRequest("mine");
  const zeph::ZephMsg second = pingRequest("mine");
  const std::string bytes =
      frameOf(first.SerializeAsString()) + frameOf(second.SerializeAsString());
  client->sendBytes(bytes.substr(0, 2));
  loop_.runReady();
  client->sendBytes(bytes.substr(2, 5));
  loop_.runReady();
  client->sendBytes(bytes.substr(7));
  EXPECT_EQ(client->receive().correlationid(), first.id());
  EXPECT_EQ(client->receive().correlationid(), second.id());
}

TEST_F(DeviceServerTest, aFrameLeavesInOneWrite) {
  const auto client = interactive("mine");
  const std::string request = frameOf(pingRequest("mine").SerializeAsString());
  std::vector<std::string> sends;
  recordedSends = &sends;
  client->sendBytes(request);
  const zeph::ZephMsg answer = client->receive();
  recordedSends = nullptr;
  EXPECT_THAT(sends, ElementsAre(request, frameOf(answer.SerializeAsString())));
}

TEST_F(DeviceServerTest, aFrameLeavesInThePiecesThatWereAskedFor) {
  const auto client = interactive("mine");
  EXPECT_TRUE(stimulate("pieces 5 1").done);
  std::vector<std::string> sends;
  recordedSends = &sends;
  EXPECT_TRUE(stimulate("button SIMPLE").done);
  EXPECT_TRUE(stimulate("button DOUBLE").done);
  const zeph::ZephMsg first = client->receive();
  const zeph::ZephMsg second = client->receive();
  recordedSends = nullptr;
  EXPECT_EQ(first.buttoncallback().type(), zeph::ButtonCallback::SIMPLE);
  EXPECT_EQ(second.buttoncallback().type(), zeph::ButtonCallback::DOUBLE);
  const std::string frame = frameOf(first.SerializeAsString());
  ASSERT_EQ(sends.size(), (frame.size() + 4) / 5 + 1);
  EXPECT_EQ(sends.front(), frame.substr(0, 5));
  EXPECT_EQ(sends.back(), frameOf(second.SerializeAsString()));
}

TEST_F(DeviceServerTest, aConnectionMayEndInsideAFrame) {
  const auto client = interactive("mine");
  stimulate("pieces 5 60000");
  stimulate("button SIMPLE");
  EXPECT_TRUE(stimulate("drop").done);
  EXPECT_TRUE(client->sawEnd());
  EXPECT_EQ(diary_.entries.back(), "1 left");
  EXPECT_EQ(stimulate("button SIMPLE").text, "no application is connected\n");
}

TEST_F(DeviceServerTest, dropsOneConnectionAlone) {
  const auto stays = interactive("stays");
  const auto leaves = interactive("leaves");
  stimulate("app 2 drop");
  EXPECT_TRUE(leaves->sawEnd());
  EXPECT_EQ(stays->ask(pingRequest("stays")).response().code(), zeph::OK);
}

TEST_F(DeviceServerTest, twoApplicationsCallEachOther) {
  const auto ann = interactive("ann");
  const auto bob = interactive("bob");
  zeph::ZephMsg call = pingRequest("ann");
  call.clear_ping();
  call.mutable_m2m()->mutable_call()->set_address("app2");
  EXPECT_EQ(ann->ask(call).response().code(), zeph::OK);
  EXPECT_EQ(bob->receive().m2mcallback().type(), zeph::M2mCallback::INCOMING);
  bob->disconnect();
  EXPECT_EQ(ann->receive().m2mcallback().type(), zeph::M2mCallback::TERMINATED);
}

TEST_F(DeviceServerTest, tellsWhatNoMessageTells) {
  EXPECT_TRUE(stimulate("accept").done);
  EXPECT_THAT(diary_.entries, ElementsAre("refuses nothing"));
}

TEST_F(DeviceServerTest, closesAConnectionOverAFrameThatIsNoMessage) {
  const auto good = interactive("good");
  const auto bad = connect();
  bad->sendBytes(frameOf("\xff\xff\xff"));
  expectClosedAlone(*bad, *good, "sent a frame of 3 bytes that is not a message");
}

TEST_F(DeviceServerTest, closesAConnectionOverAMessageWithoutItsRequiredFields) {
  const auto good = interactive("good");
  const auto empty = connect();
  empty->sendBytes(frameOf(""));
  expectClosedAlone(*empty, *good, "sent a message without id");
  const auto partial = connect();
  zeph::ZephMsg message = freshMessage();
  message.mutable_led()->mutable_fade()->set_period(1);
  partial->sendBytes(frameOf(message.SerializePartialAsString()));
  expectClosedAlone(*partial, *good, "sent a message without led.fade.color");
}

TEST_F(DeviceServerTest, closesAConnectionOverAnAbsurdLength) {
  const auto good = interactive("good");
  const auto bad = connect();
  bad->sendBytes("\xff\xff\xff\xff and more");
  expectClosedAlone(*bad, *good, "announced a frame of 4294967295 bytes, more than 67108864");
}

TEST_F(DeviceServerTest, handlesNothingThatFollowsABadFrame) {
  const auto good = interactive("good");
  const auto bad = connect();
  zeph::ZephMsg request = startRequest("x");
  request.set_id("too late");
  bad->sendBytes(frameOf("\xff") + frameOf(request.SerializeAsString()));
  EXPECT_TRUE(bad->sawEnd());
  EXPECT_FALSE(diary_.has("2 received too late"));
}

TEST_F(DeviceServerTest, tellsOfAnEndInsideAFrame) {
  auto client = connect();
  client->sendBytes("\0\0\0\5ab"s);
  client->disconnect();
  EXPECT_TRUE(happens("1 trouble: the connection ended inside a frame"));
  EXPECT_TRUE(happens("1 left"));
}

TEST_F(DeviceServerTest, anEventForAnApplicationThatLeftIsDropped) {
  const auto stays = interactive("stays");
  auto leaves = interactive("leaves");
  zeph::ZephMsg fade = fadeRequest("leaves", "blue", 60000);
  leaves->ask(fade);
  leaves->disconnect();
  EXPECT_TRUE(happens("2 left"));
  stays->ask(fadeRequest("stays", "blue", 40));
  EXPECT_EQ(stays->receive().event().code(), zeph::TERMINATED);
  EXPECT_EQ(std::count(diary_.entries.begin(), diary_.entries.end(), "2 sent " + fade.id()), 1);
}

TEST_F(DeviceServerTest, anApplicationThatDoesNotReadBlocksNobodyAndIsClosed) {
  const auto good = interactive("good");
  const auto silent = interactive("silent");
  silent->stopReading();
  const std::string ask = frameOf(infoRequest("silent").SerializeAsString());
  std::string asks;
  for (int i = 0; i < 500; ++i) asks += ask;
  const std::string trouble = "2 trouble: does not read what it is sent";
  for (int i = 0; i < 1000 && !diary_.has(trouble); ++i) {
    diary_.entries.clear();
    silent->sendBytes(asks);
    loop_.runReady();
    ASSERT_EQ(good->ask(pingRequest("good")).response().code(), zeph::OK);
  }
  EXPECT_TRUE(diary_.has(trouble));
}

// Nothing is written while the loop stands still, so the limit is met at a known message.
TEST_F(DeviceServerTest, isNotUpsetByOneThatMustBeClosedWhileAllAreTold) {
  const auto silent = interactive("silent");
  const auto good = interactive("good");
  for (const std::size_t size : {kMaxUnsent / 2, kMaxUnsent / 2 - 1000}) {
    EXPECT_TRUE(stimulate("app 1 serial p " + std::string(size, 'x')).done);
  }
  constexpr int kUpdates = 100;
  for (int i = 0; i < kUpdates; ++i) EXPECT_TRUE(stimulate("library SONG").done);
  EXPECT_TRUE(happens("1 trouble: does not read what it is sent"));
  for (int i = 0; i < kUpdates; ++i) EXPECT_TRUE(good->receive().has_multimediacallback());
  EXPECT_EQ(good->ask(pingRequest("good")).response().code(), zeph::OK);
}

TEST_F(DeviceServerTest, anEndOfTheServerEndsItsConnections) {
  const auto client = interactive("mine");
  client->ask(fadeRequest("mine", "blue", 20));
  server_.reset();
  EXPECT_TRUE(client->sawEnd());
}

}  // namespace
}  // namespace morvik::test
