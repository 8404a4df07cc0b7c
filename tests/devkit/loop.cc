// A main loop with a deadline.
#include "loop.h"

namespace morvik::test {

using namespace devkit;
namespace {

// How long a test waits for what must come. A passing test never waits that long.
constexpr guint kDeadlineMs = 30000;

gboolean raise(gpointer flag) {
  *static_cast<bool*>(flag) = true;
  return G_SOURCE_CONTINUE;
}

}  // namespace

Loop::Loop() : context_(g_main_context_new()) {
  g_main_context_push_thread_default(context_.get());
}

Loop::~Loop() {
  runReady();  // cancelled reads and writes are still to return
  g_main_context_pop_thread_default(context_.get());
}

bool Loop::runUntil(const std::function<bool()>& condition) {
  bool late = false;
  const GSourceOwned deadline(g_timeout_source_new(kDeadlineMs));
  g_source_set_callback(deadline.get(), raise, &late, nullptr);
  g_source_attach(deadline.get(), context_.get());
  while (!condition() && !late) g_main_context_iteration(context_.get(), TRUE);
  g_source_destroy(deadline.get());
  return condition();
}

void Loop::runReady() {
  while (g_main_context_iteration(context_.get(), FALSE) != FALSE) {
  }
}

}  // namespace morvik::test
