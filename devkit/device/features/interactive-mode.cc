// Interactive mode: any number of applications may hold it at once, each under the id that it
// chose.
#include "device/handlers.h"

namespace morvik::devkit {
namespace {

void start(const Exchange& exchange) {
  const std::string& id = exchange.request().interactivemode().interactiveid();
  if (id.empty()) {
    exchange.respond(zeph::ERROR, "interactive mode needs an interactive id");
    return;
  }
  exchange.application().interactiveId = id;
  exchange.respond(zeph::OK);
}

// The stop notice is no reply: a device may send it at any time, without being asked.
void takeBack(Device& device, Application& application) {
  application.interactiveId.clear();
  zeph::ZephMsg notice;
  notice.mutable_interactivemode()->set_action(zeph::InteractiveMode::STOP);
  device.send(application.number, notice);
}

void stop(const Exchange& exchange) {
  if (!exchange.carriesGrant()) {
    exchange.respond(zeph::BAD_INTERACTIVEID, "not the interactive id that was granted");
    return;
  }
  takeBack(exchange.device(), exchange.application());
}

}  // namespace

void answerInteractiveMode(const Exchange& exchange) {
  const zeph::InteractiveMode& mode = exchange.request().interactivemode();
  if (!mode.has_action()) {
    exchange.respond(zeph::ERROR, "interactive mode needs an action");
  } else if (mode.action() == zeph::InteractiveMode::START) {
    start(exchange);
  } else {
    stop(exchange);
  }
}

void stopInteractiveMode(Stimulation& stimulation) {
  if (!stimulation.understood()) return;
  const std::vector<AppNumber> targets = stimulation.targets();
  for (const AppNumber number : targets) {
    takeBack(stimulation.device(), *stimulation.device().application(number));
  }
  if (targets.empty()) stimulation.tellNobodyHears();
}

}  // namespace morvik::devkit
