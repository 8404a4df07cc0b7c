// What the device says about itself, passed on as it is: the host knows none of its keys.
#include "channel/device-info.h"

#include <glib.h>

#include "channel/answered-once.h"
#include "host/script.h"

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
  const auto function = static_cast<AnsweredOnce<ScriptFunction>*>(data)->take();
  if (!function) return;  // answered before
  const TemporaryContext temporary;
  function->call({infoObject(temporary, message.morvikinfo_response())});
}

}  // namespace morvik
