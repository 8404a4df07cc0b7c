// What is to come, each as a timeout source that this agenda can still take back.
#include "server/agenda.h"

#include <utility>

#include "device/owned.h"

namespace morvik::devkit {

struct Agenda::Entry {
  Agenda* agenda;
  GSource* source;  // alive for as long as this entry is: it owns the entry
  std::function<void()> what;
};

Agenda::Agenda() : start_(g_get_real_time() - g_get_monotonic_time()) {}

Agenda::~Agenda() {
  for (const auto entries = std::exchange(entries_, {}); Entry * entry : entries) {
    g_source_destroy(entry->source);
  }
}

void Agenda::after(std::chrono::milliseconds delay, std::function<void()> what) {
  const GSourceOwned source(g_timeout_source_new(static_cast<guint>(delay.count())));
  auto* entry = new Entry{this, source.get(), std::move(what)};
  g_source_set_callback(source.get(), onTime, entry,
                        [](gpointer data) { delete static_cast<Entry*>(data); });
  g_source_attach(source.get(), g_main_context_get_thread_default());
  entries_.insert(entry);
}

std::chrono::milliseconds Agenda::now() const {
  const std::chrono::microseconds passed(g_get_monotonic_time());
  return std::chrono::duration_cast<std::chrono::milliseconds>(start_ + passed);
}

int Agenda::onTime(void* data) {
  auto* entry = static_cast<Entry*>(data);
  entry->agenda->entries_.erase(entry);
  // Moved out first: what is called may end the agenda.
  const std::function<void()> what = std::move(entry->what);
  what();
  return G_SOURCE_REMOVE;
}

}  // namespace morvik::devkit
