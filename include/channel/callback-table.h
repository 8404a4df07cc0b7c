// Awaited replies: which function hears the answer to which request. The table keeps and finds;
// what is sent and received is the connection's.
#pragma once

#include <zeph-message.pb.h>

#include <ctime>
#include <memory>
#include <string>
#include <utility>

#include "host/zeph-msg-listener.h"

namespace morvik {

/// A reply function: hears every message that answers its request. `data` is the entry's. The
/// message lives only for the call.
using ReplyFunction = void (*)(void* data, const zeph::ZephMsg& message);

/// One awaited reply. Stays in the table after a reply, because a request may be answered several
/// times, until it is older than kMaxEntryAge when another one is registered.
struct CallbackEntry {
  ReplyFunction function = nullptr;
  std::shared_ptr<void> data;  ///< for `function`; released with the entry
  std::time_t time = 0;  ///< whole seconds, set by registerCallback; a later change ages nothing
};

/// The entry of a request that is about to be sent.
inline std::shared_ptr<CallbackEntry> awaiting(ReplyFunction function, std::shared_ptr<void> data) {
  return std::make_shared<CallbackEntry>(CallbackEntry{function, std::move(data)});
}

/// Age in seconds that an entry may reach.
inline constexpr std::time_t kMaxEntryAge = 36000;

/// Takes old entries out of the table, then adds this one under a request's id, in place of one
/// that stands there. Takes as long with a million entries as with ten. Ages are counted up to
/// `now`, which becomes the entry's time. A clock that was set back leaves entries whose time lies
/// ahead: they stay until that time is ten hours old.
void registerCallback(const std::string& id, std::shared_ptr<CallbackEntry> entry,
                      std::time_t now = std::time(nullptr));

/// The entry that awaits a reply with this message's correlationId, or null. Changes nothing.
std::shared_ptr<CallbackEntry> findCallback(const zeph::ZephMsg& message);

/// Runs the entry's reply function on the message.
void callCallback(const std::shared_ptr<CallbackEntry>& entry, const zeph::ZephMsg& message);

/// Releases the whole table, while the script engine still stands.
void releaseCallbacks();

}  // namespace morvik
