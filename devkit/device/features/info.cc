// Is the device there, and what is it: ping and the info query.
#include "device/handlers.h"

namespace morvik::devkit {

void answerPing(const Exchange& exchange) { exchange.respond(zeph::OK); }

// One message only, without a response beside it: an application takes the first answer with infos
// and is done with the query.
void answerInfoQuery(const Exchange& exchange) {
  zeph::ZephMsg answer;
  auto* infos = answer.mutable_morvikinfo_response();
  for (const auto& [key, value] : exchange.state().infos) {
    zeph::KeyValue* info = infos->add_infos();
    info->set_key(key);
    info->set_value(value);
  }
  exchange.reply(answer);
}

}  // namespace morvik::devkit
