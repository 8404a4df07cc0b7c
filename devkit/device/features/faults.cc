// What can go wrong, on purpose: commands refused or answered late, works that end badly, frames in
// pieces, connections that drop.
#include <algorithm>
#include <chrono>

#include "device/describe.h"
#include "device/handlers.h"
#include "device/owned.h"

namespace morvik::devkit {
namespace {

using std::chrono::milliseconds;

constexpr int kLongestDelay = 60000;
constexpr int kUsualPause = 20;
constexpr int kLargestPiece = 1024 * 1024;

bool isAlways(const std::string& word) { return g_ascii_strcasecmp(word.c_str(), "ALWAYS") == 0; }

// What begins like a number is meant as a count.
bool isCount(const std::string& word) {
  const char first = word.empty() ? '\0' : word.front();
  return g_ascii_isdigit(first) != FALSE || first == '-' || isAlways(word);
}

// A command is named as its payload is in the schema.
int commandFrom(Stimulation& stimulation, const std::string& word) {
  std::vector<std::string> names;
  for (const auto* command : Device::commands()) {
    if (command->name() == word) return command->number();
    names.push_back(command->name());
  }
  stimulation.refuse(thereIsNo("command " + cited(word), names));
  return 0;
}

int countFrom(Stimulation& stimulation, const std::string& word) {
  return isAlways(word) ? Refusal::kAlways : stimulation.numberFrom(word, 1);
}

// Of any command when it is 0.
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

}  // namespace

void refuseCommands(Stimulation& stimulation) {
  Refusal refusal;
  refusal.only = stimulation.only();
  refusal.code = stimulation.choice<zeph::VReturnCode>("CODE");
  if (stimulation.hasMore() && !isCount(stimulation.next())) {
    refusal.field = commandFrom(stimulation, stimulation.text("COMMAND"));
  }
  if (stimulation.hasMore()) refusal.left = countFrom(stimulation, stimulation.text("COUNT"));
  if (!stimulation.understood()) return;
  stimulation.state().refusals.push_back(refusal);
  stimulation.device().note(inWords(refusal));
}

void acceptCommands(Stimulation& stimulation) {
  stimulation.mustBeForAll();
  if (!stimulation.understood()) return;
  stimulation.state().refusals.clear();
  stimulation.device().note("refuses nothing");
}

void delayAnswers(Stimulation& stimulation) {
  const milliseconds delay(stimulation.number("MS", 0, kLongestDelay));
  const int field =
      stimulation.hasMore() ? commandFrom(stimulation, stimulation.text("COMMAND")) : 0;
  stimulation.mustBeForAll();
  if (!stimulation.understood()) return;
  stimulation.state().delays[field] = delay;
  const std::string when =
      delay.count() == 0 ? "at once" : "after " + std::to_string(delay.count()) + " ms";
  stimulation.device().note("answers " + commandName(field) + ' ' + when);
}

void finishWork(Stimulation& stimulation) {
  const std::string name = stimulation.text("what to end");
  const auto found = std::find(kWorkNames.begin(), kWorkNames.end(), name);
  const auto work = static_cast<Work>(found - kWorkNames.begin());
  auto code = zeph::TERMINATED;
  if (stimulation.hasMore()) code = stimulation.choice<zeph::VReturnCode>("CODE");
  const std::string description = stimulation.hasMore() ? stimulation.text("TEXT") : "";
  stimulation.mustBeForAll();
  if (found == kWorkNames.end()) {
    stimulation.refuse(thereIsNo("work " + cited(name), {kWorkNames.begin(), kWorkNames.end()}));
  } else if (!stimulation.device().whoseWork(work)) {
    stimulation.refuse("nothing goes on there");
  }
  if (!stimulation.understood()) return;
  stimulation.device().note("ends " + name + " with " + zeph::VReturnCode_Name(code));
  stimulation.device().end(work, code, description);
}

void sendInPieces(Stimulation& stimulation) {
  const int size = stimulation.number("SIZE", 1, kLargestPiece);
  const int pause =
      stimulation.hasMore() ? stimulation.number("PAUSE", 0, kLongestDelay) : kUsualPause;
  if (!stimulation.understood()) return;
  const std::vector<AppNumber> targets = stimulation.targets();
  if (targets.empty()) return stimulation.tellNobodyHears();
  for (const AppNumber number : targets) {
    stimulation.device().application(number)->delivery = {static_cast<std::size_t>(size),
                                                          milliseconds(pause)};
  }
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

}  // namespace morvik::devkit
