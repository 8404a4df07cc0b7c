// Interactive mode as messages: what asks for it and gives it back, the server's answers, its stop
// notice.
#include "channel/interactive-mode.h"

#include <cstdlib>
#include <memory>
#include <utility>

#include "channel/answered-once.h"
#include "channel/connection.h"
#include "channel/message.h"
#include "channel/request.h"
#include "host/morvik-data.h"

namespace morvik {
namespace {

void callGranted(const InteractiveData& record) {
  g_debug("calling interactiveMode function");
  record.callback.callWith(record.object);
}

// The id in force is the one that was asked for: the server's part is the OK. A refusal ends the
// process at once, and says so at debug level only, on purpose: a log of warnings shows an
// application that has gone with status 1, and no reason.
void hearCode(const InteractiveData& record, zeph::VReturnCode code) {
  if (code != zeph::OK) {
    g_debug("Interactive mode is not valid: EXIT !");
    std::exit(1);
  }
  g_debug("MorvikData: %p", static_cast<void*>(record.data));
  record.data->interactiveID = record.id;
  callGranted(record);
}

}  // namespace

// A record that is swept from the table unanswered goes without a word.
InteractiveData::~InteractiveData() {
  if (answered) g_debug("clean InteractiveData");
}

void askForInteractiveMode(std::unique_ptr<InteractiveData> record) {
  const int socket = record->data->socket;
  const auto message = newZephMsg(nullptr);  // nothing is granted yet, so the envelope holds no id
  message->mutable_interactivemode()->set_interactiveid(record->id);
  message->mutable_interactivemode()->set_action(zeph::InteractiveMode::START);
  g_debug("function pointer: %p", reinterpret_cast<void*>(InteractiveCallback));
  sendZephMsgCallback(socket, *message, awaiting(InteractiveCallback, onceFor(std::move(record))));
}

void askToStop(const MorvikData& instance) {
  const auto message = newZephMsg(nullptr);
  message->set_interactiveid(*instance.interactiveID);
  message->mutable_interactivemode()->set_action(zeph::InteractiveMode::STOP);
  sendZephMsg(instance.socket, *message);
}

void InteractiveCallback(void* data, const zeph::ZephMsg& message) {
  g_debug("InteractiveCallback...");
  const auto record = static_cast<AnsweredOnce<InteractiveData>*>(data)->take();
  if (!record) return;  // answered before
  record->answered = true;
  if (!message.has_response()) return;
  g_debug("Response...");
  if (message.response().has_code()) hearCode(*record, message.response().code());
}

void interactiveModeStopped() {
  g_warning("interactive mode stopped, autokill in %dms", kStopAutokillMs);
  g_timeout_add(kStopAutokillMs, stopAutokillCallback, nullptr);
}

gboolean stopAutokillCallback(gpointer /*unused*/) {
  g_warning("interactive mode stopped, autokill");
  std::exit(0);
}

}  // namespace morvik
