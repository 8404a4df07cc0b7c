// What the device keeps for its user beyond its own end: credentials, messages and contacts.
#pragma once

#include <zeph-message.pb.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "device/database.h"

namespace morvik::devkit {

namespace zeph = net::quelta::zeph::message;

/// An operation that fails gives nothing or false, has changed nothing, and leaves its reason in
/// `trouble`.
class Store {
 public:
  using Ids = google::protobuf::RepeatedPtrField<std::string>;
  using Messages = std::vector<zeph::MorvikMessage>;
  using Contacts = std::vector<zeph::Contact>;

  /// In memory: what it keeps ends with it.
  static std::unique_ptr<Store> inMemory();
  /// In a file of the folder; both are made when they are not there, readable for their owner only.
  /// Null when that cannot be, with the reason in `trouble`. A file that is damaged or no store is
  /// left as it is.
  [[nodiscard]] static std::unique_ptr<Store> open(const std::string& folder, std::string& trouble);

  const std::string& trouble() const { return trouble_; }

  [[nodiscard]] std::optional<zeph::Social> credentials();
  /// In place of all that were kept.
  [[nodiscard]] bool keepCredentials(const zeph::Social& credentials);

  /// Oldest first.
  [[nodiscard]] std::optional<Messages> messages();
  /// Those of the ids, in their order. An id that no message has is left out, here and below.
  [[nodiscard]] std::optional<Messages> messages(const Ids& ids);
  /// Gives it an id that no other message has or had, and returns it.
  [[nodiscard]] std::optional<zeph::MorvikMessage> addMessage(zeph::MorvikMessage message);
  /// The messages as they are afterwards.
  [[nodiscard]] std::optional<Messages> markAsRead(const Ids& ids);
  /// The messages that are gone.
  [[nodiscard]] std::optional<Messages> removeMessages(const Ids& ids);

  /// In the order in which they came.
  [[nodiscard]] std::optional<Contacts> contacts();
  /// In the place of the one with its uuid, or behind all others.
  [[nodiscard]] bool keepContact(const zeph::Contact& contact);

 private:
  Store() = default;
  [[nodiscard]] bool prepare();
  [[nodiscard]] bool isSound();
  [[nodiscard]] bool isOwn();
  [[nodiscard]] std::optional<std::string> one(const char* query);

  // The first columns of all rows, read as messages of the schema.
  template <class Kept>
  [[nodiscard]] std::optional<std::vector<Kept>> read(const char* query,
                                                      Database::Values values = {});
  [[nodiscard]] bool write(const char* sql, Database::Values values);
  // The messages of the ids, with `change` done to each; all or none.
  template <class Change>
  [[nodiscard]] std::optional<Messages> changeEach(const Ids& ids, Change change);
  std::nullopt_t failed(const std::string& why);

  Database database_;
  std::string trouble_;
};

}  // namespace morvik::devkit
