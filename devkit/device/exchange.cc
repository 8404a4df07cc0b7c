// The answers that handlers give, put into messages.
#include "device/exchange.h"

#include <utility>

#include "device/owned.h"

namespace morvik::devkit {
namespace {

std::string freshId() { return GText(g_uuid_string_random()).get(); }

}  // namespace

bool Exchange::carriesGrant() const {
  return !application_.interactiveId.empty() &&
         request_.interactiveid() == application_.interactiveId;
}

void Exchange::respond(zeph::VReturnCode code, const std::string& description) const {
  zeph::ZephMsg message;
  message.mutable_response()->set_code(code);
  if (!description.empty()) message.mutable_response()->set_description(description);
  reply(std::move(message));
}

void Exchange::reply(zeph::ZephMsg message) const {
  message.set_correlationid(request_.id());
  notify(std::move(message));
}

void Exchange::notify(zeph::ZephMsg message) const {
  message.set_id(freshId());
  device_.outlet_.send(application_.number, message);
}

void Exchange::eventAfter(std::chrono::milliseconds delay, zeph::VReturnCode code) const {
  zeph::ZephMsg message;
  message.set_id(freshId());
  message.set_correlationid(request_.id());
  message.mutable_event()->set_code(code);
  device_.scheduler_.after(delay, [&outlet = device_.outlet_, to = application_.number, message] {
    outlet.send(to, message);
  });
}

}  // namespace morvik::devkit
