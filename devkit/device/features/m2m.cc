// Calls. Applications of this device can call each other: one that gave an account has the address
// sipId@sipDomain, and answers to sipId alone as well; application 2 is always app2 too. Any other
// address is somebody outside, and the world says what that one does.
#include <chrono>

#include "device/exchange.h"
#include "device/features/features.h"
#include "device/json.h"
#include "device/stimulation.h"

namespace morvik::devkit {
namespace {

using State = Call::State;
using Type = zeph::M2mCallback;

constexpr std::chrono::seconds kLongestRinging{30};

// Who is who, and who is in a call with whom.

std::string nameOf(AppNumber number) { return "app" + std::to_string(number); }

std::string addressOf(const Application& application) {
  if (application.sipId.empty()) return nameOf(application.number);
  return application.sipDomain.empty() ? application.sipId
                                       : application.sipId + '@' + application.sipDomain;
}

bool answersTo(const Application& application, const std::string& address) {
  constexpr const char* kScheme = "sip:";
  if (address.starts_with(kScheme)) return answersTo(application, address.substr(4));
  return address == nameOf(application.number) || address == addressOf(application) ||
         (!application.sipId.empty() && address == application.sipId);
}

const Application* whoAnswersTo(const Device& device, const std::string& address) {
  for (const auto& [number, application] : device.applications()) {
    if (answersTo(application, address)) return &application;
  }
  return nullptr;
}

void enter(Device& device, AppNumber number, State state, const std::string& correspondant,
           AppNumber peer) {
  device.changeApplication(number, [&](Application& application) {
    application.call = {state, correspondant, peer, application.call.turn + 1};
  });
}

// What is told of it.

void tell(Device& device, AppNumber to, zeph::M2mCallback::Type type,
          const std::string& correspondant) {
  zeph::ZephMsg message;
  message.mutable_m2mcallback()->set_type(type);
  message.mutable_m2mcallback()->set_correspondant(correspondant);
  device.send(to, message);
}

// Ends the call of an application, if it has one, for both ends.
void endCall(Device& device, AppNumber number) {
  const Application* application = device.application(number);
  if (application == nullptr || application->call.state == State::kNone) return;
  const Call ended = application->call;
  enter(device, number, State::kNone, "", 0);
  tell(device, number, Type::TERMINATED, ended.correspondant);
  endCall(device, ended.peer);
}

void applicationLeft(Device& device, const Application& gone) { endCall(device, gone.call.peer); }

void ringNoLongerThan(Device& device, AppNumber number, std::chrono::milliseconds length) {
  const unsigned turn = device.application(number)->call.turn;
  device.after(length, [&device, number, turn] {
    const Application* found = device.application(number);
    if (found != nullptr && found->call.turn == turn) endCall(device, number);
  });
}

// Both ends hear it, each with the other's address.
void beginTalk(Device& device, AppNumber number) {
  const Call call = device.application(number)->call;
  enter(device, number, State::kTalking, call.correspondant, call.peer);
  tell(device, number, Type::BEGINNING, call.correspondant);
  const Application* peer = device.application(call.peer);
  if (peer != nullptr && peer->call.state != State::kTalking) beginTalk(device, peer->number);
}

// What applications ask for.

// Commands of this kind carry no function of the script's, so a call that comes to nothing is told
// as one that ended.
void refuseCall(const Exchange& exchange, const std::string& why) {
  exchange.respond(zeph::BUSY, why);
  tell(exchange.device(), exchange.application().number, Type::TERMINATED,
       exchange.request().m2m().call().address());
}

// The caller hears nothing but that it rings; one of ours hears who calls.
void ring(Device& device, const Application& caller, const Application* callee,
          const std::string& address) {
  enter(device, caller.number, State::kCalling, address, callee != nullptr ? callee->number : 0);
  ringNoLongerThan(device, caller.number, kLongestRinging);
  if (callee == nullptr) return;
  enter(device, callee->number, State::kRinging, addressOf(caller), caller.number);
  tell(device, callee->number, Type::INCOMING, callee->call.correspondant);
}

void call(const Exchange& exchange, const std::string& address) {
  const Application& caller = exchange.application();
  const Application* callee = whoAnswersTo(exchange.device(), address);
  if (caller.call.state != State::kNone) {
    exchange.respond(zeph::BUSY, "in a call already");
  } else if (callee != nullptr && (callee == &caller || callee->call.state != State::kNone)) {
    refuseCall(exchange, address + " is in a call");
  } else {
    exchange.respond(zeph::OK);
    ring(exchange.device(), caller, callee, address);
  }
}

void answerCall(const Exchange& exchange, bool accept) {
  const Application& application = exchange.application();
  if (application.call.state != State::kRinging) {
    exchange.respond(zeph::ERROR, "nobody calls");
    return;
  }
  exchange.respond(zeph::OK);
  if (accept) {
    beginTalk(exchange.device(), application.number);
  } else {
    endCall(exchange.device(), application.number);
  }
}

void hangUp(const Exchange& exchange) {
  if (exchange.application().call.state == State::kNone) {
    exchange.respond(zeph::ERROR, "there is no call");
    return;
  }
  exchange.respond(zeph::OK);
  endCall(exchange.device(), exchange.application().number);
}

// Two applications with one address could not be told apart.
void takeAccount(const Exchange& exchange, const zeph::M2m::Account& account) {
  const Application* holder = whoAnswersTo(exchange.device(), account.sipid());
  if (account.sipid().empty() || (holder != nullptr && holder != &exchange.application())) {
    exchange.respond(zeph::ERROR, "the address \"" + account.sipid() + "\" is not free");
    return;
  }
  exchange.device().changeApplication(exchange.application().number, [&](Application& application) {
    application.sipId = account.sipid();
    application.sipDomain = account.sipdomain();
  });
  exchange.respond(zeph::OK);
}

void answer(const Exchange& exchange) {
  const zeph::M2m& m2m = exchange.request().m2m();
  if (m2m.has_call()) {
    call(exchange, m2m.call().address());
  } else if (m2m.has_answer()) {
    answerCall(exchange, m2m.answer().accept());
  } else if (m2m.has_hangup()) {
    hangUp(exchange);
  } else if (m2m.has_account()) {
    takeAccount(exchange, m2m.account());
  } else {
    exchange.respond(zeph::ERROR, "neither a call nor an answer, a hangup or an account");
  }
}

// What somebody outside does.

void doFromOutside(Device& device, AppNumber number, zeph::M2mCallback::Type type,
                   const std::string& who) {
  const Call now = device.application(number)->call;
  const bool idle = now.state == State::kNone;
  if (type == Type::INCOMING) {
    enter(device, number, State::kRinging, who, 0);
    ringNoLongerThan(device, number, kLongestRinging);
    tell(device, number, type, who);
  } else if (type == Type::BEGINNING) {
    if (idle || !who.empty()) enter(device, number, State::kCalling, who, now.peer);
    beginTalk(device, number);
  } else if (idle) {
    tell(device, number, type, who);
  } else {
    endCall(device, number);
  }
}

void refuseWhatMakesNoSense(Stimulation& stimulation, zeph::M2mCallback::Type type,
                            const std::string& who) {
  const bool named = stimulation.has("who");
  if (type == Type::INCOMING && !named) stimulation.refuse("WHO is missing");
  for (const AppNumber number : stimulation.targets()) {
    const bool idle = stimulation.device().application(number)->call.state == State::kNone;
    if (type == Type::INCOMING && !idle)
      stimulation.refuse(nameOf(number) + " is in a call, which call TERMINATED ends");
    if (idle && who.empty())
      stimulation.refuse(nameOf(number) + " is in no call, so WHO is missing");
  }
}

void callFromOutside(Stimulation& stimulation) {
  const auto type = stimulation.choice<zeph::M2mCallback::Type>("type");
  const std::string who = stimulation.text("who");
  refuseWhatMakesNoSense(stimulation, type, who);
  if (!stimulation.understood()) return;
  const std::vector<AppNumber> targets = stimulation.targets();
  for (const AppNumber number : targets) doFromOutside(stimulation.device(), number, type, who);
  if (targets.empty()) stimulation.tellNobodyHears();
}

void showApplication(const Application& application, JsonObject& shown) {
  constexpr const char* kStates[] = {"none", "calling", "ringing", "talking"};
  shown.text("address", addressOf(application));
  const Call& call = application.call;
  if (call.state == State::kNone) return;
  JsonObject told = shown.object("call");
  told.text("state", kStates[static_cast<std::size_t>(call.state)])
      .text("with", call.correspondant);
  if (call.peer != 0) told.number("peer", call.peer);
}

constexpr Argument kCall[] = {
    {.name = "type",
     .what = "what happened",
     .kind = Argument::Kind::kChoice,
     .choices = namesOf<zeph::M2mCallback::Type_descriptor>},
    {.name = "who", .usage = "WHO", .needed = false},
};

constexpr Command kCommands[] = {{zeph::ZephMsg::kM2MFieldNumber, Command::Needs::kGrant, answer}};
constexpr Stimulus kStimuli[] = {
    {"call", Stimulus::Group::kAround, Stimulus::For::kApplications, kCall,
     "call from outside, take a call up, or end it; WHO may be left out in a call", callFromOutside,
     "INCOMING WHO|BEGINNING [WHO]|TERMINATED [WHO]"}};

}  // namespace

constinit const Feature kM2mFeature = {.commands = kCommands,
                                       .stimuli = kStimuli,
                                       .showApplication = showApplication,
                                       .applicationLeft = applicationLeft};

}  // namespace morvik::devkit
