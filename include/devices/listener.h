// The listener pattern: how a feature's events reach script functions.
#pragma once

#include <zeph-message.pb.h>

#include <memory>
#include <utility>

#include "host/script.h"
#include "host/zeph-msg-listener.h"

namespace morvik {

/// A listener on one feature's events, around a script function. `onMessage` of a derived class is
/// true for a message that is none of the feature's; for one that is, it calls `function` with what
/// the event tells, and is what the call gave: whether the function returned exactly true. So a
/// listener stays only while it says so, which is how a script gets rid of it.
class ScriptListener : public ZephMsgListener {
 public:
  explicit ScriptListener(v8::Local<v8::Function> scriptFunction) : function(scriptFunction) {}

 protected:
  ScriptFunction function;
};

/// Appends a listener to the running application's.
void appendListener(v8::Isolate* isolate, std::unique_ptr<ZephMsgListener> listener);

/// The script function `addListener` of a feature: exactly one argument, a function ("Wrong
/// arguments"). A listener can be added outside interactive mode as well.
template <typename Listener>
void addListener(const Args& args) {
  if (args.Length() != 1 || !args[0]->IsFunction()) {
    return throwText(args.GetIsolate(), "Wrong arguments");
  }
  appendListener(args.GetIsolate(), std::make_unique<Listener>(args[0].As<v8::Function>()));
}

}  // namespace morvik
