// morvik.contact: get. The server keeps the contacts; nothing is remembered here.
#include "web/contacts.h"

#include <glib.h>

#include "channel/answered-once.h"
#include "channel/request.h"
#include "web/web.h"
#include "web/wire-values.h"

namespace morvik {
namespace {

// The user's objects of one contact, each an `id` and perhaps a `name`. The first decides for all
// whether there are names, on purpose. When it has one, an object that is nameless on the wire has
// the name '' in script; when it has none, the names of the others are lost, and `name` is
// undefined.
v8::Local<v8::Array> objectsOf(const zeph::Contact& contact) {
  const bool named = contact.objects_size() > 0 && contact.objects(0).has_name();
  return arrayOf(contact.objects(), [named](const zeph::Contact::Object& wire) {
    const auto object = v8::Object::New(v8::Isolate::GetCurrent());
    setOwn(object, "id", endMarked(wire.iddb()));
    if (named) setOwn(object, "name", endMarked(wire.name()));
    return object;
  });
}

void get(const Args& args) {
  Request request(args);
  request.expectFunction(0);
  request.expectInteractive();
  if (request.refused()) return;
  request.message().mutable_getcontactlist();
  request.sendForFirst(getContactCallbackFunction);
}

constexpr Binding kFunctions[] = {{"get", get}};

}  // namespace

v8::Local<v8::Object> contactToObject(const zeph::Contact& contact) {
  const auto object = v8::Object::New(v8::Isolate::GetCurrent());
  if (contact.has_firstname()) setOwn(object, "firstname", endMarked(contact.firstname()));
  if (contact.has_lastname()) setOwn(object, "lastname", endMarked(contact.lastname()));
  if (contact.has_alias()) setOwn(object, "alias", endMarked(contact.alias()));
  if (contact.has_uuid()) setOwn(object, "uuid", endMarked(contact.uuid()));
  setOwn(object, "objects", objectsOf(contact));
  return object;
}

void getContactCallbackFunction(void* data, const zeph::ZephMsg& message) {
  g_debug("getContactCallbackFunction");
  const auto function = static_cast<AnsweredOnce<ScriptFunction>*>(data)->take();
  if (!function) return;  // answered before
  const TemporaryContext temporary;
  // A refusal has no list, and reads like an empty one: the script cannot tell the two apart.
  function->call({arrayOf(message.contactlist().contacts(), contactToObject)});
}

std::span<const Binding> contactFunctions() { return kFunctions; }

}  // namespace morvik
