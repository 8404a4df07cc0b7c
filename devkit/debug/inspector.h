// The engine's inspector beside one application: a debugger's messages go in, the application's
// pauses and answers come out.
#pragma once

#include <v8-inspector.h>
#include <v8.h>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "debug/client-queue.h"
#include "device/owned.h"

namespace morvik::devkit {

/// Works in the application's thread. Says in the host's log what a debugger does to the
/// application, in lines that begin with "debugger: ".
class Inspector final : private v8_inspector::V8InspectorClient,
                        private v8_inspector::V8Inspector::Channel {
 public:
  /// Gets each message for the debugger, UTF-8.
  using Send = std::function<void(std::string)>;

  /// From now on the application's context can be debugged, and what comes in the queue is looked
  /// at whenever the main loop turns, script runs, or the application is paused. Scripts are told
  /// by addresses below the folder's, "file:///home/me/my-app".
  Inspector(v8::Isolate* isolate, v8::Local<v8::Context> context, ClientQueue& queue, Send send,
            std::string folder, const std::string& title);
  /// With the engine and the context still there.
  ~Inspector() override;
  Inspector(const Inspector&) = delete;
  Inspector& operator=(const Inspector&) = delete;

  /// Waits until a debugger lets the application run, and has it stop at its first line.
  void waitForDebugger();

  /// Tells the debugger of an exception that no script has caught.
  void thrown(const v8::TryCatch& tryCatch);

 private:
  void runMessageLoopOnPause(int group) override;
  void quitMessageLoopOnPause() override { resumed_ = true; }
  void runIfWaitingForDebugger(int /*group*/) override { mayStart_ = true; }
  v8::Local<v8::Context> ensureDefaultContextInGroup(int group) override;
  std::unique_ptr<v8_inspector::StringBuffer> resourceNameToUrl(
      const v8_inspector::StringView& name) override;
  double currentTimeMS() override;
  void startRepeatingTimer(double seconds, TimerCallback callback, void* data) override;
  void cancelTimer(void* data) override;

  void sendResponse(int call, std::unique_ptr<v8_inspector::StringBuffer> message) override;
  void sendNotification(std::unique_ptr<v8_inspector::StringBuffer> message) override;
  void flushProtocolNotifications() override {}

  void takeCalls();
  void look();
  void lookLater();
  void obey(const ClientEvent& event);
  void dispatch(const std::string& message);
  void leave();
  void settle();
  void hold(const std::string& where, const bool& done);
  bool mayTake(const ClientEvent& event) const;

  v8::Isolate* isolate_;
  v8::Global<v8::Context> context_;
  ClientQueue& queue_;
  Send send_;
  std::string folder_;
  std::unique_ptr<v8_inspector::V8Inspector> inspector_;
  std::unique_ptr<v8_inspector::V8InspectorSession> session_;
  std::map<void*, GSourceOwned> timers_;
  bool left_ = false;      // its debugger has gone, and it goes when nothing of it runs any more
  int running_ = 0;        // of its messages, one within the other
  bool forsaken_ = false;  // nobody is there who could end a pause
  bool paused_ = false;
  bool resumed_ = false;
  bool mayStart_ = false;
};

}  // namespace morvik::devkit
