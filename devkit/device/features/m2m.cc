// Calls. Applications of this device can call each other: one that gave an account has the address
// sipId@sipDomain, and answers to sipId alone as well; application 2 is always app2 too. Any other
// address is somebody outside, and the command input says what that one does.
#include <chrono>

#include "device/handlers.h"

namespace morvik::devkit {
namespace {

using State = Call::State;
using Type = zeph::M2mCallback;

constexpr std::chrono::seconds kLongestRinging{30};

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

Application* whoAnswersTo(Device& device, const std::string& address) {
  for (const auto& [number, application] : device.applications()) {
    if (answersTo(application, address)) return device.application(number);
  }
  return nullptr;
}

void tell(Device& device, AppNumber to, zeph::M2mCallback::Type type,
          const std::string& correspondant) {
  zeph::ZephMsg message;
  message.mutable_m2mcallback()->set_type(type);
  message.mutable_m2mcallback()->set_correspondant(correspondant);
  device.send(to, message);
}

void enter(Application& application, State state, const std::string& correspondant,
           AppNumber peer) {
  application.call = {state, correspondant, peer, application.call.turn + 1};
}

void ringNoLongerThan(Device& device, const Application& application,
                      std::chrono::milliseconds length) {
  const AppNumber number = application.number;
  const unsigned turn = application.call.turn;
  device.after(length, [&device, number, turn] {
    const Application* found = device.application(number);
    if (found != nullptr && found->call.turn == turn) endCall(device, number);
  });
}

// Both ends hear it, each with the other's address.
void beginTalk(Device& device, Application& application) {
  enter(application, State::kTalking, application.call.correspondant, application.call.peer);
  tell(device, application.number, Type::BEGINNING, application.call.correspondant);
  Application* peer = device.application(application.call.peer);
  if (peer != nullptr && peer->call.state != State::kTalking) beginTalk(device, *peer);
}

// Commands of this kind carry no function of the script's, so a call that comes to nothing is told
// as one that ended.
void refuseCall(const Exchange& exchange, const std::string& why) {
  exchange.respond(zeph::BUSY, why);
  tell(exchange.device(), exchange.application().number, Type::TERMINATED,
       exchange.request().m2m().call().address());
}

void call(const Exchange& exchange, const std::string& address) {
  Application& caller = exchange.application();
  Application* callee = whoAnswersTo(exchange.device(), address);
  if (caller.call.state != State::kNone) {
    exchange.respond(zeph::BUSY, "in a call already");
    return;
  }
  if (callee != nullptr && (callee == &caller || callee->call.state != State::kNone)) {
    refuseCall(exchange, address + " is in a call");
    return;
  }
  exchange.respond(zeph::OK);
  enter(caller, State::kCalling, address, callee != nullptr ? callee->number : 0);
  ringNoLongerThan(exchange.device(), caller, kLongestRinging);
  if (callee == nullptr) return;
  enter(*callee, State::kRinging, addressOf(caller), caller.number);
  tell(exchange.device(), callee->number, Type::INCOMING, callee->call.correspondant);
}

void answerCall(const Exchange& exchange, bool accept) {
  Application& application = exchange.application();
  if (application.call.state != State::kRinging) {
    exchange.respond(zeph::ERROR, "nobody calls");
    return;
  }
  exchange.respond(zeph::OK);
  if (accept) {
    beginTalk(exchange.device(), application);
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
  exchange.application().sipId = account.sipid();
  exchange.application().sipDomain = account.sipdomain();
  exchange.respond(zeph::OK);
}

}  // namespace

void endCall(Device& device, AppNumber number) {
  Application* application = device.application(number);
  if (application == nullptr || application->call.state == State::kNone) return;
  const Call ended = application->call;
  enter(*application, State::kNone, "", 0);
  tell(device, number, Type::TERMINATED, ended.correspondant);
  endCall(device, ended.peer);
}

void answerM2m(const Exchange& exchange) {
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

namespace {

// What somebody outside does, for one application.
void doFromOutside(Device& device, Application& application, zeph::M2mCallback::Type type,
                   const std::string& who) {
  const bool idle = application.call.state == State::kNone;
  if (type == Type::INCOMING) {
    enter(application, State::kRinging, who, 0);
    ringNoLongerThan(device, application, kLongestRinging);
    tell(device, application.number, type, who);
  } else if (type == Type::BEGINNING) {
    if (idle || !who.empty()) enter(application, State::kCalling, who, application.call.peer);
    beginTalk(device, application);
  } else if (idle) {
    tell(device, application.number, type, who);
  } else {
    endCall(device, application.number);
  }
}

}  // namespace

void callFromOutside(Stimulation& stimulation) {
  const auto type = stimulation.choice<zeph::M2mCallback::Type>("what happened");
  const bool mayLackName = type != Type::INCOMING && !stimulation.hasMore();
  const std::string who = mayLackName ? "" : stimulation.text("WHO");
  const std::vector<AppNumber> targets = stimulation.targets();
  for (const AppNumber number : targets) {
    const bool idle = stimulation.device().application(number)->call.state == State::kNone;
    if (type == Type::INCOMING && !idle)
      stimulation.refuse(nameOf(number) + " is in a call, which call TERMINATED ends");
    if (idle && who.empty())
      stimulation.refuse(nameOf(number) + " is in no call, so WHO is missing");
  }
  if (!stimulation.understood()) return;
  for (const AppNumber number : targets) {
    doFromOutside(stimulation.device(), *stimulation.device().application(number), type, who);
  }
  if (targets.empty()) stimulation.tellNobodyHears();
}

}  // namespace morvik::devkit
