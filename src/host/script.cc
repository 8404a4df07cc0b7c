// Values, refusals, kept functions and the one road from the main loop into script.
#include "host/script.h"

#include <glib.h>

#include <algorithm>
#include <climits>
#include <vector>

#include "host/engine.h"
#include "host/exceptions.h"

namespace morvik {
namespace {

// Runs may nest: only the end of the outermost one reports and cleans up.
int runningScripts = 0;

}  // namespace

void bind(v8::Local<v8::ObjectTemplate> target, std::span<const Binding> functions) {
  v8::Isolate* isolate = v8::Isolate::GetCurrent();
  for (const Binding& binding : functions) {
    target->Set(isolate, binding.name, v8::FunctionTemplate::New(isolate, binding.function));
  }
}

// The engine counts in int, and refuses every text that comes near its end: a fatal error there.
v8::Local<v8::String> toScript(std::string_view utf8) {
  const auto length = static_cast<int>(std::min(utf8.size(), std::size_t{INT_MAX}));
  return v8::String::NewFromUtf8(v8::Isolate::GetCurrent(), utf8.data(), v8::NewStringType::kNormal,
                                 length)
      .ToLocalChecked();
}

void setOwn(v8::Local<v8::Object> object, std::string_view name, v8::Local<v8::Value> value) {
  const v8::Local<v8::Context> context = v8::Isolate::GetCurrent()->GetCurrentContext();
  object->CreateDataProperty(context, toScript(name), value).Check();
}

void ignoreAssignment(v8::Local<v8::Name> /*name*/, v8::Local<v8::Value> /*value*/,
                      const v8::PropertyCallbackInfo<void>& /*info*/) {}

void throwText(v8::Isolate* isolate, std::string_view text) {
  isolate->ThrowException(toScript(text));
}

// A function of ours runs in the context that it was made in, whoever calls it, also by way of the
// other context that an event's object comes from. Should one ever run there, whose global object
// has no such field (ours has one of one kind, set before any script runs), it must not take for an
// application whatever stands in its place.
MorvikData& currentInstance(v8::Isolate* isolate) {
  const v8::Local<v8::Object> global = isolate->GetCurrentContext()->Global();
  void* instance =
      global->InternalFieldCount() > 0 ? global->GetAlignedPointerFromInternalField(0) : nullptr;
  if (instance == nullptr) g_error("a function of the host was called outside of its application");
  return *static_cast<MorvikData*>(instance);
}

// A zero byte would end the text wherever C reads it further on, in the log or in a path, and hide
// from the path filter what stands behind it.
std::optional<std::string> asciiText(v8::Isolate* isolate, v8::Local<v8::Value> value) {
  sendHeldRecords();
  v8::Local<v8::String> string;
  if (!value->ToString(isolate->GetCurrentContext()).ToLocal(&string)) return std::nullopt;
  std::string text(static_cast<std::size_t>(string->Length()), '\0');
  string->WriteOneByte(isolate, reinterpret_cast<std::uint8_t*>(text.data()), 0, string->Length(),
                       v8::String::NO_NULL_TERMINATION);
  std::replace(text.begin(), text.end(), '\0', ' ');
  return text;
}

std::optional<std::string> utf8Text(v8::Isolate* isolate, v8::Local<v8::Value> value) {
  sendHeldRecords();
  v8::Local<v8::String> string;
  if (!value->ToString(isolate->GetCurrentContext()).ToLocal(&string)) return std::nullopt;
  const v8::String::Utf8Value text(isolate, string);
  return std::string(*text, static_cast<std::size_t>(text.length()));
}

// Each conversion may run script, so after one that threw no other is begun: the script would see
// it.
template <typename T, typename Convert>
T ArgumentReader::read(int index, Convert convert) {
  if (threw_) return T{};
  sendHeldRecords();
  const auto value = convert(args_.GetIsolate(), args_[index]);
  threw_ = !value.has_value();
  return value.value_or(T{});
}

namespace {

template <typename T>
std::optional<T> maybe(v8::Maybe<T> value) {
  return value.IsJust() ? std::optional<T>(value.FromJust()) : std::nullopt;
}

}  // namespace

std::string ArgumentReader::ascii(int index) { return read<std::string>(index, asciiText); }

std::string ArgumentReader::utf8(int index) { return read<std::string>(index, utf8Text); }

std::int32_t ArgumentReader::int32(int index) {
  return read<std::int32_t>(index, [](v8::Isolate* isolate, v8::Local<v8::Value> value) {
    return maybe(value->Int32Value(isolate->GetCurrentContext()));
  });
}

std::uint32_t ArgumentReader::uint32(int index) {
  return read<std::uint32_t>(index, [](v8::Isolate* isolate, v8::Local<v8::Value> value) {
    return maybe(value->Uint32Value(isolate->GetCurrentContext()));
  });
}

// The context of the call that hands it over. On the main loop none is current, and what the
// function says by a bare name must mean what it meant there.
ScriptFunction::ScriptFunction(v8::Local<v8::Function> function)
    : function_(v8::Isolate::GetCurrent(), function),
      context_(v8::Isolate::GetCurrent(), v8::Isolate::GetCurrent()->GetCurrentContext()) {}

// The function itself is `this`, so that a script can keep things on it. An exception goes no
// further than here: other listeners and timers run on.
bool ScriptFunction::call(std::initializer_list<v8::Local<v8::Value>> arguments) const {
  v8::Isolate* isolate = v8::Isolate::GetCurrent();
  const ScriptRun run(isolate);
  const v8::Local<v8::Function> function = function_.Get(isolate);
  const v8::Local<v8::Context> context = context_.Get(isolate);
  const v8::Context::Scope entered(context);
  const v8::TryCatch tryCatch(isolate);
  std::vector<v8::Local<v8::Value>> values(arguments);
  v8::Local<v8::Value> result;
  if (function->Call(context, function, static_cast<int>(values.size()), values.data())
          .ToLocal(&result)) {
    return result->IsTrue();
  }
  reportException(tryCatch);
  return false;
}

bool ScriptFunction::callWith(const v8::Global<v8::Object>& object) const {
  if (object.IsEmpty()) return call();
  v8::Isolate* isolate = v8::Isolate::GetCurrent();
  const v8::HandleScope handles(isolate);
  return call({object.Get(isolate)});
}

// Objects of it hold it whole, some 160 KB: a script keeps a copy, or the texts that it needs.
TemporaryContext::TemporaryContext()
    : handles_(v8::Isolate::GetCurrent()),
      context_(v8::Context::New(v8::Isolate::GetCurrent())),
      entered_(context_) {
  sendHeldRecords();
}

v8::Local<v8::Object> TemporaryContext::newObject() const {
  return v8::Object::New(v8::Isolate::GetCurrent());
}

ScriptRun::ScriptRun(v8::Isolate* isolate) : handles_(isolate) { ++runningScripts; }

ScriptRun::~ScriptRun() {
  if (--runningScripts > 0) return;
  v8::Isolate* isolate = v8::Isolate::GetCurrent();
  Engine::runPendingTasks(isolate);
  reportRejections(isolate);
}

}  // namespace morvik
