// From a result code on the wire to the script's function.
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
// whatever the code is.
void callWithObject(const EventCallbackData& data, const auto& result, Describe describe,
                    const char* path) {
  const TemporaryContext temporary;
  const auto object = temporary.newObject();
  setCode(object, result);
  if (describe == Describe::kYes) setDescription(object, result);
  if (path != nullptr) setOwn(object, "data", newFileObject(temporary.context(), path));
  data.function.call({object});
}

void callWithCode(const EventCallbackData& data, const auto& result, const char* kind) {
  if (!result.has_code()) return;
  g_debug("calling %s function", kind);
  data.function.call({toScript(nameOf(result.code()))});
}

}  // namespace

void EventCallback(void* data, const zeph::ZephMsg& message) {
  const auto& record = *static_cast<const EventCallbackData*>(data);
  g_debug("Event: %s", record.name.c_str());
  if (message.has_response()) callWithCode(record, message.response(), "response");
  if (message.has_event()) callWithCode(record, message.event(), "event");
}

// A response's description does not reach the script, an event's does, on purpose.
void EventCallbackWebcam(void* data, const zeph::ZephMsg& message) {
  const auto& record = *static_cast<const EventCallbackData*>(data);
  g_debug("EventCallbackWebcam Webcam");
  if (message.has_response()) {
    g_debug("has_response Webcam");
    callWithObject(record, message.response(), Describe::kNo, nullptr);
  }
  if (message.has_event()) {
    g_debug("has_event Webcam");
    callWithObject(record, message.event(), Describe::kYes, kPictureFile);
  }
}

void EventCallbackRecord(void* data, const zeph::ZephMsg& message) {
  const auto& record = *static_cast<const EventCallbackData*>(data);
  if (message.has_response()) {
    g_debug("has_response");
    callWithObject(record, message.response(), Describe::kNo, nullptr);
  }
  if (message.has_event()) {
    g_debug("has_event");
    callWithObject(record, message.event(), Describe::kYes, kRecordFile);
  }
}

void EventWithParams(void* data, const zeph::ZephMsg& message) {
  const auto& record = *static_cast<const EventCallbackData*>(data);
  g_debug("EventWithParams: %s", record.name.c_str());
  if (message.has_response()) {
    g_debug("has_response");
    callWithObject(record, message.response(), Describe::kYes, nullptr);
  }
  if (message.has_event()) {
    g_debug("has_event");
    callWithObject(record, message.event(), Describe::kYes, nullptr);
  }
}

}  // namespace morvik
