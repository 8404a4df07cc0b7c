// The script engine as the rest of the program sees it: the shape of a script function, reading its
// arguments, throwing a text, keeping a function and calling it.
#pragma once

#include <v8.h>

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "host/system-log.h"

namespace morvik {

class MorvikData;

/// The arguments of one call from a script.
using Args = v8::FunctionCallbackInfo<v8::Value>;

/// A name that scripts see, and the function behind it.
struct Binding {
  const char* name;
  v8::FunctionCallback function;
};

/// Adds the functions to an object's template.
void bind(v8::Local<v8::ObjectTemplate> target, std::span<const Binding> functions);

/// A script text from UTF-8; bytes that are none become replacement characters.
v8::Local<v8::String> toScript(std::string_view utf8);

/// Sets a property of the object's own, whatever its name is, without running any setter.
void setOwn(v8::Local<v8::Object> object, std::string_view name, v8::Local<v8::Value> value);

/// The setter of an accessor that takes assignments without effect and without error.
void ignoreAssignment(v8::Local<v8::Name> name, v8::Local<v8::Value> value,
                      const v8::PropertyCallbackInfo<void>& info);

/// Throws the text as a plain String, which is how every script function refuses.
void throwText(v8::Isolate* isolate, std::string_view text);

/// The running application: internal field 0 of the current context's global object.
MorvikData& currentInstance(v8::Isolate* isolate);

/// The value as text, one byte for each UTF-16 unit (its low eight bits), a zero byte as a blank.
std::optional<std::string> asciiText(v8::Isolate* isolate, v8::Local<v8::Value> value);

/// The value as UTF-8 text.
std::optional<std::string> utf8Text(v8::Isolate* isolate, v8::Local<v8::Value> value);

/// Reads the arguments of one call, in the order in which it is asked. The first conversion that
/// throws ends the reading: further reads give empty values, and `threw` says so.
///
/// A convention for all that reads a script's values, here and in every feature: reading may run
/// script, which may throw. Where such a function gives false, nothing or an empty handle, there is
/// an exception, it is the script's, and the caller only returns, so that the script meets it.
class ArgumentReader {
 public:
  explicit ArgumentReader(const Args& args) : args_(args) {}
  std::string ascii(int index);     ///< as asciiText
  std::string utf8(int index);      ///< as utf8Text
  std::int32_t int32(int index);    ///< the engine's Int32Value
  std::uint32_t uint32(int index);  ///< the engine's Uint32Value
  [[nodiscard]] bool threw() const { return threw_; }

 private:
  template <typename T, typename Convert>
  T read(int index, Convert convert);

  const Args& args_;
  bool threw_ = false;
};

/// A script function kept beyond the call that handed it over. It runs in the context that it was
/// kept in. Owns its handles: they go with it.
class ScriptFunction {
 public:
  explicit ScriptFunction(v8::Local<v8::Function> function);

  /// Calls from the main loop, the function itself being `this`. True only when it returned the
  /// boolean true. An exception is reported in the log and counts as false.
  bool call(std::initializer_list<v8::Local<v8::Value>> arguments = {}) const;
  /// The same with this object, or with nothing where the handle is empty.
  bool callWith(const v8::Global<v8::Object>& object) const;

 private:
  v8::Global<v8::Function> function_;
  v8::Global<v8::Context> context_;
};

/// Opened on the main loop to build what is handed to a script: a new context, entered, without the
/// application's globals.
class TemporaryContext {
 public:
  TemporaryContext();
  [[nodiscard]] v8::Local<v8::Object> newObject() const;
  [[nodiscard]] v8::Local<v8::Context> context() const { return context_; }

 private:
  v8::HandleScope handles_;
  v8::Local<v8::Context> context_;
  v8::Context::Scope entered_;
};

/// Brackets one run of script from the main loop. Log records do not wait for its end. When the
/// outermost one ends, promises that were rejected and found no handler are reported, and the
/// engine does what it has put off.
class ScriptRun {
 public:
  explicit ScriptRun(v8::Isolate* isolate);
  ~ScriptRun();
  ScriptRun(const ScriptRun&) = delete;
  ScriptRun& operator=(const ScriptRun&) = delete;

 private:
  PromptRecords prompt_;
  v8::HandleScope handles_;
};

}  // namespace morvik
