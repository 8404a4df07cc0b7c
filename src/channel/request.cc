// The request pattern, step by step: arguments, interactive mode, message, reply, sending.
#include "channel/request.h"

#include "channel/answered-once.h"
#include "channel/connection.h"
#include "channel/message.h"
#include "host/morvik-data.h"

namespace morvik {

void sendZephMsgCallback(int socket, const zeph::ZephMsg& message,
                         std::shared_ptr<CallbackEntry> entry) {
  registerCallback(message.id(), std::move(entry));
  sendZephMsg(socket, message);
}

Request::Request(const Args& args)
    : args_(args), reader_(args), instance_(currentInstance(args.GetIsolate())) {}

Request::Request(const Args& args, const char* label, int fixed) : Request(args) {
  held_.emplace();
  label_ = label;
  expectArguments(fixed);
  expectInteractive();
}

void Request::refuse(const char* text) {
  refused_ = true;
  throwText(args_.GetIsolate(), text);
}

void Request::expect(bool condition) {
  if (!refused() && !condition) refuse("Wrong arguments");
}

void Request::expectArguments(int fixed) {
  const bool withCallback = args_.Length() == fixed + 1 && args_[fixed]->IsFunction();
  if (withCallback) callback_ = args_[fixed].As<v8::Function>();
  expect(withCallback || args_.Length() == fixed);
}

void Request::expectFunction(int fixed) {
  expect(args_.Length() == fixed + 1);
  expectArguments(fixed);
}

void Request::expectInteractive() {
  if (!refused() && !instance_.interactiveID) refuse("Must be in interactive mode");
}

std::string Request::ascii(int index) { return refused() ? std::string() : reader_.ascii(index); }

std::string Request::utf8(int index) { return refused() ? std::string() : reader_.utf8(index); }

std::int32_t Request::int32(int index) { return refused() ? 0 : reader_.int32(index); }

std::uint32_t Request::uint32(int index) { return refused() ? 0 : reader_.uint32(index); }

zeph::ZephMsg& Request::message() {
  if (!message_) {
    message_ = newZephMsg(nullptr);
    if (instance_.interactiveID) message_->set_interactiveid(*instance_.interactiveID);
  }
  return *message_;
}

void Request::send(ReplyFunction reply) {
  if (callback_.IsEmpty()) {
    sendZephMsg(instance_.socket, message());
  } else {
    sendFor(reply, std::make_shared<EventCallbackData>(label_, callback_));
  }
}

void Request::sendForFirst(ReplyFunction reply) {
  sendFor(reply, onceFor(std::make_unique<ScriptFunction>(callback_)));
}

void Request::sendFor(ReplyFunction reply, std::shared_ptr<void> data) {
  sendZephMsgCallback(instance_.socket, message(), awaiting(reply, std::move(data)));
}

}  // namespace morvik
