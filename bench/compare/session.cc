#include "compare/session.h"

namespace morvik::bench {
namespace {

bool saysThatItListens(const Task& task) { return task.name != "ping" && task.name != "timers"; }

// The requests in front of the task.
int requestsBefore(const Task& task) {
  return task.name == "ping" || task.name == "led" ? task.others : 0;
}

std::unique_ptr<Application> launched(Field& field, Contestant& contestant, const Task& task) {
  contestant.prepare(field.server.port(), task, /*speaks=*/false);
  return contestant.launch();
}

std::string repeated(const std::string& frame, int count) {
  std::string frames;
  frames.reserve(frame.size() * static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i) frames += frame;
  return frames;
}

}  // namespace

Session::Session(Field& field, Contestant& contestant, const Task& task)
    : application_(launched(field, contestant, task)), link_(field.server.accept()) {
  (void)pid();  // which is not told later, when others have been launched
  link_.receive();
  link_.answer();
  link_.skip(requestsBefore(task) + (saysThatItListens(task) ? 1 : 0));
}

double Session::burst(const std::string& frame, int count) {
  const std::string frames = repeated(frame, count);
  return exchange(frames) / 1e6;
}

double Session::exchange(const std::string& frame, int replies) {
  const auto sent = Clock::now();
  link_.send(frame);
  link_.skip(replies);
  return Microseconds(Clock::now() - sent).count();
}

std::string buttonFrame() {
  zeph::ZephMsg message;
  message.set_id("button");
  message.mutable_buttoncallback()->set_type(zeph::ButtonCallback::SIMPLE);
  return frameOf(message);
}

std::string tagFrame() {
  zeph::ZephMsg message;
  message.set_id("tag");
  zeph::RfidCallback& tag = *message.mutable_rfidcallback();
  tag.set_id("d0021a053b462c53");
  tag.set_direction(zeph::RfidCallback::IN);
  tag.set_type(zeph::RfidCallback::FLAT);
  tag.set_color(zeph::RfidCallback::GREEN);
  return frameOf(message);
}

}  // namespace morvik::bench
