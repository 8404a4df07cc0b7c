// The table of awaited replies.
#include "channel/callback-table.h"

#include <glib.h>

#include "channel/connection.h"

namespace morvik {
namespace {

using Entry = std::shared_ptr<CallbackEntry>;

GHashTable* callbackTable = nullptr;
G_LOCK_DEFINE_STATIC(callbackTable);

class Locked {
 public:
  Locked() { G_LOCK(callbackTable); }
  ~Locked() { G_UNLOCK(callbackTable); }
  Locked(const Locked&) = delete;
  Locked& operator=(const Locked&) = delete;
};

// The comparison reads four bytes of each key, so a shorter one is padded with zeroes.
std::string padded(const std::string& id) {
  std::string key = id;
  if (key.size() < sizeof(gint)) key.resize(sizeof(gint));
  return key;
}

void releaseEntry(gpointer value) { delete static_cast<Entry*>(value); }

// The hash covers the whole id but the comparison its first four bytes only, on purpose.
void createTableOnce() {
  if (callbackTable != nullptr) return;
  callbackTable = g_hash_table_new_full(g_str_hash, g_int_equal, g_free, releaseEntry);
}

gboolean isTooOld(gpointer /*key*/, gpointer value, gpointer now) {
  return *static_cast<std::time_t*>(now) - (*static_cast<Entry*>(value))->time > kMaxEntryAge;
}

}  // namespace

void registerCallback(const std::string& id, std::shared_ptr<CallbackEntry> entry) {
  const Locked locked;
  createTableOnce();
  std::time_t now = std::time(nullptr);
  g_hash_table_foreach_remove(callbackTable, isTooOld, &now);
  entry->time = std::time(nullptr);
  const std::string key = padded(id);
  g_hash_table_insert(callbackTable, g_memdup2(key.c_str(), key.size() + 1),
                      new Entry(std::move(entry)));
}

std::shared_ptr<CallbackEntry> findCallback(const zeph::ZephMsg& message) {
  const Locked locked;
  if (callbackTable == nullptr) return nullptr;
  const std::string key = padded(message.correlationid());
  const auto* entry = static_cast<Entry*>(g_hash_table_lookup(callbackTable, key.c_str()));
  return entry != nullptr ? *entry : nullptr;
}

void callCallback(const std::shared_ptr<CallbackEntry>& entry, const zeph::ZephMsg& message) {
  g_debug("zephmsg callback handler");
  g_debug("function pointer: %p", reinterpret_cast<void*>(entry->function));
  g_debug("callback data: %p", entry->data.get());
  g_debug("response: %p", static_cast<const void*>(&message));
  entry->function(entry->data.get(), message);
}

void sendZephMsgCallback(int socket, const zeph::ZephMsg& message,
                         std::shared_ptr<CallbackEntry> entry) {
  registerCallback(message.id(), std::move(entry));
  sendZephMsg(socket, message);
}

void releaseCallbacks() {
  const Locked locked;
  g_clear_pointer(&callbackTable, g_hash_table_destroy);
}

}  // namespace morvik
