// The application without a script engine: GLib, protobuf and C++. What is left of a figure above
// this one is what scripts cost.
//
//   bench-floor PORT TASK COUNT OTHERS
#include <arpa/inet.h>
#include <glib-unix.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <uuid/uuid.h>
#include <zeph-message.pb.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace {

namespace zeph = net::quelta::zeph::message;

constexpr std::size_t kHeaderSize = 4;
constexpr std::size_t kReadSize = 65536;
constexpr guint kNever = 1000000000;

struct Tag {
  std::string id;
  std::string direction;
  std::string type;
  std::string color;
};

using Heard = std::function<void(const std::string&)>;
using Listener = std::function<void(const zeph::ZephMsg&)>;

std::string newId() {
  uuid_t bytes;
  std::array<char, UUID_STR_LEN> text{};
  uuid_generate(bytes);
  uuid_unparse_lower(bytes, text.data());
  return text.data();
}

int connectTo(int port) {
  const int socket = ::socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  if (connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
    g_error("no connection");
  const int atOnce = 1;
  setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &atOnce, sizeof atOnce);
  return socket;
}

class Device {
 public:
  explicit Device(int port) : socket_(connectTo(port)) {
    g_unix_fd_add(socket_, G_IO_IN, readable, this);
  }

  void goInteractive(std::function<void()> granted) {
    zeph::ZephMsg message = newMessage();
    const std::string id = newId();
    message.mutable_interactivemode()->set_interactiveid(id);
    message.mutable_interactivemode()->set_action(zeph::InteractiveMode::START);
    send(message, [this, id, granted = std::move(granted)](const std::string&) {
      interactiveId_ = id;
      granted();
    });
  }

  void ping(Heard heard) {
    zeph::ZephMsg message = newMessage();
    message.mutable_ping();
    send(message, std::move(heard));
  }

  void light(const char* color, Heard heard = nullptr) {
    zeph::ZephMsg message = newMessage();
    message.mutable_led()->mutable_light()->set_color(color);
    send(message, std::move(heard));
  }

  void onButton(Heard heard) {
    listeners_.push_back([heard = std::move(heard)](const zeph::ZephMsg& message) {
      if (message.has_buttoncallback())
        heard(zeph::ButtonCallback::Type_Name(message.buttoncallback().type()));
    });
  }

  void onTag(std::function<void(const Tag&)> heard) {
    listeners_.push_back([heard = std::move(heard)](const zeph::ZephMsg& message) {
      if (!message.has_rfidcallback()) return;
      const zeph::RfidCallback& tag = message.rfidcallback();
      heard({tag.id(), zeph::RfidCallback::Dir_Name(tag.direction()),
             zeph::RfidCallback::Type_Name(tag.type()), zeph::RfidCallback::Col_Name(tag.color())});
    });
  }

 private:
  zeph::ZephMsg newMessage() {
    zeph::ZephMsg message;
    message.set_id(newId());
    if (!interactiveId_.empty()) message.set_interactiveid(interactiveId_);
    return message;
  }

  void send(const zeph::ZephMsg& message, Heard heard) {
    if (heard) awaited_[message.id()] = std::move(heard);
    const std::uint32_t length = htonl(static_cast<std::uint32_t>(message.ByteSizeLong()));
    frame_.assign(reinterpret_cast<const char*>(&length), kHeaderSize);
    message.AppendToString(&frame_);
    for (std::size_t sent = 0; sent < frame_.size();) {
      const ssize_t taken =
          ::send(socket_, frame_.data() + sent, frame_.size() - sent, MSG_NOSIGNAL);
      if (taken < 0) std::exit(0);
      sent += static_cast<std::size_t>(taken);
    }
  }

  static gboolean readable(gint socket, GIOCondition /*condition*/, gpointer device) {
    std::array<char, kReadSize> bytes;
    const ssize_t size = recv(socket, bytes.data(), bytes.size(), 0);
    if (size <= 0) std::exit(0);
    static_cast<Device*>(device)->read({bytes.data(), static_cast<std::size_t>(size)});
    return G_SOURCE_CONTINUE;
  }

  void read(std::string_view bytes) {
    unread_ += bytes;
    std::size_t at = 0;
    while (unread_.size() - at >= kHeaderSize) {
      std::uint32_t length = 0;
      unread_.copy(reinterpret_cast<char*>(&length), kHeaderSize, at);
      length = ntohl(length);
      if (unread_.size() - at - kHeaderSize < length) break;
      message_.ParseFromArray(unread_.data() + at + kHeaderSize, static_cast<int>(length));
      dispatch(message_);
      at += kHeaderSize + length;
    }
    unread_.erase(0, at);
  }

  void dispatch(const zeph::ZephMsg& message) {
    if (message.has_correlationid()) answer(message);
    for (const Listener& listener : listeners_) listener(message);
  }

  void answer(const zeph::ZephMsg& message) {
    auto found = awaited_.extract(message.correlationid());
    if (!found.empty()) found.mapped()(zeph::VReturnCode_Name(message.response().code()));
  }

  int socket_;
  std::string interactiveId_;
  std::string frame_;
  std::string unread_;
  zeph::ZephMsg message_;
  std::unordered_map<std::string, Heard> awaited_;
  std::vector<Listener> listeners_;
};

struct Task {
  std::string name;
  int count;
  int others;
};

void pingAgain(Device& device) {
  device.ping([&device](const std::string&) { pingAgain(device); });
}

// A light at every `count`th call.
auto lightEvery(Device& device, int count) {
  return [&device, count, calls = 0]() mutable {
    if (++calls % count == 0) device.light("red");
  };
}

void sendLights(Device& device, int count, const Heard& heard = nullptr) {
  for (int i = 0; i < count; ++i) device.light("red", heard);
}

void addOthers(Device& device, const Task& task) {
  const auto nothing = [](const std::string&) {};
  for (int i = 0; i < task.others; ++i) {
    if (task.name == "listeners") {
      device.onButton(nothing);
    } else if (task.name == "timers") {
      g_timeout_add(
          kNever, [](gpointer) { return G_SOURCE_REMOVE; }, nullptr);
    } else {
      device.light("red", nothing);
    }
  }
}

void runTask(Device& device, const Task& task) {
  addOthers(device, task);
  if (task.name == "ping" || task.name == "timers") return pingAgain(device);
  if (task.name == "button" || task.name == "listeners")
    device.onButton(
        [heard = lightEvery(device, task.count)](const std::string&) mutable { heard(); });
  if (task.name == "tags")
    device.onTag([heard = lightEvery(device, task.count)](const Tag& tag) mutable {
      if (!tag.id.empty()) heard();
    });
  if (task.name == "led")
    device.onButton([&device, &task](const std::string&) { sendLights(device, task.count); });
  device.light("blue");
}

}  // namespace

int main(int argc, char** argv) {
  std::puts("started");
  std::fflush(stdout);
  if (argc != 5) return 2;
  const Task task{argv[2], std::atoi(argv[3]), std::atoi(argv[4])};
  Device device(std::atoi(argv[1]));
  device.goInteractive([&] {
    std::puts("granted");
    std::fflush(stdout);
    runTask(device, task);
  });
  g_main_loop_run(g_main_loop_new(nullptr, FALSE));
  return 0;
}
