// The script engine in the author's tool. It compiles an application's scripts and never runs them;
// what it runs is the parser and the rules of check.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "check/syntax-error.h"
#include "device/json.h"

namespace morvik::devkit {

/// An isolate of its own, thrown away with it.
class ScriptEngine {
 public:
  ScriptEngine();
  ~ScriptEngine();
  ScriptEngine(const ScriptEngine&) = delete;
  ScriptEngine& operator=(const ScriptEngine&) = delete;

  /// What the host would say of a source at its start; nothing when it compiles.
  [[nodiscard]] std::optional<SyntaxError> compile(const std::string& name,
                                                   const std::string& source);

  /// Calls a function of the rules, which takes and gives JSON.
  [[nodiscard]] Json call(const char* function, const Json& input);

 private:
  class Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace morvik::devkit
