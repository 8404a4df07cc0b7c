// Shows a reader what happens, one line for each thing:
//   12:00:01.123 app 1 ->  led light red  #3f2a
//   12:00:01.124 app 1 <-  response OK  #3f2a
//   12:00:02.001 device --  wrote /tmp/picture.jpg
//   12:00:03.000 all <-  buttonCallback { type: SIMPLE }
// An arrow to the right is a message from the application. Equal marks at the end belong together:
// they are the first characters of the request's id. What is sent to every application stands once.
#pragma once

#include <functional>
#include <string>

#include "device/events.h"

namespace morvik::devkit {

class Display : public Observer {
 public:
  enum class Colors { kOff, kOn };
  /// Gets each line without its line end.
  using Sink = std::function<void(const std::string& line)>;

  Display(Sink sink, Colors colors) : sink_(std::move(sink)), colors_(colors) {}

  /// What shows itself in messages and notes has no line of its own.
  void happened(const Event& event) override;

 private:
  void show(const Came& came) const;
  void show(const Left& left) const;
  void show(const Received& received) const;
  void show(const Sent& sent) const;
  void show(const Doubted& doubted) const;
  void show(const Noted& noted) const;
  void show(const Trouble& trouble) const;
  template <class Other>
  void show(const Other& /*other*/) const {}

  enum class Look { kFaint, kIn, kOut, kDoubtful, kBad };
  void line(const std::string& whom, Look look, const char* direction,
            const std::string& what) const;
  std::string painted(Look look, const std::string& text) const;

  Sink sink_;
  Colors colors_;
};

}  // namespace morvik::devkit
