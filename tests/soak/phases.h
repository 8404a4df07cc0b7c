// What a long life brings to the real host: messages, requests, timers, events and applications in
// large numbers, over a real socket.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "soak/curve.h"
#include "support/system/app-folder.h"
#include "support/system/host-process.h"
#include "support/system/test-device.h"

namespace morvik::test {

/// Hears how far a phase has come.
using Progress = std::function<void(const Curve& curve, long all)>;

/// One application that lives through all phases. Each takes `count` of what it is about and looks
/// at the application's memory fifty times or more.
class LongLife {
 public:
  explicit LongLife(Progress progress);

  Curve messagesIn(long count);
  /// Requests that no function of the script's waits for; each is answered all the same.
  Curve requestsOut(long count);
  Curve timers(long count);
  /// Events that become objects: tags, photos, and lists of messages.
  Curve objects(long count);
  /// Requests that a function waits for. Each keeps its place among the awaited answers for ten
  /// hours, since a request may be answered again: this curve rises, and tells by how much.
  Curve awaitedAnswers(long count);

 private:
  void warmUp();
  /// Sends presses of the button, and comes back when the application has heard them.
  void press(long burst);
  /// Has the application run the script.
  void tell(const std::string& script);
  /// Takes requests and answers them, up to the next one that is a mark.
  long answerTillMark();
  void look(Curve& curve, long done, long all);
  template <typename Burst>
  void tellWhyIfItFails(Burst burst);
  template <typename Burst>
  Curve inSteps(const char* what, long count, Burst burst);

  Progress progress_;
  AppFolder apps_;
  TestDevice server_;
  std::unique_ptr<HostProcess> host_;
  DeviceLink device_;
  pid_t app_ = -1;
};

/// Starts and ends applications through one launcher while two others live, so that three do, and
/// looks at the launcher's memory.
Curve startsAndEnds(long count, const Progress& progress);

}  // namespace morvik::test
