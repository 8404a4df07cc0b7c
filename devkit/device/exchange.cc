// The answers that commands get, put into messages.
#include "device/exchange.h"

#include <utility>

namespace morvik::devkit {

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
  device_.send(application_.number, std::move(message));
}

void Exchange::doubt(Doubt::About about, const std::string& value, const std::string& text) const {
  device_.doubt(application_.number, {about, value, text});
}

void Exchange::undertake(Work work, std::chrono::milliseconds length, Order::AtEnd atEnd) const {
  device_.begin(work, Order{application_.number, request_.id(), std::move(atEnd)}, length);
}

}  // namespace morvik::devkit
