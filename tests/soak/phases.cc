// The phases. An application says how far it is with a request for a light, the mark.
#include "soak/phases.h"

#include <algorithm>
#include <cstdio>
#include <exception>

namespace morvik::test {
namespace {

constexpr long kLooks = 50;

// What is on its way at once. More of it would not fit into the sockets, and a frame whose length
// comes in two pieces is not put together: whoever sends sees to it that none does.
constexpr long kBurst = 500;

long shareOf(long count) { return std::max(count / kLooks, 1L); }

constexpr const char* kMark = "mark";

// On standard error, only why a process ends that should not.
HostOptions quietHost(const AppFolder& apps) {
  return {.arguments = {"--debug=3", "--app_folder=" + apps.path()}, .keepsOnlyNews = true};
}

// A tag whose content is script runs it; any other, like everything else that is heard, is counted.
const char* const kLongLife = R"(
  var every = 1, heard = 0;
  function count() { if (++heard % every === 0) morvik.led.light('mark'); return true; }
  morvik.start(function() {
    morvik.button.addListener(count);
    morvik.rfid.addListener(function(tag) {
      if (tag.content) (0, eval)(tag.content); else count();
      return true;
    });
    log('granted');
  }, {});
)";

std::string connecting(int port) {
  return "morvik.connect('127.0.0.1', " + std::to_string(port) + ");";
}

std::string setting(long every) { return "heard = 0; every = " + std::to_string(every) + "; "; }

// The message so many times, as it goes over the wire.
std::string repeated(const zeph::ZephMsg& message, long count) {
  const std::string frame = frameOf(message);
  std::string frames;
  for (long i = 0; i < count; ++i) frames += frame;
  return frames;
}

zeph::ZephMsg buttonPress() {
  zeph::ZephMsg message = newMessage();
  message.mutable_buttoncallback()->set_type(zeph::ButtonCallback::SIMPLE);
  return message;
}

zeph::ZephMsg tag(const std::string& content) {
  zeph::ZephMsg message = newMessage();
  auto& tag = *message.mutable_rfidcallback();
  tag.set_id("d0021a35");
  tag.set_direction(zeph::RfidCallback::IN);
  if (!content.empty()) tag.set_content(content);
  return message;
}

zeph::ZephMsg messageList(const zeph::ZephMsg& request) {
  zeph::ZephMsg message = replyTo(request);
  message.mutable_response()->set_code(zeph::OK);
  auto& entry = *message.mutable_morvikmessageresponse()->add_morvikmessagelist();
  entry.mutable_content()->set_content("a text");
  return message;
}

}  // namespace

LongLife::LongLife(Progress progress) : progress_(std::move(progress)) {
  apps_.app("soak", {"led", "button", "rfid", "webcam", "message"},
            connecting(server_.port()) + kLongLife);
  host_ = std::make_unique<HostProcess>(quietHost(apps_));
  host_->line("soak");
  device_ = server_.accept();
  device_.grant(device_.receive());
  app_ = host_->waitForLog("JSLOG: granted").pid;
  warmUp();
}

// Until the engine has taken the room that it is given: after this, more is more.
void LongLife::warmUp() {
  constexpr int kBursts = 50;
  for (int i = 0; i < kBursts; ++i) press(kBurst);
}

void LongLife::press(long burst) {
  tell(setting(burst));
  device_.sendBytes(repeated(buttonPress(), burst));
  answerTillMark();
}

void LongLife::tell(const std::string& script) { device_.send(tag(script)); }

long LongLife::answerTillMark() {
  for (long answered = 0;; ++answered) {
    const zeph::ZephMsg request = device_.receive();
    if (request.has_led() && request.led().light().color() == kMark) return answered;
    if (request.has_morvikmessagequery()) {
      device_.send(messageList(request));
    } else {
      device_.reply(request, "OK");
    }
  }
}

// The application's last words, when it has gone or stands still.
template <typename Burst>
void LongLife::tellWhyIfItFails(Burst burst) {
  try {
    burst();
  } catch (const std::exception&) {
    std::fputs(host_->transcript().c_str(), stderr);
    throw;
  }
}

void LongLife::look(Curve& curve, long done, long all) {
  curve.add(done, memoryOf(app_));
  progress_(curve, all);
}

// Each burst comes back when the application has done it.
template <typename Burst>
Curve LongLife::inSteps(const char* what, long count, Burst burst) {
  Curve curve(what);
  const long share = shareOf(count);
  look(curve, 0, count);
  for (long done = 0; done < count; look(curve, done, count)) {
    const long till = std::min(done + share, count);
    for (long many = 0; done < till; done += many) {
      many = std::min(kBurst, till - done);
      tellWhyIfItFails([&] { burst(many); });
    }
  }
  return curve;
}

Curve LongLife::messagesIn(long count) {
  return inSteps("messages in", count, [this](long burst) { press(burst); });
}

Curve LongLife::requestsOut(long count) {
  return inSteps("requests out", count, [this](long burst) {
    tell("for (let i = 0; i < " + std::to_string(burst) +
         "; ++i) morvik.led.light('red'); morvik.led.light('mark');");
    answerTillMark();
  });
}

Curve LongLife::timers(long count) {
  return inSteps("timer calls", count, [this](long burst) {
    tell("var left = " + std::to_string(burst) +
         "; setTimeout(0, function again() { if (--left > 0) setTimeout(0, again);"
         " else morvik.led.light('mark'); });");
    answerTillMark();
  });
}

// Of a hundred, one is a list of messages, which takes a request each, and half of the others are
// photos, as events to one request.
Curve LongLife::objects(long count) {
  tell("morvik.webcam.photo('soak', count); morvik.led.light('mark');");
  const zeph::ZephMsg photo = device_.receive();
  answerTillMark();
  return inSteps("object events", count, [this, &photo](long burst) {
    const long lists = burst / 100;
    const long photos = (burst - lists) / 2;
    tell(setting(burst) + "for (let i = 0; i < " + std::to_string(lists) +
         "; ++i) morvik.message.list(count);");
    device_.sendBytes(repeated(eventFor(photo, "OK"), photos));
    device_.sendBytes(repeated(tag(""), burst - lists - photos));
    answerTillMark();
  });
}

Curve LongLife::awaitedAnswers(long count) {
  return inSteps("awaited answers", count, [this](long burst) {
    tell("var left = " + std::to_string(burst) +
         "; ping(function again() { if (--left > 0) ping(again); else morvik.led.light('mark'); "
         "});");
    answerTillMark();
  });
}

Curve startsAndEnds(long count, const Progress& progress) {
  AppFolder apps;
  TestDevice server;
  apps.app("stays", {},
           connecting(server.port()) +
               "setTimeout(1000, () => true);"
               "morvik.start(function() {}, {});");
  apps.app("goes", {}, "setTimeout(0, exit);");
  HostProcess host(quietHost(apps));
  std::vector<DeviceLink> residents;
  for (int i = 0; i < 2; ++i) {
    host.line("stays");
    residents.push_back(server.accept());
    residents.back().grant(residents.back().receive());
  }
  Curve curve("starts and ends");
  const long share = shareOf(count);
  for (long done = 0; done <= count; ++done) {
    if (done % share == 0) {
      curve.add(done, memoryOf(host.pid()));
      progress(curve, count);
    }
    host.line("goes");
    host.waitForNews("nbChild 2");
  }
  return curve;
}

}  // namespace morvik::test
