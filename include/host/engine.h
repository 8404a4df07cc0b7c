// The script engine's set-up: flags, platform, limits, random state and the isolate. What the
// launcher prepares and what a child does for itself both stand here and nowhere else.
#pragma once

#include <v8.h>

#include <cstddef>

namespace morvik {

/// Limits of one application's engine, in bytes.
inline constexpr std::size_t kMaxYoungSpace = 2097152;
inline constexpr std::size_t kMaxOldSpace = 10485760;
/// Array buffers stand outside the engine's heap; together they get this much.
inline constexpr std::size_t kMaxArrayBuffers = 10485760;

/// An isolate within the limits, entered for as long as the Engine lives. One per process.
/// Out of memory, and whatever else the engine cannot go on from, ends the process through a fatal
/// log that says so.
class Engine {
 public:
  /// Once in a process, before any fork that is to use the engine: starts no thread, and makes the
  /// isolate that each child inherits. `rehearsal`, when not null, runs in it. What it leaves
  /// behind there is collected, but for the context that it returns: takeContext hands it out.
  static void prepare(v8::Local<v8::Context> (*rehearsal)() = nullptr);

  /// In a child: takes the inherited isolate and gives it random state of its own. Every exception
  /// and promise rejection that nobody handles is reported in the log, and nothing on standard
  /// output.
  Engine();
  ~Engine();
  Engine(const Engine&) = delete;
  Engine& operator=(const Engine&) = delete;

  /// The context that the rehearsal made, in a child that has an Engine. Each child gets it once;
  /// empty where there is none.
  static v8::MaybeLocal<v8::Context> takeContext();

  /// Lets the engine do what it has put off (finalisers, idle collections). From the main loop
  /// only.
  static void runPendingTasks(v8::Isolate* isolate);

  /// At the launcher's end: frees the isolate that no child will inherit any more. Does nothing in
  /// a child, which has taken it.
  static void giveUpPrepared();

  /// Ends the engine for good; no Engine may live or follow.
  static void dispose();

 private:
  v8::Isolate* isolate_;
};

}  // namespace morvik
