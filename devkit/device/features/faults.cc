// What can go wrong, on purpose: commands refused or answered late, works that end badly, frames in
// pieces, connections that drop.
#include "device/faults.h"

#include <algorithm>
#include <chrono>

#include "device/commands.h"
#include "device/features/features.h"
#include "device/owned.h"
#include "device/stimulation.h"
#include "device/text.h"
#include "device/view.h"

namespace morvik::devkit {
namespace {

using Kind = Argument::Kind;
using std::chrono::milliseconds;

constexpr int kLongestDelay = 60000;
constexpr int kLargestPiece = 1024 * 1024;
constexpr const char* kAlways = "ALWAYS";

// What begins like a number is meant as a count.
bool isCommand(Argument::Words left) {
  if (left.empty()) return false;
  const std::string& word = left.front();
  const char first = word.empty() ? '\0' : word.front();
  return g_ascii_isdigit(first) == FALSE && first != '-' &&
         g_ascii_strcasecmp(word.c_str(), kAlways) != 0;
}

// A command is named as its payload is in the schema.
std::vector<std::string> commandNames() {
  std::vector<std::string> names;
  for (const auto* command : commands()) names.push_back(command->name());
  return names;
}

std::vector<std::string> workNames() { return {kWorkNames.begin(), kWorkNames.end()}; }

// 0 for any command.
int fieldOf(const std::string& command) {
  const auto* field = zeph::ZephMsg::descriptor()->FindFieldByName(command);
  return field != nullptr ? field->number() : 0;
}

std::string commandName(int field) {
  return field == 0 ? "commands" : zeph::ZephMsg::descriptor()->FindFieldByNumber(field)->name();
}

std::string inWords(const Refusal& refusal) {
  const std::string whose = refusal.only ? " of " + appName(*refusal.only) : "";
  const std::string howOften = refusal.left == Refusal::kAlways ? "always"
                               : refusal.left == 1              ? "once"
                                                   : std::to_string(refusal.left) + " times";
  return "refuses " + commandName(refusal.field) + whose + " with " +
         zeph::VReturnCode_Name(refusal.code) + ", " + howOften;
}

void refuseCommands(Stimulation& stimulation) {
  Refusal refusal;
  refusal.only = stimulation.only();
  refusal.code = stimulation.choice<zeph::VReturnCode>("code");
  refusal.field = fieldOf(stimulation.text("command"));
  refusal.left =
      stimulation.text("count") == kAlways ? Refusal::kAlways : stimulation.number("count");
  if (!stimulation.understood()) return;
  stimulation.device().changeFaults([&](Faults& faults) { faults.refuse(refusal); });
  stimulation.device().note(inWords(refusal));
}

void acceptCommands(Stimulation& stimulation) {
  if (!stimulation.understood()) return;
  stimulation.device().changeFaults([](Faults& faults) { faults.acceptAll(); });
  stimulation.device().note("refuses nothing");
}

void delayAnswers(Stimulation& stimulation) {
  const milliseconds delay(stimulation.number("length"));
  const int field = fieldOf(stimulation.text("command"));
  if (!stimulation.understood()) return;
  stimulation.device().changeFaults([&](Faults& faults) { faults.delay(field, delay); });
  const std::string when =
      delay.count() == 0 ? "at once" : "after " + std::to_string(delay.count()) + " ms";
  stimulation.device().note("answers " + commandName(field) + ' ' + when);
}

void finishWork(Stimulation& stimulation) {
  const std::string name = stimulation.text("work");
  const auto* found = std::find(kWorkNames.begin(), kWorkNames.end(), name);
  const auto work = static_cast<Work>(found - kWorkNames.begin());
  const auto code = stimulation.choice<zeph::VReturnCode>("code");
  Device& device = stimulation.device();
  if (found != kWorkNames.end() && !device.works().find(work)) {
    stimulation.refuse("nothing goes on there");
  }
  if (!stimulation.understood()) return;
  device.note("ends " + name + " with " + zeph::VReturnCode_Name(code));
  device.end(work, code, stimulation.text("text"));
}

void sendInPieces(Stimulation& stimulation) {
  const int size = stimulation.number("size");
  const int pause = stimulation.number("pause");
  if (!stimulation.understood()) return;
  const std::vector<AppNumber> targets = stimulation.targets();
  if (targets.empty()) return stimulation.tellNobodyHears();
  stimulation.device().changeFaults([&](Faults& faults) {
    const Delivery delivery{static_cast<std::size_t>(size), milliseconds(pause)};
    for (const AppNumber number : targets) faults.deliver(number, delivery);
  });
  const std::string whom = stimulation.only() ? " to " + appName(*stimulation.only()) : "";
  stimulation.device().note("sends the next message" + whom + " in pieces of " +
                            std::to_string(size) + " bytes, " + std::to_string(pause) +
                            " ms between them");
}

void dropConnection(Stimulation& stimulation) {
  if (!stimulation.understood()) return;
  const std::vector<AppNumber> targets = stimulation.targets();
  for (const AppNumber number : targets) stimulation.device().drop(number);
  if (targets.empty()) stimulation.tellNobodyHears();
}

void showRefusal(const Refusal& refusal, JsonObject shown) {
  shown.text("code", zeph::VReturnCode_Name(refusal.code));
  if (refusal.field != 0) shown.text("command", commandName(refusal.field));
  if (refusal.only) shown.number("application", *refusal.only);
  if (refusal.left != Refusal::kAlways) shown.number("left", refusal.left);
}

void showDelay(int field, milliseconds length, JsonObject shown) {
  if (field != 0) shown.text("command", commandName(field));
  shown.number("length", length.count());
}

std::string inWords(int field, milliseconds delay) {
  return "answers " + commandName(field) + " after " +
         inMilliseconds(static_cast<int>(delay.count()));
}

std::string atAGlance(const DeviceView& view) {
  std::vector<std::string> faults;
  for (const Refusal& refusal : view.faults.refusals()) faults.push_back(inWords(refusal));
  for (const auto& [field, delay] : view.faults.delays()) {
    if (delay > milliseconds(0)) faults.push_back(inWords(field, delay));
  }
  for (const auto& [application, delivery] : view.faults.deliveries()) {
    faults.push_back("sends " + appName(application) + " the next message in pieces of " +
                     std::to_string(delivery.pieceSize) + " bytes");
  }
  std::string all;
  for (const std::string& fault : faults) all += (all.empty() ? "" : "; ") + fault;
  return all;
}

void show(const DeviceView& view, JsonObject& whole) {
  JsonObject shown = whole.object("faults");
  shown.list("refusals").list("delays").list("deliveries");
  for (const Refusal& refusal : view.faults.refusals()) {
    showRefusal(refusal, shown.added("refusals"));
  }
  for (const auto& [field, length] : view.faults.delays()) {
    if (length > milliseconds(0)) showDelay(field, length, shown.added("delays"));
  }
  for (const auto& [application, delivery] : view.faults.deliveries()) {
    shown.added("deliveries")
        .number("application", application)
        .number("pieceSize", static_cast<std::int64_t>(delivery.pieceSize))
        .number("pause", delivery.pause.count());
  }
}

constexpr Argument kRefuse[] = {
    {.name = "code",
     .usage = "CODE",
     .what = "CODE",
     .kind = Kind::kChoice,
     .choices = namesOf<zeph::VReturnCode_descriptor>},
    {.name = "command",
     .usage = "COMMAND",
     .kind = Kind::kName,
     .needed = false,
     .choices = commandNames,
     .called = "command",
     .standsIn = isCommand},
    {.name = "count",
     .usage = "COUNT|ALWAYS",
     .kind = Kind::kNumber,
     .needed = false,
     .byDefault = "1",
     .choices = [] { return std::vector<std::string>{kAlways}; },
     .least = 1},
};
constexpr Argument kDelay[] = {
    {.name = "length", .usage = "MS", .kind = Kind::kNumber, .least = 0, .most = kLongestDelay},
    {.name = "command",
     .usage = "COMMAND",
     .kind = Kind::kName,
     .needed = false,
     .choices = commandNames,
     .called = "command"},
};
constexpr Argument kFinish[] = {
    {.name = "work",
     .what = "what to end",
     .kind = Kind::kName,
     .choices = workNames,
     .called = "work"},
    {.name = "code",
     .usage = "CODE",
     .what = "CODE",
     .kind = Kind::kChoice,
     .needed = false,
     .byDefault = "TERMINATED",
     .choices = namesOf<zeph::VReturnCode_descriptor>},
    {.name = "text", .usage = "TEXT", .needed = false},
};
constexpr Argument kPieces[] = {
    {.name = "size", .usage = "SIZE", .kind = Kind::kNumber, .least = 1, .most = kLargestPiece},
    {.name = "pause",
     .usage = "PAUSE",
     .kind = Kind::kNumber,
     .needed = false,
     .byDefault = "20",
     .least = 0,
     .most = kLongestDelay},
};

constexpr auto kFault = Stimulus::Group::kFault;
constexpr auto kForApplications = Stimulus::For::kApplications;
constexpr auto kForDevice = Stimulus::For::kDevice;

constexpr Stimulus kStimuli[] = {
    {"refuse", kFault, kForApplications, kRefuse,
     "answer the next command, or COUNT of them, with a code and nothing else; COMMAND is ears, "
     "multimedia, interactiveMode, ...: a wrong one is answered with all of them",
     refuseCommands},
    {"accept", kFault, kForDevice, {}, "refuse nothing any more", acceptCommands},
    {"delay", kFault, kForDevice, kDelay, "answer commands that much later, 0 for at once",
     delayAnswers},
    {"finish", kFault, kForDevice, kFinish, "end what goes on, TERMINATED or as told", finishWork},
    {"pieces", kFault, kForApplications, kPieces,
     "send the next message in pieces of SIZE bytes, PAUSE milliseconds between them",
     sendInPieces},
    {"drop", kFault, kForApplications, {}, "end the connection", dropConnection},
};
constexpr Glance kGlances[] = {{"faults", atAGlance}};

}  // namespace

constinit const Feature kFaultsFeature = {.stimuli = kStimuli, .glances = kGlances, .show = show};

}  // namespace morvik::devkit
