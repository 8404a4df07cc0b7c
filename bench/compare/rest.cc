// An application that has nothing to do: what it holds, and what it spends.
#include "compare/call-count.h"
#include "compare/session.h"

namespace morvik::bench {
namespace {

void noteMemory(Field& field, const std::string& name, const Session& session) {
  const Memory memory = memoryOf(session.pid());
  field.results.add("memory.private", name, memory.privateClean + memory.privateDirty);
  field.results.add("memory.dirty", name, memory.privateDirty);
}

void noteIdling(Field& field, const std::string& name, const Session& session) {
  const auto begun = Clock::now();
  const Activity before = session.activity();
  pass(field.sizes.idleSeconds);
  const Activity spent = session.activity() - before;
  const double seconds = Microseconds(Clock::now() - begun).count() / 1e6;
  field.results.add("idle.cpu", name, spent.cpu / seconds / 1e4);
  field.results.add("idle.wakes", name, spent.sleeps / seconds);
  const auto calls = callsOfATurn(session.pid(), field.sizes.idleSeconds / 5);
  if (calls) field.results.add("idle.calls", name, *calls);
  if (spent.sleeps > 0) field.results.add("idle.turn", name, spent.cpu / spent.sleeps);
}

double pssOf(const std::vector<const Session*>& sessions, pid_t launcher) {
  double sum = launcher != 0 ? memoryOf(launcher).pss : 0;
  for (const Session* session : sessions) sum += memoryOf(session->pid()).pss;
  return sum;
}

}  // namespace

// One alone first: the pages of a program that runs three times are nobody's own.
void measureRest(Field& field, Contestant& contestant) {
  const std::string& name = contestant.name();
  const Session first(field, contestant, {.name = "idle"});
  pass(field.sizes.restSeconds);
  noteMemory(field, name, first);
  noteIdling(field, name, first);
  const Session second(field, contestant, {.name = "idle"});
  const Session third(field, contestant, {.name = "idle"});
  pass(field.sizes.restSeconds);
  field.results.add("memory.three", name, pssOf({&first, &second, &third}, contestant.launcher()));
}

}  // namespace morvik::bench
