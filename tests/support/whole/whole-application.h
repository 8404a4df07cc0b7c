// An application within a process that measures: its script, its connection, and the device's end
// of that. The engine must stand.
#pragma once

#include <v8.h>
#include <zeph-message.pb.h>

#include <array>
#include <string>

#include "host/launch-options.h"
#include "host/morvik-data.h"
#include "host/script.h"

namespace morvik::test {

// Ends the process where a measurement would mean nothing.
void require(bool condition);

// One that may do everything and has interactive mode. For the life of the process.
class WholeApplication {
 public:
  WholeApplication();
  WholeApplication(const WholeApplication&) = delete;
  WholeApplication& operator=(const WholeApplication&) = delete;

  void run(const char* script);
  // A function of the script, by its name.
  [[nodiscard]] ScriptFunction function(const char* name) const;
  // The device sends a message, and the pump has a turn.
  void hear(const zeph::ZephMsg& message);
  // A turn of the pump with nothing to read.
  void rest();
  // The next message that the application has sent.
  zeph::ZephMsg sent();

 private:
  v8::Local<v8::ObjectTemplate> globals();

  v8::Isolate* isolate_ = v8::Isolate::GetCurrent();
  v8::HandleScope handles_{isolate_};
  LaunchOptions options_;
  MorvikData instance_;
  v8::Local<v8::Context> context_;
  int device_ = -1;
  std::array<char, 65536> bytes_{};
};

// A message of the device's with an id and nothing else.
zeph::ZephMsg deviceMessage();

}  // namespace morvik::test
