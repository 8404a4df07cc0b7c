// morvik.m2m: call, answer, hangup, account, addListener. Requests are fire and forget; how a call
// goes is what the listeners hear.
#include <glib.h>

#include "channel/message.h"
#include "channel/request.h"
#include "devices/devices.h"
#include "devices/listener.h"

namespace morvik {
namespace {

// A request whose count is exact: no function of this feature takes one in the last place.
Request exactRequest(const Args& args, int count) {
  Request request(args);
  request.expect(args.Length() == count);
  request.expectInteractive();
  return request;
}

void call(const Args& args) {
  // Before any check, on purpose: a debug log shows the line for calls that were refused as well,
  // and nothing was sent for those.
  g_debug("call");
  Request request = exactRequest(args, 1);
  const std::string address = request.utf8(0);
  if (request.refused()) return;
  request.message().mutable_m2m()->mutable_call()->set_address(address);
  request.send();
}

// Whatever the script hands over, its truth decides: answer('no') accepts the call.
void answer(const Args& args) {
  Request request = exactRequest(args, 1);
  if (request.refused()) return;
  const bool accept = args[0]->BooleanValue(args.GetIsolate());
  request.message().mutable_m2m()->mutable_answer()->set_accept(accept);
  request.send();
}

void hangup(const Args& args) {
  Request request = exactRequest(args, 0);
  if (request.refused()) return;
  request.message().mutable_m2m()->mutable_hangup();
  request.send();
}

// The password stands in the log with everything else that is sent, at debug level.
void account(const Args& args) {
  Request request = exactRequest(args, 4);
  zeph::M2m::Account account;
  account.set_sipid(request.utf8(0));
  account.set_sipdomain(request.utf8(1));
  account.set_sippassword(request.utf8(2));
  account.set_stunserver(request.utf8(3));
  if (request.refused()) return;
  *request.message().mutable_m2m()->mutable_account() = account;
  request.send();
}

class M2mMsgCallback final : public ScriptListener {
 public:
  using ScriptListener::ScriptListener;

  bool onMessage(const zeph::ZephMsg& message) override {
    if (!message.has_m2mcallback()) return true;
    const TemporaryContext temporary;
    g_message("M2m: M2mMsgCallback");
    const auto object = temporary.newObject();
    setOwn(object, "type", toScript(nameOf(message.m2mcallback().type())));
    setOwn(object, "correspondant", toScript(message.m2mcallback().correspondant()));
    return function.call({object});
  }
};

constexpr Binding kFunctions[] = {{"call", call},
                                  {"answer", answer},
                                  {"hangup", hangup},
                                  {"account", account},
                                  {"addListener", addListener<M2mMsgCallback>}};

}  // namespace

std::span<const Binding> m2mFunctions() { return kFunctions; }

}  // namespace morvik
