// Interactive mode: any number of applications may hold it at once, each under the id that it
// chose.
#include "device/exchange.h"
#include "device/features/features.h"
#include "device/json.h"
#include "device/stimulation.h"
#include "device/text.h"

namespace morvik::devkit {
namespace {

void grant(Device& device, AppNumber application, const std::string& id) {
  device.changeApplication(application, [&](Application& app) { app.interactiveId = id; });
}

// The stop notice is no reply: a device may send it at any time, without being asked.
void takeBack(Device& device, const std::vector<AppNumber>& applications) {
  for (const AppNumber number : applications) grant(device, number, "");
  zeph::ZephMsg notice;
  notice.mutable_interactivemode()->set_action(zeph::InteractiveMode::STOP);
  device.sendTo(applications, notice);
}

void start(const Exchange& exchange) {
  const std::string& id = exchange.request().interactivemode().interactiveid();
  if (id.empty()) {
    exchange.respond(zeph::ERROR, "interactive mode needs an interactive id");
    return;
  }
  grant(exchange.device(), exchange.application().number, id);
  exchange.respond(zeph::OK);
}

void stop(const Exchange& exchange) {
  if (!exchange.carriesGrant()) {
    exchange.respond(zeph::BAD_INTERACTIVEID, "not the interactive id that was granted");
    return;
  }
  takeBack(exchange.device(), {exchange.application().number});
}

void answer(const Exchange& exchange) {
  const zeph::InteractiveMode& mode = exchange.request().interactivemode();
  if (!mode.has_action()) {
    exchange.respond(zeph::ERROR, "interactive mode needs an action");
  } else if (mode.action() == zeph::InteractiveMode::START) {
    start(exchange);
  } else {
    stop(exchange);
  }
}

void stopFromOutside(Stimulation& stimulation) {
  if (!stimulation.understood()) return;
  const std::vector<AppNumber> targets = stimulation.targets();
  takeBack(stimulation.device(), targets);
  if (targets.empty()) stimulation.tellNobodyHears();
}

std::string inWords(const zeph::ZephMsg& message) {
  const auto& mode = message.interactivemode();
  const std::string action =
      mode.has_action() ? zeph::InteractiveMode::Action_Name(mode.action()) : "without an action";
  return "interactive mode " + action +
         (mode.has_interactiveid() ? ' ' + printable(mode.interactiveid()) : "");
}

void showApplication(const Application& application, JsonObject& shown) {
  if (!application.interactiveId.empty()) shown.text("interactiveId", application.interactiveId);
}

constexpr Command kCommands[] = {
    {zeph::ZephMsg::kInteractiveModeFieldNumber, Command::Needs::kNothing, answer}};
constexpr Stimulus kStimuli[] = {{"stop",
                                  Stimulus::Group::kFault,
                                  Stimulus::For::kApplications,
                                  {},
                                  "stop interactive mode",
                                  stopFromOutside}};
constexpr Words kWords[] = {{zeph::ZephMsg::kInteractiveModeFieldNumber, inWords}};

}  // namespace

constinit const Feature kInteractiveModeFeature = {.commands = kCommands,
                                                   .stimuli = kStimuli,
                                                   .words = kWords,
                                                   .showApplication = showApplication};

}  // namespace morvik::devkit
