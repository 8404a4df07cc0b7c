// The script engine's set-up. Built without run-time type information, see CMakeLists.txt.
#include "host/engine.h"

#include <glib.h>
#include <libplatform/libplatform.h>
#include <sys/mman.h>
#include <sys/random.h>

#include <array>
#include <cinttypes>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "host/exceptions.h"
#include "host/memory.h"

namespace morvik {
namespace {

// No thread, less memory, and no WebAssembly, whose memories would stand outside the limits.
constexpr const char* kFlags = "--single-threaded --optimize-for-size --no-expose-wasm";

constexpr int kStackFrames = 10;

constexpr std::size_t kReasonSize = 128;

// Gives array buffers zeroed memory up to a limit in all; beyond it the script gets a RangeError.
class LimitedAllocator final : public v8::ArrayBuffer::Allocator {
 public:
  void* Allocate(std::size_t length) override {
    if (length > kMaxArrayBuffers - taken_) return nullptr;
    void* memory = std::calloc(length > 0 ? length : 1, 1);
    if (memory != nullptr) taken_ += length;
    return memory;
  }
  void* AllocateUninitialized(std::size_t length) override { return Allocate(length); }
  void Free(void* memory, std::size_t length) override {
    taken_ -= length;
    std::free(memory);
  }

 private:
  std::size_t taken_ = 0;
};

// What the launcher prepares and every child inherits.
struct Prepared {
  v8::Platform* platform;
  v8::Isolate* isolate;
  v8::Global<v8::Context> context;
};

Prepared& preparedKeptForLife() {
  static auto& prepared = *new Prepared{};
  return prepared;
}

LimitedAllocator& allocatorKeptForLife() {
  static auto& allocator = *new LimitedAllocator;
  return allocator;
}

// Comes right before the engine would give up on its own, with a report on standard output that
// nobody asked for.
std::size_t heapLimitReached(void* /*data*/, std::size_t limit, std::size_t /*initial*/) {
  std::array<char, kReasonSize> reason{};
  std::snprintf(reason.data(), reason.size(),
                "the application's heap has reached its limit of %zu bytes", limit);
  endForWantOfMemory(reason.data());
}

// The engine gives no text of its own where it fails before it has an isolate.
const char* orUnknown(const char* text) { return text != nullptr ? text : "unknown place"; }

// Anything of the engine's that stands beside its heap, such as the trees of its parsers.
void outOfMemory(const char* location, bool /*isHeapLimit*/) {
  endForWantOfMemory(orUnknown(location));
}

void fatalError(const char* location, const char* message) {
  g_error("script engine failed: %s: %s", orUnknown(location), orUnknown(message));
}

bool drawEntropy(unsigned char* buffer, std::size_t length) {
  return getentropy(buffer, length) == 0;
}

v8::Isolate* newIsolate() {
  v8::Isolate::CreateParams params;
  params.constraints.set_max_young_generation_size_in_bytes(kMaxYoungSpace);
  params.constraints.set_max_old_generation_size_in_bytes(kMaxOldSpace);
  params.array_buffer_allocator = &allocatorKeptForLife();
  return v8::Isolate::New(params);
}

struct Region {
  std::uintptr_t begin = 0;
  std::uintptr_t end = 0;
};

// The first line of what the system tells of a region.
std::optional<Region> regionOf(const std::string& line) {
  Region region;
  if (std::sscanf(line.c_str(), "%" SCNxPTR "-%" SCNxPTR " ", &region.begin, &region.end) != 2) {
    return std::nullopt;
  }
  return region;
}

// The engine asks the system to leave its heap out of a fork, and a child is to have it.
void keepAcrossFork() {
  std::ifstream maps("/proc/self/smaps");
  Region region;
  for (std::string line; std::getline(maps, line);) {
    region = regionOf(line).value_or(region);
    if (!line.starts_with("VmFlags:") || line.find(" dc") == std::string::npos) continue;
    // NOLINTNEXTLINE(performance-no-int-to-ptr): the system tells addresses as numbers.
    madvise(reinterpret_cast<void*>(region.begin), region.end - region.begin, MADV_DOFORK);
  }
}

// The collection at its end puts what is kept where the collections of the children leave it alone,
// so that they share its pages.
void runIn(Prepared& prepared, v8::Local<v8::Context> (*rehearsal)()) {
  const v8::Isolate::Scope entered(prepared.isolate);
  {
    const v8::HandleScope handles(prepared.isolate);
    prepared.context.Reset(prepared.isolate, rehearsal());
  }
  prepared.isolate->LowMemoryNotification();
}

// Or else all children of one launcher drew the same numbers. Every context begins with this number
// when its script draws the first time, and none has yet.
void drawRandomState() {
  std::uint32_t seed = 0;
  drawEntropy(reinterpret_cast<unsigned char*>(&seed), sizeof seed);
  constexpr std::uint32_t kMost = INT_MAX - 1;
  v8::V8::SetFlagsFromString(("--random-seed=" + std::to_string(seed % kMost + 1)).c_str());
}

void watchOver(v8::Isolate* isolate) {
  isolate->AddNearHeapLimitCallback(heapLimitReached, nullptr);
  isolate->SetOOMErrorHandler(outOfMemory);
  isolate->SetFatalErrorHandler(fatalError);
  isolate->AddMessageListener(onEngineMessage);
  isolate->SetPromiseRejectCallback(onPromiseReject);
  isolate->SetCaptureStackTraceForUncaughtExceptions(true, kStackFrames, v8::StackTrace::kOverview);
}

// The space's number among the heap's spaces.
std::size_t spaceNamed(v8::Isolate* isolate, std::string_view name) {
  v8::HeapSpaceStatistics space;
  std::size_t index = 0;
  for (; index < isolate->NumberOfHeapSpaces(); ++index) {
    if (isolate->GetHeapSpaceStatistics(&space, index) && space.space_name() == name) break;
  }
  return index;
}

// Looked at after each run of script, where a look at the whole heap would cost more than the run.
bool hasYoungLargeObject(v8::Isolate* isolate) {
  static const std::size_t kIndex = spaceNamed(isolate, "new_large_object_space");
  v8::HeapSpaceStatistics space;
  return !isolate->GetHeapSpaceStatistics(&space, kIndex) || space.space_used_size() > 0;
}

// The engine lets the first large object of its young space pass, whatever its size, and counts it
// at the next collection only. So that one comes now: it frees what nobody needs any more, and what
// is still too much ends the process as told at heapLimitReached.
void holdToLimit(v8::Isolate* isolate) {
  if (!hasYoungLargeObject(isolate)) return;
  v8::HeapStatistics heap;
  isolate->GetHeapStatistics(&heap);
  if (heap.used_heap_size() > heap.heap_size_limit()) isolate->LowMemoryNotification();
}

}  // namespace

// In the launcher, so that no child needs time for it. Nothing has a thread yet, and the isolate
// lives on in each child.
void Engine::prepare(v8::Local<v8::Context> (*rehearsal)()) {
  v8::V8::SetFlagsFromString(kFlags);
  v8::V8::SetEntropySource(drawEntropy);  // fresh for every isolate, also after a fork
  Prepared& prepared = preparedKeptForLife();
  prepared.platform = v8::platform::NewSingleThreadedDefaultPlatform().release();
  v8::V8::InitializePlatform(prepared.platform);
  v8::V8::Initialize();
  prepared.isolate = newIsolate();
  if (rehearsal != nullptr) runIn(prepared, rehearsal);
  keepAcrossFork();
}

Engine::Engine() : isolate_(std::exchange(preparedKeptForLife().isolate, nullptr)) {
  if (isolate_ == nullptr) isolate_ = newIsolate();  // a second one in a process
  drawRandomState();
  isolate_->Enter();
  watchOver(isolate_);
}

Engine::~Engine() {
  preparedKeptForLife().context.Reset();
  isolate_->Exit();
  isolate_->Dispose();
}

v8::MaybeLocal<v8::Context> Engine::takeContext() {
  v8::Global<v8::Context> context = std::move(preparedKeptForLife().context);
  return context.Get(v8::Isolate::GetCurrent());
}

void Engine::runPendingTasks(v8::Isolate* isolate) {
  const EngineRunsScript running;
  while (v8::platform::PumpMessageLoop(preparedKeptForLife().platform, isolate)) {
  }
  holdToLimit(isolate);
}

void Engine::giveUpPrepared() {
  preparedKeptForLife().context.Reset();
  v8::Isolate* isolate = std::exchange(preparedKeptForLife().isolate, nullptr);
  if (isolate != nullptr) isolate->Dispose();
}

void Engine::dispose() {
  v8::V8::Dispose();
  v8::V8::DisposePlatform();
}

}  // namespace morvik
