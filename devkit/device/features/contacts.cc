// The user's contacts.
#include "device/exchange.h"
#include "device/features/contact-json.h"
#include "device/features/features.h"
#include "device/stimulation.h"
#include "device/text.h"
#include "device/view.h"

namespace morvik::devkit {
namespace {

using Form = Argument::Form;

// One message only, without a response beside it, like every answer that is a payload of its own.
void answer(const Exchange& exchange) {
  Store& store = exchange.device().store();
  const auto contacts = store.contacts();
  if (!contacts) return exchange.respond(zeph::ERROR, store.trouble());
  zeph::ZephMsg answer;
  answer.mutable_contactlist()->mutable_contacts()->Assign(contacts->begin(), contacts->end());
  exchange.reply(std::move(answer));
}

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
  if (stimulation.has("firstname")) contact.set_firstname(stimulation.text("firstname"));
  if (stimulation.has("lastname")) contact.set_lastname(stimulation.text("lastname"));
  if (stimulation.has("alias")) contact.set_alias(stimulation.text("alias"));
  for (const std::string& text : stimulation.all("object")) addObject(stimulation, contact, text);
  contact.set_uuid(stimulation.text("uuid"));
  return contact;
}

void keepContact(Stimulation& stimulation) {
  const zeph::Contact contact = contactFrom(stimulation);
  if (!stimulation.understood()) return;
  Device& device = stimulation.device();
  if (!device.store().keepContact(contact)) return stimulation.refuse(device.store().trouble());
  device.changed("contacts");
  device.note("the contact " + cited(contact.uuid()) + " is kept");
}

std::string query(const zeph::ZephMsg& /*message*/) { return "contacts?"; }

std::string atAGlance(const DeviceView& view) { return std::to_string(view.contacts.size()); }

void show(const DeviceView& view, JsonObject& whole) {
  whole.list("contacts");
  for (const zeph::Contact& contact : view.contacts) showContact(contact, whole.added("contacts"));
}

constexpr Argument kContact[] = {
    {.name = "uuid", .usage = "UUID", .what = "the contact's UUID", .kind = Argument::Kind::kId},
    {.name = "firstname", .usage = "TEXT", .form = Form::kNamed, .needed = false},
    {.name = "lastname", .usage = "TEXT", .form = Form::kNamed, .needed = false},
    {.name = "alias", .usage = "TEXT", .form = Form::kNamed, .needed = false},
    {.name = "object", .usage = "ID[:NAME]", .form = Form::kNamed, .needed = false, .many = true},
};

constexpr Command kCommands[] = {
    {zeph::ZephMsg::kGetcontactListFieldNumber, Command::Needs::kGrant, answer}};
constexpr Stimulus kStimuli[] = {{"contact", Stimulus::Group::kUser, Stimulus::For::kDevice,
                                  kContact, "keep a contact, in place of the one with this UUID",
                                  keepContact}};
constexpr Words kWords[] = {{zeph::ZephMsg::kGetcontactListFieldNumber, query}};
constexpr Glance kGlances[] = {{"contacts", atAGlance}};

}  // namespace

constinit const Feature kContactsFeature = {
    .commands = kCommands, .stimuli = kStimuli, .words = kWords, .glances = kGlances, .show = show};

}  // namespace morvik::devkit
