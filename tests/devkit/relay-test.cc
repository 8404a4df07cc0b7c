// The relay: what goes in on one side comes out on the other, byte for byte and no sooner.
#include "run/relay.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>

#include "app-client.h"
#include "device/when-readable.h"
#include "loop.h"
#include "run/socket-owner.h"
#include "support/matchers.h"

namespace morvik::test {

using namespace devkit;
namespace {

sockaddr_in loopback(std::uint16_t port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

// One end of a connection, as bytes.
class Peer {
 public:
  Peer(Loop& loop, int fd) : loop_(loop), fd_(fd) {
    fcntl(fd, F_SETFL, O_NONBLOCK);
    listen();
  }
  ~Peer() { close(); }
  Peer(const Peer&) = delete;
  Peer& operator=(const Peer&) = delete;

  void send(const std::string& bytes) { EXPECT_EQ(offer(bytes), bytes.size()); }
  // As much as there is room for.
  std::size_t offer(std::string_view bytes) {
    const ssize_t count = ::send(fd_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    return count > 0 ? static_cast<std::size_t>(count) : 0;
  }
  // Everything that came so far, once it has so many bytes.
  std::string received(std::size_t size) {
    EXPECT_TRUE(loop_.runUntil([&] { return bytes_.size() >= size; })) << bytes_.size();
    return bytes_;
  }
  bool sawEnd() {
    return loop_.runUntil([this] { return over_; }) && error_ == 0;
  }
  bool sawReset() {
    return loop_.runUntil([this] { return over_; }) && error_ == ECONNRESET;
  }
  void stopReading() { source_.reset(); }
  void listen() {
    source_ = whenReadable(fd_, [this] { return take(); });
  }
  void endSending() { shutdown(fd_, SHUT_WR); }
  void reset() {
    const linger now{.l_onoff = 1, .l_linger = 0};
    setsockopt(fd_, SOL_SOCKET, SO_LINGER, &now, sizeof(now));
    close();
  }
  void close() {
    stopReading();
    if (fd_ >= 0) ::close(fd_);
    fd_ = -1;
  }

 private:
  bool take() {
    std::array<char, 65536> bytes{};
    const ssize_t count = recv(fd_, bytes.data(), bytes.size(), 0);
    if (count > 0) bytes_.append(bytes.data(), static_cast<std::size_t>(count));
    over_ = count <= 0;
    error_ = count < 0 ? errno : 0;
    return !over_;
  }

  Loop& loop_;
  int fd_;
  GSourceAttached source_;
  std::string bytes_;
  bool over_ = false;
  int error_ = 0;
};

class RelayTest : public ::testing::Test, protected Observer {
 protected:
  RelayTest() : listening_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)) {
    sockaddr_in address = loopback(0);
    socklen_t size = sizeof(address);
    EXPECT_EQ(bind(listening_, reinterpret_cast<sockaddr*>(&address), size), 0);
    EXPECT_EQ(::listen(listening_, 8), 0);
    getsockname(listening_, reinterpret_cast<sockaddr*>(&address), &size);
    serverPort_ = ntohs(address.sin_port);
    events_.add(*this);
  }
  ~RelayTest() override { ::close(listening_); }

  void start() {
    ASSERT_EQ(relay_.listen("127.0.0.1:" + std::to_string(serverPort_)), std::nullopt);
  }

  std::unique_ptr<Peer> newApplication() {
    const int fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const sockaddr_in address = loopback(relay_.port());
    EXPECT_EQ(connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 0);
    return std::make_unique<Peer>(loop_, fd);
  }

  // The server's end of the application that came last.
  std::unique_ptr<Peer> accept() {
    const auto ready = whenReadable(listening_, [] { return true; });
    int fd = -1;
    EXPECT_TRUE(loop_.runUntil(
        [&] { return fd >= 0 || (fd = ::accept(listening_, nullptr, nullptr)) >= 0; }));
    return std::make_unique<Peer>(loop_, fd);
  }

  void connectBoth() {
    start();
    application_ = newApplication();
    server_ = accept();
  }

  void happened(const Event& event) override {
    if (std::holds_alternative<Left>(event.what)) told_.emplace_back("left");
    if (const auto* trouble = std::get_if<Trouble>(&event.what)) {
      told_.push_back(trouble->text);
      losses_.push_back(trouble->loss);
      why_ = trouble->why;
    }
    if (const auto* message = std::get_if<Received>(&event.what)) {
      told_.push_back("-> " + message->message->id());
    }
    if (const auto* message = std::get_if<Sent>(&event.what)) {
      told_.push_back("<- " + message->message->id());
    }
  }
  bool hasTold(const std::string& what) {
    return loop_.runUntil([&] { return std::ranges::find(told_, what) != told_.end(); });
  }

  Loop loop_;
  int listening_;
  std::uint16_t serverPort_ = 0;
  std::vector<std::string> told_;
  std::vector<ServerLoss> losses_;  // as the troubles tell
  std::string why_;                 // the last of them
  Events events_{[] { return std::chrono::milliseconds(0); }};
  Relay relay_{events_};
  std::unique_ptr<Peer> application_;
  std::unique_ptr<Peer> server_;
};

std::string frameWithId(const std::string& id) {
  zeph::ZephMsg message;
  message.set_id(id);
  return frameOf(message.SerializeAsString());
}

TEST_F(RelayTest, passesMessagesOnAndTellsOfThem) {
  connectBoth();
  const std::string up = frameWithId("a1");
  const std::string down = frameWithId("b1") + frameWithId("b2");
  application_->send(up);
  EXPECT_EQ(server_->received(up.size()), up);
  server_->send(down);
  EXPECT_EQ(application_->received(down.size()), down);
  EXPECT_THAT(told_, ElementsAre("-> a1", "<- b1", "<- b2"));
}

TEST_F(RelayTest, passesASplitLengthOnAsItCame) {
  connectBoth();
  const std::string frame = frameWithId("split");
  for (std::size_t size = 1; size <= frame.size(); ++size) {
    server_->send(frame.substr(size - 1, 1));
    ASSERT_EQ(application_->received(size), frame.substr(0, size));
  }
  EXPECT_THAT(told_, ElementsAre("<- split"));
}

TEST_F(RelayTest, passesOnWhatIsNoMessage) {
  connectBoth();
  const std::string bytes = frameOf("no message") + std::string("\xff\xff\xff\xff and more", 13);
  application_->send(bytes);
  EXPECT_EQ(server_->received(bytes.size()), bytes);
  ASSERT_EQ(told_.size(), 2U);
  EXPECT_THAT(told_[0], HasSubstr("sent a frame of 10 bytes that is not a message"));
  EXPECT_THAT(told_[1], HasSubstr("announced a frame of 4294967295 bytes"));
  const std::string more = frameWithId("unseen");
  application_->send(more);
  EXPECT_EQ(server_->received(bytes.size() + more.size()), bytes + more);
  EXPECT_EQ(told_.size(), 2U);
}

TEST_F(RelayTest, keepsConnectionsApart) {
  connectBoth();
  const auto other = newApplication();
  const auto otherServer = accept();
  other->send(frameWithId("other"));
  otherServer->received(frameWithId("other").size());
  application_->send(frameWithId("one"));
  EXPECT_EQ(server_->received(frameWithId("one").size()), frameWithId("one"));
  EXPECT_NE(relay_.portOf(1), relay_.portOf(2));
  EXPECT_EQ(relay_.portOf(3), 0);
}

TEST_F(RelayTest, slowsTheServerForAnApplicationThatDoesNotRead) {
  connectBoth();
  application_->stopReading();
  const std::string block(std::size_t{256} * 1024, 'x');
  std::size_t sent = 0;
  // Full when nothing more goes in although the relay had its turn.
  for (int full = 0; full < 20;) {
    const std::size_t count = server_->offer(block);
    sent += count;
    full = count > 0 ? 0 : full + 1;
    loop_.runReady();
  }
  constexpr std::size_t kKernelBuffers = std::size_t{32} * 1024 * 1024;
  EXPECT_LT(sent, kKernelBuffers);
  application_->listen();
  EXPECT_EQ(application_->received(sent), std::string(sent, 'x'));
}

TEST_F(RelayTest, passesTheEndOfOneDirectionOn) {
  connectBoth();
  application_->send(frameWithId("last"));
  application_->endSending();
  EXPECT_TRUE(server_->sawEnd());
  server_->send(frameWithId("answer"));
  EXPECT_EQ(application_->received(frameWithId("answer").size()), frameWithId("answer"));
  server_->close();
  EXPECT_TRUE(application_->sawEnd());
  EXPECT_TRUE(hasTold("left"));
}

TEST_F(RelayTest, tellsThatTheServerEndedTheConnection) {
  connectBoth();
  server_->close();
  EXPECT_TRUE(application_->sawEnd());
  EXPECT_THAT(told_, ElementsAre("the server ended the connection"));
  EXPECT_THAT(losses_, ElementsAre(ServerLoss::kEnded));
  application_->close();
  EXPECT_TRUE(hasTold("left"));
}

TEST_F(RelayTest, passesAResetOn) {
  connectBoth();
  server_->send(frameWithId("first"));
  application_->received(frameWithId("first").size());
  server_->reset();
  EXPECT_TRUE(application_->sawReset());
  EXPECT_TRUE(hasTold("left"));
  EXPECT_THAT(told_.at(1), HasSubstr("the server broke off the connection"));
  EXPECT_THAT(losses_, ElementsAre(ServerLoss::kReset));
}

TEST_F(RelayTest, passesTheApplicationsResetOn) {
  connectBoth();
  application_->reset();
  EXPECT_TRUE(server_->sawReset());
  EXPECT_TRUE(hasTold("left"));
  EXPECT_THAT(losses_, ElementsAre(ServerLoss::kNone));
}

TEST_F(RelayTest, breaksOffWhenThereIsNoServer) {
  ::close(listening_);
  listening_ = -1;
  start();
  application_ = newApplication();
  EXPECT_TRUE(application_->sawReset());
  EXPECT_TRUE(hasTold("left"));
  EXPECT_THAT(told_.at(0), HasSubstr("the server cannot be reached: "));
  EXPECT_THAT(losses_, ElementsAre(ServerLoss::kMissing));
  EXPECT_THAT(why_, HasSubstr("Connection refused"));
}

TEST_F(RelayTest, resetsWhatIsLeftAtItsEnd) {
  auto relay = std::make_unique<Relay>(events_);
  ASSERT_EQ(relay->listen("127.0.0.1:" + std::to_string(serverPort_)), std::nullopt);
  AppClient client(loop_, relay->port());
  const auto server = accept();
  client.sendBytes("abc");
  server->received(3);
  relay.reset();
  EXPECT_TRUE(client.sawEnd());
  EXPECT_TRUE(server->sawReset());
  EXPECT_THAT(told_, IsEmpty());
}

TEST_F(RelayTest, refusesAnAddressThatIsNone) {
  EXPECT_NE(relay_.listen("host:port"), std::nullopt);
}

TEST_F(RelayTest, knowsWhoseConnectionItIs) {
  connectBoth();
  const std::array<pid_t, 2> processes{1, getpid()};
  EXPECT_EQ(ownerOfConnection(relay_.portOf(1), relay_.port(), processes), getpid());
  EXPECT_EQ(ownerOfConnection(relay_.portOf(1), relay_.port(), {}), 0);
  EXPECT_EQ(ownerOfConnection(1, relay_.port(), processes), 0);
}

}  // namespace
}  // namespace morvik::test
