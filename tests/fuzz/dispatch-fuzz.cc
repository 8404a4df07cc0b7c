// What a device server sends to an application that has listeners on everything and awaits an
// answer to every request that it can make. An input is any number of payloads, each behind its
// length in two bytes, the low one first. Requests are answered under the names "k000", "k001", ...
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "channel/callback-table.h"
#include "channel/message.h"
#include "channel/pump.h"
#include "features/features.h"
#include "features/prelude.h"
#include "fuzz/fuzz.h"
#include "fuzz/live-script.h"
#include "support/unit/frames.h"

namespace morvik::test {
namespace {

// Looks at all of what it gets, and stays.
constexpr char kLook[] = R"(
  tell = function() {
    for (const argument of arguments) { log(JSON.stringify(argument)); log(String(argument)); }
    return true;
  };
  tell.onMessage = tell;  // the form of a listener on serial ports
)";
constexpr const char* kListeners[] = {"button.addListener", "ears.addListener",
                                      "m2m.addListener",    "multimedia.addListener",
                                      "rfid.addListener",   "serial.addListener__"};
constexpr std::size_t kLengthSize = 2;
// Less than the socket takes at once.
constexpr std::size_t kMostPayload = 16384;

// A call for each function of the features' tables that takes one of the script's, and for those
// that have no table.
std::vector<std::string> requests() {
  std::map<std::string, std::string> calls{{"info", "morvik.info(tell)"},
                                           {"ping", "morvik.ping(tell)"},
                                           {"social", "social.init(tell, {})"}};
  for (const Feature& feature : features()) {
    for (const AnsweredRow& row : feature.answers) {
      const std::string call = "morvik." + feature.name + "." + row.call;
      if (call.find("tell") != std::string::npos)
        calls.emplace(call.substr(0, call.find('(')), call);
    }
  }
  std::vector<std::string> texts;
  for (const auto& [function, call] : calls) texts.push_back(call);
  return texts;
}

std::string nameOf(std::size_t request) {
  char name[16];
  std::snprintf(name, sizeof name, "k%03zu", request);
  return name;
}

// The application, and what it awaits: requests are answered under names that inputs can know.
class Application {
 public:
  Application() : live_(liveScriptKeptForLife()) {
    live_.instance.interactiveID = "interactive";
    live_.run(kPrelude);
    live_.run(kLook);
    for (const char* listener : kListeners) live_.run(std::string("morvik.") + listener + "(tell)");
    listeners_ = g_list_length(live_.instance.listeners);
    require(listeners_ == std::size(kListeners), "every listener is there");
    for (const std::string& call : requests()) {
      if (auto entry = await(call)) awaited_.push_back({call, std::move(entry)});
    }
    registerAll();
  }

  void receive(std::string_view payload) {
    const std::string bytes = frame(std::string(payload));
    require(send(live_.server, bytes.data(), bytes.size(), MSG_DONTWAIT) ==
                static_cast<ssize_t>(bytes.size()),
            "the socket takes a frame");
    require(onSocketIdle(&live_.instance) == G_SOURCE_CONTINUE, "the pump goes on");
  }

  // Listeners stay, what a message has armed does not go off, and what hears one answer only hears
  // the next input's too.
  void forget(std::string_view input) {
    require(g_list_length(live_.instance.listeners) == listeners_, "listeners stay");
    while (g_source_remove_by_user_data(nullptr) != FALSE) {
    }
    bool answered = false;
    for (std::size_t i = 0; i < awaited_.size(); ++i) {
      if (input.find(nameOf(i)) == std::string_view::npos) continue;
      awaited_[i].entry = await(awaited_[i].call);
      answered = true;
    }
    if (answered) registerAll();
  }

 private:
  struct Awaited {
    std::string call;
    std::shared_ptr<CallbackEntry> entry;
  };

  // Makes a request. Null when its answer is awaited by nobody, as with some.
  std::shared_ptr<CallbackEntry> await(const std::string& call) {
    live_.run(call);
    const auto request = live_.sent();
    require(request.has_value(), "a request is sent");
    zeph::ZephMsg answer;
    answer.set_correlationid(request->id());
    return findCallback(answer);
  }

  void registerAll() {
    releaseCallbacks();
    for (std::size_t i = 0; i < awaited_.size(); ++i)
      registerCallback(nameOf(i), awaited_[i].entry);
  }

  LiveScript& live_;
  std::size_t listeners_ = 0;
  std::vector<Awaited> awaited_;
};

Application& applicationKeptForLife() {
  static auto& application = *new Application;
  return application;
}

// A result of a recognition that holds none ends the application on purpose.
bool endsTheApplication(std::string_view payload) {
  zeph::ZephMsg message;
  parseZephMsg({reinterpret_cast<const std::uint8_t*>(payload.data()), payload.size()}, message);
  return message.has_asrcallback() && message.asrcallback().recognition_size() == 0;
}

// Takes the next payload from the input.
std::string_view nextPayload(std::string_view& input) {
  const auto low = static_cast<unsigned char>(input[0]);
  const auto high = static_cast<unsigned char>(input[1]);
  input.remove_prefix(kLengthSize);
  const std::size_t length = std::min({std::size_t{high} << 8 | low, input.size(), kMostPayload});
  const std::string_view payload = input.substr(0, length);
  input.remove_prefix(length);
  return payload;
}

}  // namespace

void fuzz(std::string_view input) {
  Application& application = applicationKeptForLife();
  const Turn turn;
  for (std::string_view rest = input; rest.size() > kLengthSize;) {
    const std::string_view payload = nextPayload(rest);
    if (!endsTheApplication(payload)) application.receive(payload);
  }
  application.forget(input);
}

}  // namespace morvik::test
