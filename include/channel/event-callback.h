// The reply functions that carry a result code to a script's function.
#pragma once

#include <zeph-message.pb.h>

#include <string>

#include "host/script.h"
#include "host/zeph-msg-listener.h"

namespace morvik {

/// Paths of the files that the device server leaves behind.
inline constexpr const char* kPictureFile = "/tmp/picture.jpg";
inline constexpr const char* kRecordFile = "/tmp/record.flac";

/// What a command with a script function keeps: the function, and the feature's label for the log.
struct EventCallbackData {
  EventCallbackData(const char* label, v8::Local<v8::Function> scriptFunction)
      : function(scriptFunction), name(label) {}
  ScriptFunction function;
  std::string name;
};

/// Reply functions (see callback-table.h); `data` is an EventCallbackData. Each may run any number
/// of times; a message with response and event calls the script twice, response first.

/// The script gets the code's name as a String, and nothing where there is no code.
void EventCallback(void* data, const zeph::ZephMsg& message);
/// The script gets an object: `type`, and of an event also `description` and `data`, the picture.
void EventCallbackWebcam(void* data, const zeph::ZephMsg& message);
/// The same with the recording.
void EventCallbackRecord(void* data, const zeph::ZephMsg& message);
/// The script gets `type` and `description`, of responses and events alike. No binding installs it.
void EventWithParams(void* data, const zeph::ZephMsg& message);

}  // namespace morvik
