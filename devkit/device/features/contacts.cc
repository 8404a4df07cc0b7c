// The user's contacts.
#include "device/describe.h"
#include "device/handlers.h"
#include "device/store.h"

namespace morvik::devkit {
namespace {

// ID:NAME, or ID alone for one without a name.
void addObject(Stimulation& stimulation, zeph::Contact& contact, const std::string& text) {
  const std::size_t colon = text.find(':');
  if (text.substr(0, colon).empty()) stimulation.refuse("the object's ID is empty");
  zeph::Contact::Object& object = *contact.add_objects();
  object.set_iddb(text.substr(0, colon));
  if (colon != std::string::npos) object.set_name(text.substr(colon + 1));
}

zeph::Contact contactFrom(Stimulation& stimulation) {
  zeph::Contact contact;
  if (const auto name = stimulation.named("firstname")) contact.set_firstname(*name);
  if (const auto name = stimulation.named("lastname")) contact.set_lastname(*name);
  if (const auto alias = stimulation.named("alias")) contact.set_alias(*alias);
  while (const auto object = stimulation.named("object")) addObject(stimulation, contact, *object);
  contact.set_uuid(stimulation.id("the contact's UUID"));
  return contact;
}

}  // namespace

// One message only, without a response beside it, like every answer that is a payload of its own.
void answerContactQuery(const Exchange& exchange) {
  Store& store = exchange.device().store();
  const auto contacts = store.contacts();
  if (!contacts) return exchange.respond(zeph::ERROR, store.trouble());
  zeph::ZephMsg answer;
  answer.mutable_contactlist()->mutable_contacts()->Assign(contacts->begin(), contacts->end());
  exchange.reply(std::move(answer));
}

void keepContact(Stimulation& stimulation) {
  const zeph::Contact contact = contactFrom(stimulation);
  stimulation.mustBeForAll();
  if (!stimulation.understood()) return;
  Store& store = stimulation.device().store();
  if (!store.keepContact(contact)) return stimulation.refuse(store.trouble());
  stimulation.device().note("the contact " + cited(contact.uuid()) + " is kept");
}

}  // namespace morvik::devkit
