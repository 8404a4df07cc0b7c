// What can go wrong, on purpose: commands refused or answered late, works that end badly, frames in
// pieces, connections that drop.
#include <algorithm>
#include <chrono>

#include "device/handlers.h"
#include "device/owned.h"
#include "device/payload.h"

namespace morvik::devkit {
namespace {

using std::chrono::milliseconds;

constexpr int kLongestDelay = 60000;
constexpr int kUsualPause = 20;
constexpr int kLargestPiece = 1024 * 1024;

bool isNumber(const std::string& word) {
  return std::all_of(word.begin(), word.end(), [](char c) { return g_ascii_isdigit(c) != FALSE; });
}

// A command is named as its payload is in the schema.
int commandFrom(Stimulation& stimulation, const std::string& word) {
  if (const auto* payload = payloadNamed(word)) return payload->number();
  stimulation.refuse("there is no command " + word);
  return 0;
}

int countFrom(Stimulation& stimulation, const std::string& word) {
  if (g_ascii_strcasecmp(word.c_str(), "ALWAYS") == 0) return Refusal::kAlways;
  return stimulation.numberFrom(word, 1);
}

}  // namespace

void refuseCommands(Stimulation& stimulation) {
  Refusal refusal;
  refusal.only = stimulation.only();
  refusal.code = stimulation.choice<zeph::VReturnCode>("CODE");
  std::vector<std::string> rest = stimulation.rest();
  if (!rest.empty() && !isNumber(rest[0]) && g_ascii_strcasecmp(rest[0].c_str(), "ALWAYS") != 0) {
    refusal.field = commandFrom(stimulation, rest[0]);
    rest.erase(rest.begin());
  }
  if (!rest.empty()) refusal.left = countFrom(stimulation, rest[0]);
  if (rest.size() > 1) stimulation.refuse("what is " + rest[1] + "?");
  if (!stimulation.understood()) return;
  stimulation.state().refusals.push_back(refusal);
  stimulation.device().note("refuses commands with " + zeph::VReturnCode_Name(refusal.code));
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
  stimulation.device().note("answers after " + std::to_string(delay.count()) + " ms");
}

void finishWork(Stimulation& stimulation) {
  const std::string name = stimulation.text("WORK");
  const auto found = std::find(kWorkNames.begin(), kWorkNames.end(), name);
  const auto work = static_cast<Work>(found - kWorkNames.begin());
  auto code = zeph::TERMINATED;
  if (stimulation.hasMore()) code = stimulation.choice<zeph::VReturnCode>("CODE");
  const std::string description = stimulation.hasMore() ? stimulation.text("TEXT") : "";
  stimulation.mustBeForAll();
  if (found == kWorkNames.end()) {
    stimulation.refuse("there is no work " + name);
  } else if (!stimulation.device().whoseWork(work)) {
    stimulation.refuse("nothing goes on there");
  }
  if (stimulation.understood()) stimulation.device().end(work, code, description);
}

void sendInPieces(Stimulation& stimulation) {
  const int size = stimulation.number("SIZE", 1, kLargestPiece);
  const int pause =
      stimulation.hasMore() ? stimulation.number("PAUSE", 0, kLongestDelay) : kUsualPause;
  if (!stimulation.understood()) return;
  for (const AppNumber number : stimulation.targets()) {
    stimulation.device().application(number)->delivery = {static_cast<std::size_t>(size),
                                                          milliseconds(pause)};
  }
  if (stimulation.targets().empty()) stimulation.tellNobodyHears();
}

void dropConnection(Stimulation& stimulation) {
  if (!stimulation.understood()) return;
  const std::vector<AppNumber> targets = stimulation.targets();
  for (const AppNumber number : targets) stimulation.device().drop(number);
  if (targets.empty()) stimulation.tellNobodyHears();
}

}  // namespace morvik::devkit
