// ping, and morvik.info: the device's own words about itself, passed on as they are.
#include "channel/device-info.h"

#include <glib.h>

#include <memory>

#include "channel/channel-functions.h"
#include "channel/pending-function.h"
#include "channel/request.h"

namespace morvik {
namespace {

v8::Local<v8::Object> infoObject(const TemporaryContext& temporary,
                                 const zeph::MorvikInfoResponse& info) {
  const auto object = temporary.newObject();
  g_debug("InfoMorvikCallbackFunction has_morvikinfo size : %d", info.infos_size());
  for (const zeph::KeyValue& entry : info.infos()) {
    g_debug("morvikinfo key : %s", entry.key().c_str());
    g_debug("morvikinfo value : %s", entry.value().c_str());
    setOwn(object, entry.key(), toScript(entry.value()));
  }
  return object;
}

}  // namespace

void InfoMorvikCallbackFunction(void* data, const zeph::ZephMsg& message) {
  g_message("InfoMorvikCallbackFunction");
  if (!message.has_morvikinfo_response()) {
    g_message("InfoMorvikCallbackFunction: has_morvikinfo_response false");
    return;
  }
  const auto function = static_cast<PendingFunction*>(data)->take();
  if (!function) return;  // answered before
  const TemporaryContext temporary;
  function->call({infoObject(temporary, message.morvikinfo_response())});
}

void ping(const Args& args) {
  Request request(args, "PingFunction", 0);
  if (request.refused()) return;
  g_message("PingFunction");
  request.message().mutable_ping();
  request.send();
}

void info(const Args& args) {
  Request request(args);
  request.expect(args.Length() == 1 && args[0]->IsFunction());
  if (request.refused()) return;
  g_message("ConfigMorvikGet");
  request.expectInteractive();
  if (request.refused()) return;
  request.message().mutable_morvikinfo_query();
  request.sendFor(InfoMorvikCallbackFunction,
                  std::make_shared<PendingFunction>(args[0].As<v8::Function>()));
}

}  // namespace morvik
