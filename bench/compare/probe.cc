// What can be told from inside only: contexts that the engine makes with nothing else to do, and
// the search for an access name.
//
//   bench-probe    prints "row value" lines
#include <sys/resource.h>
#include <v8.h>

#include <chrono>
#include <cstdio>
#include <cstring>
#include <functional>
#include <string>

#include "host/descriptor.h"
#include "host/engine.h"

namespace {

using namespace morvik;  // NOLINT(google-build-using-namespace)

constexpr double kSeconds = 0.5;

double cpuSeconds() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
  };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

// How often in a second of CPU, with the collections that it causes.
double rateOf(const std::function<void()>& work) {
  work();
  const double begun = cpuSeconds();
  double now = begun;
  int count = 0;
  for (; now - begun < kSeconds; now = cpuSeconds()) {
    work();
    ++count;
  }
  return count / (now - begun);
}

void makeContext() {
  v8::Isolate* isolate = v8::Isolate::GetCurrent();
  const v8::HandleScope handles(isolate);
  v8::Context::New(isolate);
}

Descriptor descriptorWith(int names) {
  std::string xml = "<descriptor><accesses>";
  for (int i = 1; i <= names; ++i) xml += "<access>name-" + std::to_string(i) + "</access>";
  xml += "</accesses></descriptor>";
  Descriptor descriptor;
  descriptor.doc.reset(xmlReadMemory(xml.data(), static_cast<int>(xml.size()), "", nullptr, 0));
  const XmlQuery query(xmlXPathNewContext(descriptor.doc.get()));
  descriptor.accesses.reset(xmlXPathEvalExpression(
      reinterpret_cast<const xmlChar*>("/descriptor/accesses/access"), query.get()));
  return descriptor;
}

// Microseconds of one search for the last name.
double searchTime(int names) {
  constexpr int kAtOnce = 100;  // the clock costs more than one short search
  const Descriptor descriptor = descriptorWith(names);
  const std::string last = "name-" + std::to_string(names);
  int found = 0;
  const double rate = rateOf([&] {
    for (int i = 0; i < kAtOnce; ++i) found += hasAccess(descriptor, last.c_str()) ? 1 : 0;
  });
  if (found == 0) std::puts("the name was not found");
  return 1e6 / rate / kAtOnce;
}

}  // namespace

int main() {
  Engine::prepare();
  {
    const Engine engine;
    std::printf("context.rate %.17g\n", rateOf(makeContext));
  }
  for (const int names : {1, 100, 10000})
    std::printf("access.%d %.17g\n", names, searchTime(names));
  Engine::dispose();
  return 0;
}
