#include "support/whole/whole-application.h"

#include <sys/socket.h>

#include <cstdlib>

#include "channel/frame.h"
#include "channel/pump.h"
#include "host/app-context.h"
#include "host/globals.h"
#include "host/object-tree.h"
#include "support/unit/granted.h"

namespace morvik::test {

void require(bool condition) {
  if (!condition) std::abort();
}

WholeApplication::WholeApplication() {
  int ends[2];
  require(socketpair(AF_UNIX, SOCK_STREAM, 0, ends) == 0);
  instance_.socket = ends[0];
  device_ = ends[1];
  instance_.interactiveID = "3f0a0f5e-8a38-4f9e-b0a0-0a8a1f3d3a11";
  instance_.options = &options_;
  instance_.descriptor = granted(gatedNames());
  context_ = newAppContext(globals());
  context_->Enter();
  context_->Global()->SetAlignedPointerInInternalField(0, &instance_);
}

v8::Local<v8::ObjectTemplate> WholeApplication::globals() {
  const auto global = buildGlobalTemplate();
  const auto morvik = v8::ObjectTemplate::New(isolate_);
  addMorvikFunctions(morvik);
  buildDeviceTree(global, morvik, *instance_.descriptor);
  addGlobals(global, morvik, instance_);
  return global;
}

void WholeApplication::run(const char* script) {
  const ScriptRun run(isolate_);
  const auto compiled = v8::Script::Compile(context_, toScript(script)).ToLocalChecked();
  require(!compiled->Run(context_).IsEmpty());
}

ScriptFunction WholeApplication::function(const char* name) const {
  const auto value = context_->Global()->Get(context_, toScript(name)).ToLocalChecked();
  return ScriptFunction(value.As<v8::Function>());
}

void WholeApplication::hear(const zeph::ZephMsg& message) {
  const std::string body = message.SerializePartialAsString();
  const auto header = frameHeader(static_cast<std::uint32_t>(body.size()));
  const std::string frame = std::string(header.begin(), header.end()) + body;
  require(send(device_, frame.data(), frame.size(), 0) == static_cast<ssize_t>(frame.size()));
  onSocketIdle(&instance_);
}

void WholeApplication::rest() { onSocketIdle(&instance_); }

zeph::ZephMsg WholeApplication::sent() {
  const ssize_t length = recv(device_, bytes_.data(), bytes_.size(), 0);
  require(length > static_cast<ssize_t>(kFrameHeaderSize));
  zeph::ZephMsg message;
  message.ParsePartialFromArray(bytes_.data() + kFrameHeaderSize,
                                static_cast<int>(length) - static_cast<int>(kFrameHeaderSize));
  return message;
}

zeph::ZephMsg deviceMessage() {
  zeph::ZephMsg message;
  message.set_id("0f4d5c1e-51b4-4b7e-9a3c-0123456789ab");
  return message;
}

}  // namespace morvik::test
