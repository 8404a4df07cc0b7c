// The user's messages, those that came and those that were sent. No message of the wire tells an
// application that one came: it asks.
#include <algorithm>
#include <cstdint>

#include "device/exchange.h"
#include "device/features/contact-json.h"
#include "device/features/features.h"
#include "device/owned.h"
#include "device/stimulation.h"
#include "device/text.h"
#include "device/view.h"

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

// The messages that the query is about stand in every answer, as they are afterwards, those that
// were deleted as they were: a response alone would not reach the script.
void answer(const Exchange& exchange) {
  const Query& query = exchange.request().morvikmessagequery();
  if (query.action() == Query::NEW && !query.has_message()) {
    return exchange.respond(zeph::ERROR, "a new message needs a message");
  }
  Store& store = exchange.device().store();
  const auto messages = carryOut(store, query);
  if (!messages) return exchange.respond(zeph::ERROR, store.trouble());
  if (query.action() != Query::LIST && query.action() != Query::GET) {
    exchange.device().changed("messages");
  }
  zeph::ZephMsg answer;
  answer.mutable_response()->set_code(zeph::OK);
  answer.mutable_morvikmessageresponse()->mutable_morvikmessagelist()->Assign(messages->begin(),
                                                                              messages->end());
  exchange.reply(std::move(answer));
}

void bringMessage(Stimulation& stimulation) {
  zeph::MorvikMessageContent content;
  content.set_type(stimulation.choice<zeph::MorvikMessageContent::Type>("type"));
  if (stimulation.has("header")) content.set_header(stimulation.text("header"));
  content.set_content(stimulation.text("text"));
  const std::string from = stimulation.text("uuid");
  if (!stimulation.understood()) return;
  Device& device = stimulation.device();
  if (!addReceived(device.store(), from, std::move(content))) {
    return stimulation.refuse(device.store().trouble());
  }
  device.changed("messages");
  device.note("a message of " + cited(from) + " came");
}

std::string query(const zeph::ZephMsg& message) {
  const auto& query = message.morvikmessagequery();
  std::string text = "messages " + Query::TypeAction_Name(query.action());
  for (const std::string& id : query.id()) text += ' ' + printable(id);
  if (!query.has_message()) return text;
  return text + " to " + printable(query.message().header().to().uuid()) +
         quotedIfAny(query.message().content().content());
}

std::string response(const zeph::ZephMsg& message) {
  const int count = message.morvikmessageresponse().morvikmessagelist_size();
  return std::to_string(count) + (count == 1 ? " message" : " messages");
}

void showMessage(const zeph::MorvikMessage& message, JsonObject shown) {
  const Header& header = message.header();
  shown.text("id", header.id()).number("date", header.date());
  shown.text("status", Header::Status_Name(header.status()));
  showContact(header.from(), shown.object("from"));
  showContact(header.to(), shown.object("to"));
  if (!message.has_content()) return;
  const zeph::MorvikMessageContent& content = message.content();
  shown.text("type", zeph::MorvikMessageContent::Type_Name(content.type()));
  if (content.has_header()) shown.text("header", content.header());
  shown.text("content", content.content());
}

std::string atAGlance(const DeviceView& view) {
  const auto unread = std::ranges::count_if(view.messages, [](const zeph::MorvikMessage& message) {
    return message.header().status() == zeph::MorvikMessageHeader::UNREAD;
  });
  return std::to_string(view.messages.size()) + ", " + std::to_string(unread) + " unread";
}

void show(const DeviceView& view, JsonObject& whole) {
  whole.list("messages");
  for (const zeph::MorvikMessage& message : view.messages) {
    showMessage(message, whole.added("messages"));
  }
}

constexpr Argument kMessage[] = {
    {.name = "uuid", .usage = "UUID", .what = "the sender's UUID", .kind = Argument::Kind::kId},
    {.name = "text", .usage = "TEXT", .what = "the TEXT"},
    {.name = "type",
     .what = "the type",
     .kind = Argument::Kind::kChoice,
     .form = Argument::Form::kNamed,
     .needed = false,
     .byDefault = "TEXT",
     .choices = namesOf<zeph::MorvikMessageContent::Type_descriptor>},
    {.name = "header", .usage = "TEXT", .form = Argument::Form::kNamed, .needed = false},
};

constexpr Command kCommands[] = {
    {zeph::ZephMsg::kMorvikMessageQueryFieldNumber, Command::Needs::kGrant, answer}};
constexpr Stimulus kStimuli[] = {{"message", Stimulus::Group::kUser, Stimulus::For::kDevice,
                                  kMessage, "put a message of this sender into the box",
                                  bringMessage}};
constexpr Words kWords[] = {
    {zeph::ZephMsg::kMorvikMessageQueryFieldNumber, query},
    {zeph::ZephMsg::kMorvikMessageResponseFieldNumber, response},
};
constexpr Glance kGlances[] = {{"messages", atAGlance}};

}  // namespace

constinit const Feature kMessageBoxFeature = {
    .commands = kCommands, .stimuli = kStimuli, .words = kWords, .glances = kGlances, .show = show};

}  // namespace morvik::devkit
