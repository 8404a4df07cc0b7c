// The ear for words: a grammar is listened for until somebody says something, or for a while.
#include <chrono>

#include "device/handlers.h"

namespace morvik::devkit {
namespace {

constexpr std::chrono::seconds kPatience{30};
constexpr char kNobodyListens[] =
    "nobody listens for words; an application does so once it has asked for a grammar";

// The result answers the request that the device listens for. An application takes one result
// only, so nothing more is said about that request.
void hear(Stimulation& stimulation, zeph::ZephMsg result) {
  Device& device = stimulation.device();
  const std::optional<AppNumber> listener = device.whoseWork(Work::kAsr);
  const bool heard =
      listener && stimulation.isFor(*listener) && device.application(*listener) != nullptr;
  if (!heard) stimulation.refuse(kNobodyListens);
  if (!stimulation.understood()) return;
  result.set_correlationid(device.take(Work::kAsr)->request);
  device.send(*listener, std::move(result));
}

}  // namespace

void answerAsr(const Exchange& exchange) {
  const zeph::Asr& asr = exchange.request().asr();
  if (asr.dictionary().empty()) {
    exchange.respond(zeph::ERROR, "there is no grammar to listen for");
    return;
  }
  exchange.state().listening = {asr.dictionary(0), asr.lang()};
  exchange.undertake(Work::kAsr, kPatience, [](zeph::ZephMsg& event) {
    if (event.event().code() == zeph::TERMINATED) event.mutable_event()->set_code(zeph::TIMEOUT);
  });
  exchange.respond(zeph::OK);
}

void hearWords(Stimulation& stimulation) {
  zeph::ZephMsg result;
  auto* recognition = result.mutable_asrcallback()->add_recognition();
  recognition->set_text(stimulation.text("TEXT"));
  recognition->set_confident(stimulation.number("CONFIDENT"));
  if (stimulation.hasMore()) recognition->set_semantic(stimulation.text("SEMANTIC"));
  hear(stimulation, std::move(result));
}

void hearNoise(Stimulation& stimulation) {
  zeph::ZephMsg result;
  result.mutable_asrcallback();
  hear(stimulation, std::move(result));
}

}  // namespace morvik::devkit
