// The user's credentials for the social services. What is told of them, also of a line that is
// wrong, never holds a value.
#include "device/exchange.h"
#include "device/features/features.h"
#include "device/payload.h"
#include "device/stimulation.h"
#include "device/text.h"
#include "device/view.h"

namespace morvik::devkit {
namespace {

std::vector<std::string> allNames() {
  const auto* credentials = zeph::Social::descriptor();
  std::vector<std::string> names;
  names.reserve(static_cast<std::size_t>(credentials->field_count()));
  for (int i = 0; i < credentials->field_count(); ++i) {
    names.push_back(credentials->field(i)->name());
  }
  return names;
}

// The names of those that are there, never a value: "twitterToken facebookToken", or "none".
std::string namesIn(const zeph::Social& credentials) {
  const std::vector<std::string> names = namesOfFields(credentials);
  return names.empty() ? "none" : joined(names, ' ');
}

// Withheld credentials are an answer without any: an application sees the same as from a user who
// has none.
void answer(const Exchange& exchange) {
  Store& store = exchange.device().store();
  const auto credentials = store.credentials();
  if (!credentials) return exchange.respond(zeph::ERROR, store.trouble());
  zeph::ZephMsg answer;
  answer.mutable_social();
  if (!exchange.state().credentialsWithheld) *answer.mutable_social() = *credentials;
  exchange.reply(std::move(answer));
}

// NAME=VALUE, the name as the schema spells it. A value that is empty takes the credential away.
void change(zeph::Social& credentials, const std::string& pair) {
  const std::size_t equals = pair.find('=');
  const auto* field = zeph::Social::descriptor()->FindFieldByName(pair.substr(0, equals));
  if (equals + 1 == pair.size()) {
    credentials.GetReflection()->ClearField(&credentials, field);
  } else {
    credentials.GetReflection()->SetString(&credentials, field, pair.substr(equals + 1));
  }
}

void changeAll(Stimulation& stimulation, zeph::Social credentials) {
  for (const std::string& pair : stimulation.all("values")) change(credentials, pair);
  Device& device = stimulation.device();
  if (!device.store().keepCredentials(credentials)) {
    return stimulation.refuse(device.store().trouble());
  }
  device.changed("credentials");
  device.note("credentials kept: " + namesIn(credentials));
}

void tellAll(Stimulation& stimulation, const zeph::Social& credentials) {
  const bool withheld = stimulation.state().credentialsWithheld;
  stimulation.tell("kept: " + namesIn(credentials) + (withheld ? ", withheld" : "") +
                   "\nthere are: " + listed(allNames()) + '\n');
}

void withhold(Device& device, bool withheld) {
  device.change("credentials", [&](DeviceState& state) { state.credentialsWithheld = withheld; });
  device.note(withheld ? "the credentials are withheld" : "the credentials are given");
}

void setCredentials(Stimulation& stimulation) {
  const bool hasMode = stimulation.has("mode");
  if (hasMode && stimulation.has("values")) {
    stimulation.refuse("credentials are kept, or withheld and given; not both at once");
  }
  if (!stimulation.understood()) return;
  if (hasMode) return withhold(stimulation.device(), stimulation.text("mode") == "withhold");
  Store& store = stimulation.device().store();
  const auto credentials = store.credentials();
  if (!credentials) return stimulation.refuse(store.trouble());
  if (!stimulation.has("values")) return tellAll(stimulation, *credentials);
  changeAll(stimulation, *credentials);
}

std::string query(const zeph::ZephMsg& /*message*/) { return "credentials?"; }

std::string inWords(const zeph::ZephMsg& message) {
  return "credentials " + namesIn(message.social());
}

std::string atAGlance(const DeviceView& view) {
  return listed(view.credentials) + (view.state.credentialsWithheld ? ", withheld" : "");
}

void show(const DeviceView& view, JsonObject& whole) {
  whole.object("credentials")
      .texts("kept", view.credentials)
      .flag("withheld", view.state.credentialsWithheld);
}

// Alone, for a credential may be called so as well.
bool isMode(Argument::Words left) {
  return left.size() == 1 && (left[0] == "withhold" || left[0] == "give");
}

constexpr Argument kCredentials[] = {
    {.name = "mode",
     .kind = Argument::Kind::kName,
     .needed = false,
     .choices =
         [] {
           return std::vector<std::string>{"withhold", "give"};
         },
     .called = "mode",
     .standsIn = isMode},
    {.name = "values",
     .usage = "NAME=VALUE",
     .kind = Argument::Kind::kPair,
     .needed = false,
     .many = true,
     .secret = true,
     .choices = allNames,
     .called = "credential"},
};

constexpr Command kCommands[] = {
    {zeph::ZephMsg::kSocialQueryFieldNumber, Command::Needs::kNothing, answer}};
constexpr Stimulus kStimuli[] = {
    {"credentials", Stimulus::Group::kUser, Stimulus::For::kDevice, kCredentials,
     "keep credentials; a name with no value behind it loses its own; alone, tell the names",
     setCredentials, "[NAME=VALUE]...|withhold|give"}};
constexpr Words kWords[] = {
    {zeph::ZephMsg::kSocialQueryFieldNumber, query},
    {zeph::ZephMsg::kSocialFieldNumber, inWords},
};
constexpr Glance kGlances[] = {{"credentials", atAGlance}};

}  // namespace

constinit const Feature kSocialFeature = {
    .commands = kCommands, .stimuli = kStimuli, .words = kWords, .glances = kGlances, .show = show};

}  // namespace morvik::devkit
