// One loop source whose ready time is set when somebody asks.
#include "page/paced-call.h"

#include <algorithm>
#include <utility>

namespace morvik::devkit {
namespace {

constexpr gint64 kNever = -1;  // as GLib takes it

gboolean dispatch(GSource* source, GSourceFunc callback, gpointer data) {
  g_source_set_ready_time(source, kNever);
  return callback(data);
}

GSourceFuncs kFunctions = {nullptr, nullptr, dispatch, nullptr, nullptr, nullptr};

}  // namespace

PacedCall::PacedCall(std::chrono::milliseconds interval, std::function<void()> call)
    : interval_(interval),
      call_(std::move(call)),
      source_(g_source_new(&kFunctions, sizeof(GSource))) {
  last_ = g_get_monotonic_time() - interval_.count();
  g_source_set_callback(source_.get(), onTime, this, nullptr);
  g_source_attach(source_.get(), g_main_context_get_thread_default());
}

PacedCall::~PacedCall() { g_source_destroy(source_.get()); }

void PacedCall::ask() {
  if (std::exchange(asked_, true)) return;
  g_source_set_ready_time(source_.get(), last_ + interval_.count());
}

gboolean PacedCall::onTime(gpointer self) {
  auto* paced = static_cast<PacedCall*>(self);
  paced->asked_ = false;
  paced->last_ = g_get_monotonic_time();
  paced->call_();
  return G_SOURCE_CONTINUE;
}

}  // namespace morvik::devkit
