// A script function that waits for one answer.
#pragma once

#include <v8.h>

#include <optional>
#include <utility>

#include "host/script.h"

namespace morvik {

/// What the table of awaited replies keeps for a request whose function is called once at most. The
/// record itself stays in the table, so a further answer finds it empty.
class PendingFunction {
 public:
  explicit PendingFunction(v8::Local<v8::Function> function) : function_(function) {}

  /// The function, at the first call only. It goes with what it was moved into.
  [[nodiscard]] std::optional<ScriptFunction> take() {
    return std::exchange(function_, std::nullopt);
  }

 private:
  std::optional<ScriptFunction> function_;
};

}  // namespace morvik
