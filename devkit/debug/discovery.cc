// /json, /json/list and /json/version.
#include "debug/discovery.h"

#include <nlohmann/json.hpp>

namespace morvik::devkit {
namespace {

using OrderedJson = nlohmann::ordered_json;

std::string placeOf(const DebugTarget& target) {
  return "127.0.0.1:" + std::to_string(target.port) + "/" + target.id;
}

// A name or a folder need not be UTF-8.
std::string bodyOf(const OrderedJson& json) {
  constexpr int kIndent = 2;
  return json.dump(kIndent, ' ', false, OrderedJson::error_handler_t::replace) + '\n';
}

// The type is the one by which debuggers know a target that runs scripts and has no page.
OrderedJson listed(const DebugTarget& target, bool attached) {
  OrderedJson entry{{"description", "MorvikVM application"},
                    {"id", target.id},
                    {"title", target.title},
                    {"type", "node"},
                    {"url", target.url}};
  if (attached) return entry;
  entry["devtoolsFrontendUrl"] = toolsAddressOf(target);
  entry["webSocketDebuggerUrl"] = socketAddressOf(target);
  return entry;
}

OrderedJson version() { return {{"Browser", "MorvikVM"}, {"Protocol-Version", "1.3"}}; }

}  // namespace

std::string socketAddressOf(const DebugTarget& target) { return "ws://" + placeOf(target); }

std::string toolsAddressOf(const DebugTarget& target) {
  return "devtools://devtools/bundled/js_app.html?v8only=true&ws=" + placeOf(target);
}

std::optional<std::string> discovered(std::string_view path, const DebugTarget& target,
                                      bool attached) {
  if (path == "/json" || path == "/json/" || path == "/json/list") {
    return bodyOf(OrderedJson::array({listed(target, attached)}));
  }
  if (path == "/json/version") return bodyOf(version());
  return std::nullopt;
}

}  // namespace morvik::devkit
