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

// In the order in which the descriptor is asked: first these, then kWeb.
constexpr GatedObject kDevices[] = {
    {"led", ledFunctions},         {"ears", earsFunctions},
    {"tts", ttsFunctions},         {"webcam", webcamFunctions},
    {"asr", asrFunctions},         {"multimedia", multimediaFunctions},
    {"button", buttonFunctions},   {"rfid", rfidFunctions},
    {"m2m", m2mFunctions},         {"message", messageFunctions},
    {"contact", contactFunctions}, {"serial", serialFunctions},
    {"dock", dockFunctions},
};

constexpr GatedObject kWeb[] = {{"http", httpFunctions}};

void addObject(v8::Local<v8::ObjectTemplate> parent, const char* name,
               std::span<const Binding> functions) {
  const auto target = v8::ObjectTemplate::New(v8::Isolate::GetCurrent());
  bind(target, functions);
  parent->Set(v8::Isolate::GetCurrent(), name, target);
}

// Without its access name an object is absent: a script that touches it meets undefined, and an
// exception of the engine's only when it goes on.
void addGranted(v8::Local<v8::ObjectTemplate> parent, const Descriptor& descriptor,
                std::span<const GatedObject> objects) {
  for (const auto& [access, functions] : objects)
    if (hasAccess(descriptor, access)) addObject(parent, access, functions());
}

}  // namespace

void buildDeviceTree(v8::Local<v8::ObjectTemplate> global, v8::Local<v8::ObjectTemplate> morvik,
                     const Descriptor& descriptor) {
  addGranted(morvik, descriptor, kDevices);
  // There for everyone, because it is empty until the server has sent credentials; which of its
  // services a script then gets is asked of the descriptor.
  addObject(global, "social", socialFunctions());
  addGranted(global, descriptor, kWeb);
}

std::vector<std::string> gatedNames() {
  std::vector<std::string> names;
  for (const GatedObject& device : kDevices) names.emplace_back(device.access);
  for (const GatedObject& web : kWeb) names.emplace_back(web.access);
  return names;
}

}  // namespace morvik
