// The request pattern: how a script call becomes one message to the device server.
#pragma once

#include <zeph-message.pb.h>

#include <memory>
#include <optional>
#include <string>

#include "channel/callback-table.h"
#include "channel/event-callback.h"
#include "host/script.h"
#include "host/system-log.h"

namespace morvik {

class MorvikData;

/// Registers the entry under the message's id, and then sends the message (see sendZephMsg), so
/// that no answer can come too early.
void sendZephMsgCallback(int socket, const zeph::ZephMsg& message,
                         std::shared_ptr<CallbackEntry> entry);

/// One script call on its way to becoming a message. The checks throw to the script, and from then
/// on the request is refused: reads give empty values and nothing may be sent.
///
///   Request request(args, "LED", 1);
///   const std::string color = request.ascii(0);
///   if (request.refused()) return;
///   request.message().mutable_led()->mutable_light()->set_color(color);
///   request.send();
class Request {
 public:
  /// The ordinary checks: `fixed` arguments, or one more which is a function ("Wrong arguments"),
  /// then interactive mode ("Must be in interactive mode"). `label` names the feature in the log,
  /// whose records of this call go out together.
  Request(const Args& args, const char* label, int fixed);

  /// Without any check, for calls with an order of their own.
  explicit Request(const Args& args);

  /// Refuses with "Wrong arguments" unless the condition holds.
  void expect(bool condition);
  /// Takes the function in the last place if there are `fixed` + 1 arguments; refuses other counts.
  void expectArguments(int fixed);
  /// Takes the function in the last place of `fixed` + 1 arguments; refuses everything else. For
  /// calls that are nothing without their function.
  void expectFunction(int fixed);
  /// Refuses outside interactive mode.
  void expectInteractive();

  std::string ascii(int index);     ///< argument as text, see asciiText
  std::string utf8(int index);      ///< argument as UTF-8 text
  std::int32_t int32(int index);    ///< argument as the engine's Int32Value
  std::uint32_t uint32(int index);  ///< argument as the engine's Uint32Value

  /// Whether a check or a conversion threw.
  [[nodiscard]] bool refused() const { return refused_ || reader_.threw(); }

  [[nodiscard]] MorvikData& instance() const { return instance_; }

  /// The message, made at the first call: a fresh id and the instance's interactive id, if any.
  zeph::ZephMsg& message();

  /// Sends. Without a function from the script it is fire and forget; with one, `reply` hears every
  /// answer with an EventCallbackData of it.
  void send(ReplyFunction reply = EventCallback);
  /// Sends, and `reply` hears every answer with an AnsweredOnce<ScriptFunction> of the script's
  /// function, which there must be.
  void sendForFirst(ReplyFunction reply);
  /// Sends, and `reply` hears every answer with `data`.
  void sendFor(ReplyFunction reply, std::shared_ptr<void> data);

 private:
  void refuse(const char* text);

  std::optional<HeldRecords> held_;
  const Args& args_;
  ArgumentReader reader_;
  MorvikData& instance_;
  const char* label_ = "";
  bool refused_ = false;
  v8::Local<v8::Function> callback_;
  std::unique_ptr<zeph::ZephMsg> message_;
};

}  // namespace morvik
