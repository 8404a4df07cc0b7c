// A main loop of a test's own, that runs until something has happened.
#pragma once

#include <functional>

#include "device/owned.h"

namespace morvik::test {

using Context = std::unique_ptr<GMainContext, devkit::Release<g_main_context_unref>>;

// The thread-default main context for as long as it lives.
class Loop {
 public:
  Loop();
  ~Loop();
  Loop(const Loop&) = delete;
  Loop& operator=(const Loop&) = delete;

  // Runs until the condition holds. False when it does not hold in time.
  [[nodiscard]] bool runUntil(const std::function<bool()>& condition);

  // Runs what is ready now, without waiting for more.
  void runReady();

  GMainContext* context() const { return context_.get(); }

 private:
  Context context_;
};

}  // namespace morvik::test
