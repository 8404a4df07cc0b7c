// Shows a reader what happens, one line for each thing:
//   12:00:01.123 app 1 ->  led light red  #3f2a
//   12:00:01.124 app 1 <-  response OK  #3f2a
//   12:00:02.001 device --  wrote /tmp/picture.jpg
// An arrow to the right is a message from the application. Equal marks at the end belong together:
// they are the first characters of the request's id.
#pragma once

#include <functional>
#include <string>

#include "device/device-watcher.h"

namespace morvik::devkit {

class Display : public DeviceWatcher {
 public:
  enum class Colors { kOff, kOn };
  // Gets each line without its line end.
  using Sink = std::function<void(const std::string& line)>;

  Display(Sink sink, Colors colors) : sink_(std::move(sink)), colors_(colors) {}

  void came(AppNumber application) override;
  void received(AppNumber application, const zeph::ZephMsg& message) override;
  void sent(AppNumber application, const zeph::ZephMsg& message) override;
  void trouble(AppNumber application, const std::string& what) override;
  void happened(const std::string& what) override;
  void left(AppNumber application) override;

 private:
  enum class Look { kFaint, kIn, kOut, kBad };
  void show(const std::string& whom, Look look, const char* direction,
            const std::string& what) const;
  std::string painted(Look look, const std::string& text) const;

  Sink sink_;
  Colors colors_;
};

}  // namespace morvik::devkit
