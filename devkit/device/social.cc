// The user's credentials for the social services. What is told of them, also of a line that is
// wrong, never holds a value.
#include "device/social.h"

#include "device/handlers.h"
#include "device/store.h"

namespace morvik::devkit {
namespace {

using Words = std::vector<std::string>;

// NAME=VALUE, the name as the schema spells it. A value that is empty takes the credential away.
void change(Stimulation& stimulation, zeph::Social& credentials, const std::string& word) {
  const std::size_t equals = word.find('=');
  const std::string name = word.substr(0, equals);
  const auto* field = zeph::Social::descriptor()->FindFieldByName(name);
  if (equals == std::string::npos) {
    stimulation.refuse("a credential is given as NAME=VALUE");
  } else if (field == nullptr) {
    stimulation.refuse("there is no credential of that name");
  } else if (equals + 1 == word.size()) {
    credentials.GetReflection()->ClearField(&credentials, field);
  } else {
    credentials.GetReflection()->SetString(&credentials, field, word.substr(equals + 1));
  }
}

void changeAll(Stimulation& stimulation, const Words& words) {
  Store& store = stimulation.device().store();
  auto credentials = store.credentials();
  if (!credentials) return stimulation.refuse(store.trouble());
  for (const std::string& word : words) change(stimulation, *credentials, word);
  if (!stimulation.understood()) return;
  if (!store.keepCredentials(*credentials)) return stimulation.refuse(store.trouble());
  stimulation.tell("kept: " + credentialNames(*credentials) + '\n');
}

}  // namespace

std::string credentialNames(const zeph::Social& credentials) {
  std::vector<const google::protobuf::FieldDescriptor*> fields;
  credentials.GetReflection()->ListFields(credentials, &fields);
  std::string names;
  for (const auto* field : fields) names += (names.empty() ? "" : " ") + field->name();
  return names.empty() ? "none" : names;
}

// Withheld credentials are an answer without any: an application sees the same as from a user who
// has none.
void answerSocialQuery(const Exchange& exchange) {
  Store& store = exchange.device().store();
  const auto credentials = store.credentials();
  if (!credentials) return exchange.respond(zeph::ERROR, store.trouble());
  zeph::ZephMsg answer;
  answer.mutable_social();
  if (!exchange.state().credentialsWithheld) *answer.mutable_social() = *credentials;
  exchange.reply(std::move(answer));
}

void setCredentials(Stimulation& stimulation) {
  stimulation.mustBeForAll();
  const Words words = stimulation.rest();
  const bool withhold = words == Words{"withhold"};
  if (!withhold && words != Words{"give"}) return changeAll(stimulation, words);
  if (stimulation.understood()) stimulation.state().credentialsWithheld = withhold;
}

}  // namespace morvik::devkit
