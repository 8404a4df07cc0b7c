// The ear for words: a grammar is listened for until somebody says something, or for a while.
#include <chrono>

#include "device/exchange.h"
#include "device/features/features.h"
#include "device/stimulation.h"
#include "device/text.h"
#include "device/view.h"

namespace morvik::devkit {
namespace {

constexpr std::chrono::seconds kPatience{30};
constexpr char kNobodyListens[] =
    "nobody listens for words; an application does so once it has asked for a grammar";

void answer(const Exchange& exchange) {
  const zeph::Asr& asr = exchange.request().asr();
  if (asr.dictionary().empty()) {
    exchange.respond(zeph::ERROR, "there is no grammar to listen for");
    return;
  }
  exchange.device().change("listening", [&](DeviceState& state) {
    state.listening = {asr.dictionary(0), asr.lang()};
  });
  exchange.undertake(Work::kAsr, kPatience, [](zeph::ZephMsg& event) {
    if (event.event().code() == zeph::TERMINATED) event.mutable_event()->set_code(zeph::TIMEOUT);
  });
  exchange.respond(zeph::OK);
}

// The result answers the request that the device listens for. An application takes one result
// only, so nothing more is said about that request.
void hear(Stimulation& stimulation, zeph::ZephMsg result) {
  Device& device = stimulation.device();
  const auto listening = device.works().find(Work::kAsr);
  const bool heard = listening && stimulation.isFor(listening->application) &&
                     device.application(listening->application) != nullptr;
  if (!heard) stimulation.refuse(kNobodyListens);
  if (!stimulation.understood()) return;
  result.set_correlationid(device.take(Work::kAsr)->request);
  device.send(listening->application, std::move(result));
}

void hearWords(Stimulation& stimulation) {
  zeph::ZephMsg result;
  auto* recognition = result.mutable_asrcallback()->add_recognition();
  recognition->set_text(stimulation.text("text"));
  recognition->set_confident(stimulation.number("confident"));
  if (stimulation.has("semantic")) recognition->set_semantic(stimulation.text("semantic"));
  hear(stimulation, std::move(result));
}

void hearNoise(Stimulation& stimulation) {
  zeph::ZephMsg result;
  result.mutable_asrcallback();
  hear(stimulation, std::move(result));
}

std::string atAGlance(const DeviceView& view) {
  const Underway* underway = underwayIn(view, Work::kAsr);
  return underway == nullptr ? ""
                             : "for " + timeLeftOf(view, *underway) + ":" +
                                   quotedIfAny(view.state.listening.grammar);
}

void show(const DeviceView& view, JsonObject& whole) {
  const Listening& listening = view.state.listening;
  whole.object("listening").text("grammar", listening.grammar).text("lang", listening.lang);
}

constexpr Argument kRecognition[] = {
    {.name = "text", .usage = "TEXT"},
    {.name = "confident", .usage = "CONFIDENT", .kind = Argument::Kind::kNumber},
    {.name = "semantic", .usage = "SEMANTIC", .needed = false},
};

constexpr Command kCommands[] = {{zeph::ZephMsg::kAsrFieldNumber, Command::Needs::kGrant, answer}};
constexpr Stimulus kStimuli[] = {
    {"recognition", Stimulus::Group::kAround, Stimulus::For::kApplications, kRecognition,
     "say something to the application that listens; SEMANTIC is XML", hearWords},
    {"noise",
     Stimulus::Group::kAround,
     Stimulus::For::kApplications,
     {},
     "answer the application that listens with a result without a recognition",
     hearNoise},
};
constexpr Glance kGlances[] = {{"listening", atAGlance}};

}  // namespace

constinit const Feature kAsrFeature = {
    .commands = kCommands, .stimuli = kStimuli, .glances = kGlances, .show = show};

}  // namespace morvik::devkit
