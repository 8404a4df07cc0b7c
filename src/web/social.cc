// social: init. Asks the server for the user's credentials and hangs the gateways on `social`, with
// the secrets as hidden values.
#include "web/social.h"

#include <glib.h>

#include <memory>
#include <string>

#include "channel/answered-once.h"
#include "channel/message.h"
#include "channel/request.h"
#include "host/descriptor.h"
#include "host/exceptions.h"
#include "host/morvik-data.h"
#include "web/hidden-value.h"
#include "web/signing.h"
#include "web/social-gateways.h"
#include "web/web.h"

namespace morvik {
namespace {

constexpr Binding kSign = {"sign", twitterSign};

bool hasClosure(const Args& args) { return args.Length() == 2 && args[1]->IsObject(); }

bool acceptsInit(const Args& args) {
  return args.Length() > 0 && args[0]->IsFunction() && (hasClosure(args) || args.Length() == 1);
}

std::unique_ptr<SocialCallbackContext> recordOf(const Args& args) {
  v8::Isolate* isolate = args.GetIsolate();
  std::unique_ptr<SocialCallbackContext> record(
      new SocialCallbackContext{.callback = ScriptFunction(args[0].As<v8::Function>()),
                                .closure = {},
                                .context = {isolate, isolate->GetCurrentContext()}});
  if (hasClosure(args)) record->closure.Reset(isolate, args[1].As<v8::Object>());
  return record;
}

// Needs neither a grant nor interactive mode.
void init(const Args& args) {
  if (!acceptsInit(args)) return throwText(args.GetIsolate(), "Wrong arguments");
  const auto message = newZephMsg(nullptr);
  message->mutable_socialquery();
  sendZephMsgCallback(currentInstance(args.GetIsolate()).socket, *message,
                      awaiting(getSocialCallbackFunction, onceFor(recordOf(args))));
}

// The objects below are in the script's hands: it may have put a Proxy, a frozen object or a plain
// number in their place. Setting something may then do nothing, or throw: these give false when an
// exception is pending.

bool define(v8::Local<v8::Context> context, v8::Local<v8::Object> object, const char* name,
            v8::Local<v8::Value> value) {
  return object->CreateDataProperty(context, toScript(name), value).IsJust();
}

bool defineFunction(v8::Local<v8::Context> context, v8::Local<v8::Object> object,
                    const Binding& binding) {
  const auto function = v8::Function::New(context, binding.function).ToLocalChecked();
  function->SetName(toScript(binding.name));
  return define(context, object, binding.name, function);
}

// A value that is no object stays as the script has put it, and nothing can be hung on it.
v8::MaybeLocal<v8::Object> asObject(v8::MaybeLocal<v8::Value> maybe) {
  v8::Local<v8::Value> value;
  if (!maybe.ToLocal(&value) || !value->IsObject()) return {};
  return value.As<v8::Object>();
}

// The object at `name`, made when there is nothing: what a script has hung on it stays.
v8::MaybeLocal<v8::Object> ensureChildObject(v8::Local<v8::Context> context,
                                             v8::Local<v8::Object> parent, const char* name) {
  bool present = false;
  if (!parent->Has(context, toScript(name)).To(&present)) return {};
  if (present) return asObject(parent->Get(context, toScript(name)));
  const auto child = v8::Object::New(v8::Isolate::GetCurrent());
  if (!define(context, parent, name, child)) return {};
  return child;
}

void addTwitter(v8::Local<v8::Context> context, v8::Local<v8::Object> social,
                const zeph::Social& credentials) {
  v8::Local<v8::Object> twitter;
  if (!ensureChildObject(context, social, "twitter").ToLocal(&twitter)) return;
  if (!defineFunction(context, twitter, kSign)) return;
  const auto consumerKey = toScript(credentials.twitterconsumerkey());
  if (!define(context, twitter, "oauth_consumer_key", consumerKey)) return;
  if (!define(context, twitter, "oauth_token", toScript(credentials.twittertoken()))) return;
  setHidden(twitter, "consumersecret", toScript(credentials.twitterconsumersecret()));
  setHidden(twitter, "tokensecret", toScript(credentials.twittertokensecret()));
}

void addGateway(v8::Local<v8::Context> context, v8::Local<v8::Object> social, const char* name,
                const std::string& token, std::span<const Binding> functions) {
  v8::Local<v8::Object> gateway;
  if (!ensureChildObject(context, social, name).ToLocal(&gateway)) return;
  setHidden(gateway, "token", toScript(token));
  for (const Binding& binding : functions) {
    if (!defineFunction(context, gateway, binding)) return;
  }
}

// One step that may meet an exception of the script's: told in the log, and the next one follows.
void reporting(auto step) {
  const v8::TryCatch tryCatch(v8::Isolate::GetCurrent());
  step();
  if (tryCatch.HasCaught()) reportException(tryCatch);
}

bool hasTwitter(const zeph::Social& credentials) {
  return credentials.has_twitterconsumerkey() && credentials.has_twitterconsumersecret() &&
         credentials.has_twittertoken() && credentials.has_twittertokensecret();
}

// A service that is not granted, or of which the answer tells nothing, stays as it is.
void addGateways(v8::Local<v8::Context> context, const Descriptor& descriptor,
                 const zeph::Social& credentials) {
  v8::MaybeLocal<v8::Object> found;
  reporting([&] { found = asObject(context->Global()->Get(context, toScript("social"))); });
  v8::Local<v8::Object> social;
  if (!found.ToLocal(&social)) return;
  if (hasAccess(descriptor, "twitter") && hasTwitter(credentials)) {
    reporting([&] { addTwitter(context, social, credentials); });
  }
  if (hasAccess(descriptor, "facebook") && credentials.has_facebooktoken()) {
    const auto& token = credentials.facebooktoken();
    reporting([&] { addGateway(context, social, "facebook", token, facebookFunctions()); });
  }
  if (hasAccess(descriptor, "soundcloud") && credentials.has_soundcloudtoken()) {
    const auto& token = credentials.soundcloudtoken();
    reporting([&] { addGateway(context, social, "soundcloud", token, soundcloudFunctions()); });
  }
}

constexpr Binding kFunctions[] = {{"init", init}};

}  // namespace

void getSocialCallbackFunction(void* data, const zeph::ZephMsg& message) {
  g_debug("getSocialCallbackFunction");
  const auto record = static_cast<AnsweredOnce<SocialCallbackContext>*>(data)->take();
  if (!record) return;  // answered before
  v8::Isolate* isolate = v8::Isolate::GetCurrent();
  const ScriptRun run(isolate);
  const v8::Local<v8::Context> context = record->context.Get(isolate);
  const v8::Context::Scope entered(context);
  if (message.has_social()) {
    addGateways(context, *currentInstance(isolate).descriptor, message.social());
  }
  record->callback.callWith(record->closure);
}

std::span<const Binding> socialFunctions() { return kFunctions; }

}  // namespace morvik
