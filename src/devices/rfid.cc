// morvik.rfid: addListener. Hears which tag came to the reader or left it.
#include <glib.h>

#include "channel/message.h"
#include "devices/devices.h"
#include "devices/listener.h"

namespace morvik {
namespace {

v8::Local<v8::Value> number(std::int32_t value) {
  return v8::Integer::New(v8::Isolate::GetCurrent(), value);
}

// `id` is always there; what the reader does not know is no property at all. The object lives in a
// context of its own, some 160 KB for as long as the script keeps it.
v8::Local<v8::Object> tagObject(const TemporaryContext& temporary, const zeph::RfidCallback& tag) {
  const auto object = temporary.newObject();
  setOwn(object, "id", toScript(tag.id()));
  if (tag.has_direction()) setOwn(object, "direction", toScript(nameOf(tag.direction())));
  if (tag.has_app()) setOwn(object, "app", number(tag.app()));
  if (tag.has_type()) setOwn(object, "type", toScript(nameOf(tag.type())));
  if (tag.has_pict()) setOwn(object, "pict", number(tag.pict()));
  if (tag.has_color()) setOwn(object, "color", toScript(nameOf(tag.color())));
  // The tag's bytes become a text that ends at their first zero byte, on purpose: of binary content
  // the script sees the part in front of it, and nothing tells it that there is more.
  if (tag.has_content()) setOwn(object, "content", toScript(tag.content().c_str()));
  return object;
}

class RfidMsgCallback final : public ScriptListener {
 public:
  using ScriptListener::ScriptListener;

  bool onMessage(const zeph::ZephMsg& message) override {
    if (!message.has_rfidcallback()) return true;
    const zeph::RfidCallback& tag = message.rfidcallback();
    g_message("RFID: RfidMsgCallback");
    g_message("RFID: RfidMsgCallback : %s", tag.id().c_str());
    const TemporaryContext temporary;
    return function.call({tagObject(temporary, tag)});
  }
};

constexpr Binding kFunctions[] = {{"addListener", addListener<RfidMsgCallback>}};

}  // namespace

std::span<const Binding> rfidFunctions() { return kFunctions; }

}  // namespace morvik
