// The one explicit list of what a script can be granted.
#include "host/object-tree.h"

#include "devices/devices.h"
#include "host/script.h"
#include "web/web.h"

namespace morvik {
namespace {

struct GatedObject {
  const char* access;  // also the object's name
  std::span<const Binding> (*functions)();
};

// In the order in which the descriptor is asked.
constexpr GatedObject kDevices[] = {
    {"led", ledFunctions},         {"ears", earsFunctions},
    {"tts", ttsFunctions},         {"webcam", webcamFunctions},
    {"asr", asrFunctions},         {"multimedia", multimediaFunctions},
    {"button", buttonFunctions},   {"rfid", rfidFunctions},
    {"m2m", m2mFunctions},         {"message", messageFunctions},
    {"contact", contactFunctions}, {"serial", serialFunctions},
    {"dock", dockFunctions},
};

void addObject(v8::Local<v8::ObjectTemplate> parent, const char* name,
               std::span<const Binding> functions) {
  const auto target = v8::ObjectTemplate::New(v8::Isolate::GetCurrent());
  bind(target, functions);
  parent->Set(v8::Isolate::GetCurrent(), name, target);
}

// Without its access name an object is absent: a script that touches it meets undefined, and an
// exception of the engine's only when it goes on.
void addIfGranted(v8::Local<v8::ObjectTemplate> parent, const Descriptor& descriptor,
                  const GatedObject& object) {
  if (hasAccess(descriptor, object.access)) addObject(parent, object.access, object.functions());
}

}  // namespace

void buildDeviceTree(v8::Local<v8::ObjectTemplate> global, v8::Local<v8::ObjectTemplate> morvik,
                     const Descriptor& descriptor) {
  for (const GatedObject& device : kDevices) addIfGranted(morvik, descriptor, device);
  // There for everyone, because it is empty until the server has sent credentials; which of its
  // services a script then gets is asked of the descriptor.
  addObject(global, "social", socialFunctions());
  addIfGranted(global, descriptor, {"http", httpFunctions});
}

}  // namespace morvik
