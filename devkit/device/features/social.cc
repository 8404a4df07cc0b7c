// The user's credentials for the social services. What is told of them, also of a line that is
// wrong, never holds a value.
#include "device/social.h"

#include "device/describe.h"
#include "device/handlers.h"
#include "device/store.h"

namespace morvik::devkit {
namespace {

using Words = std::vector<std::string>;

std::vector<std::string> allNames() {
  const auto* credentials = zeph::Social::descriptor();
  std::vector<std::string> names;
  names.reserve(static_cast<std::size_t>(credentials->field_count()));
  for (int i = 0; i < credentials->field_count(); ++i) {
    names.push_back(credentials->field(i)->name());
  }
  return names;
}

// NAME=VALUE, the name as the schema spells it. A value that is empty takes the credential away. A
// name that is wrong is not repeated: it may be the piece of a value that was cut by a blank.
void change(Stimulation& stimulation, zeph::Social& credentials, const std::string& word) {
  const std::size_t equals = word.find('=');
  const std::string name = word.substr(0, equals);
  const auto* field = zeph::Social::descriptor()->FindFieldByName(name);
  if (equals == std::string::npos) {
    stimulation.refuse(
        "a credential is given as NAME=VALUE, in quotes when there is a blank in it");
  } else if (field == nullptr) {
    stimulation.refuse(thereIsNo("credential of that name", allNames()));
  } else if (equals + 1 == word.size()) {
    credentials.GetReflection()->ClearField(&credentials, field);
  } else {
    credentials.GetReflection()->SetString(&credentials, field, word.substr(equals + 1));
  }
}

void changeAll(Stimulation& stimulation, zeph::Social credentials, const Words& words) {
  for (const std::string& word : words) change(stimulation, credentials, word);
  if (!stimulation.understood()) return;
  Store& store = stimulation.device().store();
  if (!store.keepCredentials(credentials)) return stimulation.refuse(store.trouble());
  stimulation.device().note("credentials kept: " + credentialNames(credentials));
}

void tellAll(Stimulation& stimulation, const zeph::Social& credentials) {
  if (!stimulation.understood()) return;
  const bool withheld = stimulation.state().credentialsWithheld;
  stimulation.tell("kept: " + credentialNames(credentials) + (withheld ? ", withheld" : "") +
                   "\nthere are: " + listed(allNames()) + '\n');
}

void withhold(Stimulation& stimulation, bool withheld) {
  if (!stimulation.understood()) return;
  stimulation.state().credentialsWithheld = withheld;
  stimulation.device().note(withheld ? "the credentials are withheld"
                                     : "the credentials are given");
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
  if (words == Words{"withhold"} || words == Words{"give"}) {
    return withhold(stimulation, words.front() == "withhold");
  }
  Store& store = stimulation.device().store();
  const auto credentials = store.credentials();
  if (!credentials) return stimulation.refuse(store.trouble());
  if (words.empty()) return tellAll(stimulation, *credentials);
  changeAll(stimulation, *credentials, words);
}

}  // namespace morvik::devkit
