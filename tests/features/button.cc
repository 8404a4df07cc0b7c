// morvik.button: presses by the names of their kinds.
#include "features/features.h"

namespace morvik::test {
namespace {

std::vector<HeardRow> presses() {
  std::vector<HeardRow> rows;
  for (const std::string kind :
       {"SIMPLE", "DOUBLE", "TRIPLE", "MULTIPLE", "LONG_START", "LONG_STOP"})
    rows.push_back({"buttonCallback { type: " + kind + " }", {"MESSAGE JSLOG: string " + kind}});
  return rows;
}

}  // namespace

Feature buttonFeature() {
  return {
      .name = "button",
      .functions = "addListener",
      .refuses = wrongListeners(),
      .hears = presses() +
               std::vector<HeardRow>{
                   // A press without its required kind counts as the first kind.
                   {"buttonCallback {}", {"MESSAGE JSLOG: string SIMPLE"}},
                   {"response { code: OK }", {}},
                   {"earsCallback { type: STOP_LEFT }", {}},
                   {"earsCallback { type: BLOCKED_LEFT }", {}},
                   {"buttonCallback { type: SIMPLE } interactiveMode { action: START }", {}}},
      .event = "buttonCallback { type: SIMPLE }",
  };
}

}  // namespace morvik::test
