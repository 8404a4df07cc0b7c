// The table of awaited replies: found by id, swept by age.
#include "channel/callback-table.h"

#include <glib.h>

#include <map>
#include <utility>

namespace morvik {
namespace {

using Entry = std::shared_ptr<CallbackEntry>;

// The comparison reads four bytes of each key, so a shorter one is padded with zeroes.
std::string padded(const std::string& id) {
  std::string key = id;
  if (key.size() < sizeof(gint)) key.resize(sizeof(gint));
  return key;
}

// The entries by id, and their ids by time: a registration that finds nothing old enough looks at
// one of them, and one that does looks at no more than it takes out. An application that sends
// once a second keeps 36,000 entries, and walking over all of them costs as much as a round trip.
class CallbackTable {
 public:
  // The hash covers the whole id but the comparison its first four bytes only, on purpose. Fresh
  // ids never meet that way; of two that do, the later request takes the earlier one's answers.
  CallbackTable() : entries_(g_hash_table_new_full(g_str_hash, g_int_equal, g_free, release)) {}
  ~CallbackTable() { g_hash_table_destroy(entries_); }
  CallbackTable(const CallbackTable&) = delete;
  CallbackTable& operator=(const CallbackTable&) = delete;

  void sweep(std::time_t now) {
    while (!ages_.empty() && now - ages_.begin()->first > kMaxEntryAge) {
      g_hash_table_remove(entries_, ages_.begin()->second);
    }
  }

  void insert(const std::string& id, Entry entry) {
    const std::string key = padded(id);
    g_hash_table_remove(entries_, key.c_str());  // its place among the ages as well
    auto* owned = static_cast<char*>(g_memdup2(key.c_str(), key.size() + 1));
    // The clock may have been set back, so the newest entry need not be the last.
    const auto place = ages_.emplace_hint(ages_.end(), entry->time, owned);
    g_hash_table_insert(entries_, owned, new Kept{std::move(entry), *this, place});
  }

  [[nodiscard]] Entry find(const std::string& id) const {
    const auto* kept = static_cast<Kept*>(g_hash_table_lookup(entries_, padded(id).c_str()));
    return kept != nullptr ? kept->entry : nullptr;
  }

 private:
  using Ages = std::multimap<std::time_t, const char*>;  // the texts are the hash table's keys

  struct Kept {
    Entry entry;
    CallbackTable& table;
    Ages::iterator place;
  };

  static void release(gpointer value) {
    const std::unique_ptr<Kept> kept(static_cast<Kept*>(value));
    kept->table.ages_.erase(kept->place);
  }

  Ages ages_;
  GHashTable* entries_;
};

// A plain pointer: a process that ends by exit releases nothing, because the script functions in
// the entries can only be released with the engine around them.
CallbackTable* callbackTable = nullptr;
G_LOCK_DEFINE_STATIC(callbackTable);

class Locked {
 public:
  Locked() { G_LOCK(callbackTable); }
  ~Locked() { G_UNLOCK(callbackTable); }
  Locked(const Locked&) = delete;
  Locked& operator=(const Locked&) = delete;
};

}  // namespace

void registerCallback(const std::string& id, std::shared_ptr<CallbackEntry> entry,
                      std::time_t now) {
  const Locked locked;
  if (callbackTable == nullptr) callbackTable = new CallbackTable;
  callbackTable->sweep(now);
  entry->time = now;
  callbackTable->insert(id, std::move(entry));
}

std::shared_ptr<CallbackEntry> findCallback(const zeph::ZephMsg& message) {
  const Locked locked;
  return callbackTable != nullptr ? callbackTable->find(message.correlationid()) : nullptr;
}

void callCallback(const std::shared_ptr<CallbackEntry>& entry, const zeph::ZephMsg& message) {
  g_debug("zephmsg callback handler");
  g_debug("function pointer: %p", reinterpret_cast<void*>(entry->function));
  g_debug("callback data: %p", entry->data.get());
  g_debug("response: %p", static_cast<const void*>(&message));
  entry->function(entry->data.get(), message);
}

void releaseCallbacks() {
  const Locked locked;
  delete std::exchange(callbackTable, nullptr);
}

}  // namespace morvik
