// The user's messages, those that came and those that were sent. No message of the wire tells an
// application that one came: it asks.
#include <algorithm>
#include <cstdint>

#include "device/describe.h"
#include "device/handlers.h"
#include "device/owned.h"
#include "device/store.h"

namespace morvik::devkit {
namespace {

using Query = zeph::MorvikMessageQuery;
using Header = zeph::MorvikMessageHeader;

// The device's user stands at one end of every message.
zeph::Contact owner() {
  zeph::Contact owner;
  owner.set_alias("owner");
  owner.set_uuid("owner");
  return owner;
}

// The wire's date ends in 2038.
std::int32_t now() {
  return static_cast<std::int32_t>(
      std::min<std::int64_t>(g_get_real_time() / G_USEC_PER_SEC, G_MAXINT32));
}

std::optional<Store::Messages> add(Store& store, zeph::MorvikMessage message) {
  message.mutable_header()->set_date(now());
  auto added = store.addMessage(std::move(message));
  if (!added) return std::nullopt;
  return Store::Messages{std::move(*added)};
}

// Its sender knows a message, unless it goes to the sender's own box.
std::optional<Store::Messages> addSent(Store& store, zeph::MorvikMessage message) {
  Header& header = *message.mutable_header();
  *header.mutable_from() = owner();
  const bool comesBack = header.to().uuid() == owner().uuid();
  header.set_status(comesBack ? Header::UNREAD : Header::READ);
  return add(store, std::move(message));
}

std::optional<Store::Messages> carryOut(Store& store, const Query& query) {
  switch (query.action()) {
    case Query::NEW:
      return addSent(store, query.message());
    case Query::LIST:
      return store.messages();
    case Query::GET:
      return store.messages(query.id());
    case Query::DELETE:
      return store.removeMessages(query.id());
    case Query::READ:
      return store.markAsRead(query.id());
  }
  return Store::Messages{};  // no other value comes out of a parsed message
}

// What is known of the sender, or the uuid alone.
std::optional<zeph::Contact> senderOf(Store& store, const std::string& uuid) {
  const auto contacts = store.contacts();
  if (!contacts) return std::nullopt;
  const auto found =
      std::find_if(contacts->begin(), contacts->end(),
                   [&](const zeph::Contact& contact) { return contact.uuid() == uuid; });
  if (found != contacts->end()) return *found;
  zeph::Contact stranger;
  stranger.set_uuid(uuid);
  return stranger;
}

// False when the store fails.
bool addReceived(Store& store, const std::string& from, zeph::MorvikMessageContent content) {
  auto sender = senderOf(store, from);
  if (!sender) return false;
  zeph::MorvikMessage message;
  Header& header = *message.mutable_header();
  header.set_status(Header::UNREAD);
  *header.mutable_from() = std::move(*sender);
  *header.mutable_to() = owner();
  *message.mutable_content() = std::move(content);
  return add(store, std::move(message)).has_value();
}

}  // namespace

// The messages that the query is about stand in every answer, as they are afterwards, those that
// were deleted as they were: a response alone would not reach the script.
void answerMessageQuery(const Exchange& exchange) {
  const Query& query = exchange.request().morvikmessagequery();
  if (query.action() == Query::NEW && !query.has_message()) {
    return exchange.respond(zeph::ERROR, "a new message needs a message");
  }
  Store& store = exchange.device().store();
  const auto messages = carryOut(store, query);
  if (!messages) return exchange.respond(zeph::ERROR, store.trouble());
  zeph::ZephMsg answer;
  answer.mutable_response()->set_code(zeph::OK);
  answer.mutable_morvikmessageresponse()->mutable_morvikmessagelist()->Assign(messages->begin(),
                                                                              messages->end());
  exchange.reply(std::move(answer));
}

void bringMessage(Stimulation& stimulation) {
  zeph::MorvikMessageContent content;
  const auto type = stimulation.named("type");
  content.set_type(type ? stimulation.choiceFrom<zeph::MorvikMessageContent::Type>(*type)
                        : zeph::MorvikMessageContent::TEXT);
  if (const auto header = stimulation.named("header")) content.set_header(*header);
  const std::string from = stimulation.id("the sender's UUID");
  content.set_content(stimulation.text("the TEXT"));
  stimulation.mustBeForAll();
  if (!stimulation.understood()) return;
  Store& store = stimulation.device().store();
  if (!addReceived(store, from, std::move(content))) return stimulation.refuse(store.trouble());
  stimulation.device().note("a message of " + cited(from) + " came");
}

}  // namespace morvik::devkit
