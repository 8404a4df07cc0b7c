// Three tables: each row a key and, in the schema's own form, what is kept under it.
#include "device/store.h"

#include <glib/gstdio.h>

#include <cerrno>
#include <cstring>

#include "device/owned.h"

namespace morvik::devkit {
namespace {

constexpr char kFile[] = "device.sqlite";
constexpr int kOwnerOnly = 0700;

// The number in the file's head that says whose it is; the letters "Morv".
constexpr char kApplicationId[] = "1299149430";
constexpr char kVersion[] = "1";

constexpr const char* kLayout[] = {
    "PRAGMA application_id = 1299149430",
    "PRAGMA user_version = 1",
    "CREATE TABLE IF NOT EXISTS credentials (owner TEXT PRIMARY KEY, credentials BLOB NOT NULL)",
    "CREATE TABLE IF NOT EXISTS messages (id TEXT PRIMARY KEY, message BLOB NOT NULL)",
    "CREATE TABLE IF NOT EXISTS contacts (uuid TEXT PRIMARY KEY, contact BLOB NOT NULL)",
};

// The device has one user.
constexpr char kOwner[] = "user";

Database::Blob blobOf(const google::protobuf::Message& message) {
  return {message.SerializeAsString()};
}

}  // namespace

std::unique_ptr<Store> Store::inMemory() {
  std::unique_ptr<Store> store(new Store);
  const bool ready = store->database_.openInMemory() && store->prepare();
  g_assert(ready);
  return store;
}

std::unique_ptr<Store> Store::open(const std::string& folder, std::string& trouble) {
  if (g_mkdir_with_parents(folder.c_str(), kOwnerOnly) != 0) {
    trouble = folder + ": " + std::strerror(errno);
    return nullptr;
  }
  std::unique_ptr<Store> store(new Store);
  const std::string file = folder + '/' + kFile;
  const bool opened = store->database_.open(file);
  if (!opened) store->trouble_ = store->database_.trouble();
  if (opened && store->isSound() && store->isOwn() && store->prepare()) return store;
  trouble = file + ": " + store->trouble_;
  return nullptr;
}

// A damaged file may look whole until the damaged page is met, so all of it is read.
bool Store::isSound() {
  const auto verdict = one("PRAGMA quick_check(1)");
  if (verdict && *verdict != "ok") failed("the file is damaged");
  return verdict == "ok";
}

bool Store::isOwn() {
  const auto tables = one("SELECT count(*) FROM sqlite_schema");
  const auto application = one("PRAGMA application_id");
  const auto version = one("PRAGMA user_version");
  if (!tables || !application || !version) return false;
  if (tables == "0") return true;
  if (application != kApplicationId) failed("belongs to another program");
  if (application == kApplicationId && version != kVersion) failed("is of another version");
  return application == kApplicationId && version == kVersion;
}

// Writes in any case, so that a file that cannot be written is met here.
bool Store::prepare() {
  Transaction transaction(database_);
  bool done = transaction.begun();
  for (const char* step : kLayout) done = done && database_.does(step);
  done = done && transaction.commit();
  if (!done) failed(database_.trouble());
  return done;
}

std::optional<zeph::Social> Store::credentials() {
  const auto kept = read<zeph::Social>("SELECT credentials FROM credentials");
  if (!kept) return std::nullopt;
  return kept->empty() ? zeph::Social() : kept->front();
}

bool Store::keepCredentials(const zeph::Social& credentials) {
  return write("INSERT OR REPLACE INTO credentials VALUES (?, ?)", {kOwner, blobOf(credentials)});
}

std::optional<Store::Messages> Store::messages() {
  return read<zeph::MorvikMessage>("SELECT message FROM messages ORDER BY rowid");
}

std::optional<Store::Messages> Store::messages(const Ids& ids) {
  return changeEach(ids, [](const zeph::MorvikMessage& /*message*/) { return true; });
}

std::optional<zeph::MorvikMessage> Store::addMessage(zeph::MorvikMessage message) {
  const std::string id = GText(g_uuid_string_random()).get();
  message.mutable_header()->set_id(id);
  if (!write("INSERT INTO messages VALUES (?, ?)", {id, blobOf(message)})) return std::nullopt;
  return message;
}

std::optional<Store::Messages> Store::markAsRead(const Ids& ids) {
  return changeEach(ids, [this](zeph::MorvikMessage& message) {
    message.mutable_header()->set_status(zeph::MorvikMessageHeader::READ);
    return write("UPDATE messages SET message = ? WHERE id = ?",
                 {blobOf(message), message.header().id()});
  });
}

std::optional<Store::Messages> Store::removeMessages(const Ids& ids) {
  return changeEach(ids, [this](const zeph::MorvikMessage& message) {
    return write("DELETE FROM messages WHERE id = ?", {message.header().id()});
  });
}

std::optional<Store::Contacts> Store::contacts() {
  return read<zeph::Contact>("SELECT contact FROM contacts ORDER BY rowid");
}

bool Store::keepContact(const zeph::Contact& contact) {
  return write(
      "INSERT INTO contacts VALUES (?, ?)"
      " ON CONFLICT (uuid) DO UPDATE SET contact = excluded.contact",
      {contact.uuid(), blobOf(contact)});
}

std::optional<std::string> Store::one(const char* query) {
  const auto rows = database_.run(query);
  if (!rows) return failed(database_.trouble());
  return rows->empty() ? std::string() : rows->front().front();
}

template <class Kept>
std::optional<std::vector<Kept>> Store::read(const char* query, Database::Values values) {
  const auto rows = database_.run(query, values);
  if (!rows) return failed(database_.trouble());
  std::vector<Kept> all;
  for (const Database::Row& row : *rows) {
    if (!all.emplace_back().ParseFromString(row.front())) return failed("damaged entry");
  }
  return all;
}

bool Store::write(const char* sql, Database::Values values) {
  const bool written = database_.does(sql, values);
  if (!written) failed(database_.trouble());
  return written;
}

template <class Change>
std::optional<Store::Messages> Store::changeEach(const Ids& ids, Change change) {
  Transaction transaction(database_);
  if (!transaction.begun()) return failed(database_.trouble());
  Messages changed;
  for (const std::string& id : ids) {
    auto found = read<zeph::MorvikMessage>("SELECT message FROM messages WHERE id = ?", {id});
    if (!found) return std::nullopt;
    for (zeph::MorvikMessage& message : *found) {
      if (!change(message)) return std::nullopt;
      changed.push_back(std::move(message));
    }
  }
  if (!transaction.commit()) return failed(database_.trouble());
  return changed;
}

std::nullopt_t Store::failed(const std::string& why) {
  trouble_ = why;
  return std::nullopt;
}

}  // namespace morvik::devkit
