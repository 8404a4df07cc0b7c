// What of a contact is known, and no more.
#include "device/features/contact-json.h"

namespace morvik::devkit {

void showContact(const net::quelta::zeph::message::Contact& contact, JsonObject shown) {
  shown.text("uuid", contact.uuid());
  if (contact.has_firstname()) shown.text("firstname", contact.firstname());
  if (contact.has_lastname()) shown.text("lastname", contact.lastname());
  if (contact.has_alias()) shown.text("alias", contact.alias());
  for (const auto& object : contact.objects()) {
    JsonObject known = shown.added("objects");
    known.text("id", object.iddb());
    if (object.has_name()) known.text("name", object.name());
  }
}

}  // namespace morvik::devkit
