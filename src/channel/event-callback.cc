// From a result code on the wire to the script's function. Nothing is taken away after an answer:
// one command may be answered any number of times, "OK" first and "TERMINATED" later.
#include "channel/event-callback.h"

#include <glib.h>

#include "channel/message.h"
#include "host/data-object.h"

namespace morvik {
namespace {

// Which object fields a step fills beside `type`.
enum class Describe { kNo, kYes };

void setCode(v8::Local<v8::Object> object, const auto& result) {
  if (result.has_code()) setOwn(object, "type", toScript(nameOf(result.code())));
}

void setDescription(v8::Local<v8::Object> object, const auto& result) {
  if (result.has_description()) setOwn(object, "description", toScript(result.description()));
}

// Hands the script an object for one result. `path`, when not null, adds the file as `data`,
// whatever the code is: after a failure as well the script gets a file, perhaps an older one. Each
// object is built in a context of its own, some 160 KB that live as long as the script keeps it.
void callWithObject(const EventCallbackData& data, const auto& result, Describe describe,
                    const char* path) {
  const TemporaryContext temporary;
  const auto object = temporary.newObject();
  setCode(object, result);
  if (describe == Describe::kYes) setDescription(object, result);
  if (path != nullptr) setOwn(object, "data", newDataObject(temporary.context(), path));
  data.function.call({object});
}

// Without a code the script is not called at all; where an object is promised, it gets an empty
// one.
void callWithCode(const EventCallbackData& data, const auto& result, const char* kind) {
  if (!result.has_code()) return;
  g_debug("calling %s function", kind);
  data.function.call({toScript(nameOf(result.code()))});
}

// What an answer with objects writes and hands over, for a response and for an event.
struct ObjectSteps {
  const char* responseLine;
  Describe describeResponse;
  const char* eventLine;
  const char* path;  // of the file that an event stands for, or null
};

// A response's description does not reach the script, an event's does, on purpose: a refusal tells
// its code alone, and the reason stands in the log, in the message as it was received.
constexpr ObjectSteps kPhoto = {"has_response Webcam", Describe::kNo, "has_event Webcam",
                                kPictureFile};
constexpr ObjectSteps kRecording = {"has_response", Describe::kNo, "has_event", kRecordFile};
constexpr ObjectSteps kDescribed = {"has_response", Describe::kYes, "has_event", nullptr};

void callWithObjects(const EventCallbackData& data, const zeph::ZephMsg& message,
                     const ObjectSteps& steps) {
  if (message.has_response()) {
    g_debug("%s", steps.responseLine);
    callWithObject(data, message.response(), steps.describeResponse, nullptr);
  }
  if (message.has_event()) {
    g_debug("%s", steps.eventLine);
    callWithObject(data, message.event(), Describe::kYes, steps.path);
  }
}

const EventCallbackData& recordOf(void* data) { return *static_cast<EventCallbackData*>(data); }

}  // namespace

void EventCallback(void* data, const zeph::ZephMsg& message) {
  const EventCallbackData& record = recordOf(data);
  g_debug("Event: %s", record.name.c_str());
  if (message.has_response()) callWithCode(record, message.response(), "response");
  if (message.has_event()) callWithCode(record, message.event(), "event");
}

void EventCallbackWebcam(void* data, const zeph::ZephMsg& message) {
  g_debug("EventCallbackWebcam Webcam");
  callWithObjects(recordOf(data), message, kPhoto);
}

void EventCallbackRecord(void* data, const zeph::ZephMsg& message) {
  callWithObjects(recordOf(data), message, kRecording);
}

void EventWithParams(void* data, const zeph::ZephMsg& message) {
  g_debug("EventWithParams: %s", recordOf(data).name.c_str());
  callWithObjects(recordOf(data), message, kDescribed);
}

}  // namespace morvik
