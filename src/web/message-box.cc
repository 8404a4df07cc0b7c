// morvik.message: list, get, new, delete, markAsRead. The server keeps the messages.
#include "web/message-box.h"

#include <glib.h>
#include <google/protobuf/io/coded_stream.h>

#include <cstdio>
#include <memory>
#include <string>

#include "channel/answered-once.h"
#include "channel/message.h"
#include "channel/request.h"
#include "host/engine.h"
#include "web/contacts.h"
#include "web/web.h"
#include "web/wire-values.h"

namespace morvik {
namespace {

using Query = zeph::MorvikMessageQuery;

// Bytes of ids that go out in one message: as many as a script's own memory holds. A script names
// more with one text in many places, or with an array of nothing but a length.
constexpr std::size_t kMaxIds = kMaxOldSpace;

// What a field of so many bytes takes on the wire: its tag, its length and itself.
std::size_t fieldSize(std::size_t size) {
  using google::protobuf::io::CodedOutputStream;
  return 1 + CodedOutputStream::VarintSize32(static_cast<std::uint32_t>(size)) + size;
}

// The text of the property.
std::optional<std::string> textOf(v8::Isolate* isolate, v8::Local<v8::Object> source, auto key) {
  const v8::HandleScope handles(isolate);
  v8::Local<v8::Value> value;
  if (!source->Get(isolate->GetCurrentContext(), key).ToLocal(&value)) return std::nullopt;
  return asciiText(isolate, value);
}

// Reads ids off a script's object until one throws: that exception is then the script's.
class IdReader {
 public:
  // `depth` tells in how many fields, one around the other, an id goes out.
  IdReader(v8::Isolate* isolate, v8::Local<v8::Object> source, int depth)
      : isolate_(isolate), source_(source), depth_(depth) {}

  std::optional<std::string> read(auto key) {
    auto id = textOf(isolate_, source_, key);
    if (!id) return std::nullopt;
    std::size_t size = id->size();
    for (int i = 0; i < depth_; ++i) size = fieldSize(size);
    taken_ += size;
    if (taken_ <= kMaxIds) return id;
    throwText(isolate_, "Too many ids");
    return std::nullopt;
  }

 private:
  v8::Isolate* isolate_;
  v8::Local<v8::Object> source_;
  int depth_;
  std::size_t taken_ = 0;
};

// Every property's value is an id; names do not count.
bool readIds(v8::Isolate* isolate, v8::Local<v8::Object> ids, Query& query) {
  const v8::Local<v8::Context> context = isolate->GetCurrentContext();
  v8::Local<v8::Array> names;
  if (!ids->GetPropertyNames(context).ToLocal(&names)) return false;
  IdReader reader(isolate, ids, 1);
  for (std::uint32_t i = 0; i < names->Length(); ++i) {
    const auto id = reader.read(names->Get(context, i).ToLocalChecked());
    if (!id) return false;
    query.add_id(*id);
  }
  return true;
}

void sendQuery(Request& request, v8::Local<v8::Value> callback) {
  request.sendFor(MessageCallbackFunction,
                  onceFor(std::make_unique<MessageCallbackContext>(callback)));
}

void queryIds(const Args& args, Query::TypeAction action) {
  Request request(args);
  const bool fits = args.Length() == 2 && args[1]->IsFunction() && args[0]->IsObject();
  if (!fits) g_warning("Wrong arguments");
  request.expect(fits);
  request.expectInteractive();
  if (request.refused()) return;
  Query& query = *request.message().mutable_morvikmessagequery();
  query.set_action(action);
  if (readIds(args.GetIsolate(), args[0].As<v8::Object>(), query)) sendQuery(request, args[1]);
}

// One argument of any type passes, and so does any number behind a function, on purpose: list(5)
// sends its query, and the script hears nothing but a warning in the log when the answer comes.
void list(const Args& args) {
  Request request(args);
  request.expect(args.Length() == 1 || args[0]->IsFunction());
  request.expectInteractive();
  if (request.refused()) return;
  request.message().mutable_morvikmessagequery()->set_action(Query::LIST);
  sendQuery(request, args[0]);
}

void get(const Args& args) { queryIds(args, Query::GET); }

void deleteMessages(const Args& args) { queryIds(args, Query::DELETE); }

void markAsRead(const Args& args) { queryIds(args, Query::READ); }

// What is no array counts as an empty one.
bool readObjects(v8::Isolate* isolate, v8::Local<v8::Value> objects, zeph::Contact& to) {
  if (!objects->IsArray()) return true;
  const auto array = objects.As<v8::Array>();
  IdReader reader(isolate, array, 2);  // in `idDB` of an object
  for (std::uint32_t i = 0; i < array->Length(); ++i) {
    const auto id = reader.read(i);
    if (!id) return false;
    to.add_objects()->set_iddb(*id);
  }
  return true;
}

bool readReceiver(v8::Isolate* isolate, v8::Local<v8::Value> value, zeph::Contact& to) {
  if (!value->IsObject()) {
    throwText(isolate, "Arg[0] Must be object");
    return false;
  }
  const auto receiver = value.As<v8::Object>();
  const auto uuid = textOf(isolate, receiver, toScript("uuid"));
  if (!uuid) return false;
  to.set_uuid(*uuid);
  v8::Local<v8::Value> objects;
  return receiver->Get(isolate->GetCurrentContext(), toScript("objects")).ToLocal(&objects) &&
         readObjects(isolate, objects, to);
}

bool readText(v8::Isolate* isolate, v8::Local<v8::Value> value, zeph::MorvikMessage& message) {
  if (!value->IsString()) {
    // The script reads of argument 0 and has to look at argument 1: the text is meant so.
    throwText(isolate, "Arg[0] Must be string");
    return false;
  }
  message.mutable_content()->set_type(zeph::MorvikMessageContent::TEXT);
  message.mutable_content()->set_content(*asciiText(isolate, value));  // a string always has one
  return true;
}

// new(to, text, [callback]). Nothing ever calls the callback, on purpose: it is refused when it is
// no function and the last of exactly three arguments, and then dropped, so a script cannot learn
// whether the message was taken. What is sent also stands on standard output, where whoever started
// the program reads the user's messages.
void newMessage(const Args& args) {
  v8::Isolate* isolate = args.GetIsolate();
  Request request(args);
  request.expect(args.Length() != 3 || args[2]->IsFunction());
  request.expect(args.Length() >= 2);
  request.expectInteractive();
  if (request.refused()) return;
  Query& query = *request.message().mutable_morvikmessagequery();
  query.set_action(Query::NEW);
  zeph::MorvikMessage& message = *query.mutable_message();
  if (!readReceiver(isolate, args[0], *message.mutable_header()->mutable_to())) return;
  if (!readText(isolate, args[1], message)) return;
  request.send();
  std::fputs(request.message().DebugString().c_str(), stdout);
}

// Empty without a header on the wire; with one, what it leaves out shows as "" or 0.
v8::Local<v8::Object> headerToObject(const zeph::MorvikMessage& message) {
  const auto object = v8::Object::New(v8::Isolate::GetCurrent());
  if (!message.has_header()) return object;
  const zeph::MorvikMessageHeader& header = message.header();
  setOwn(object, "id", endMarked(header.id()));
  setOwn(object, "date", v8::Integer::New(v8::Isolate::GetCurrent(), header.date()));
  setOwn(object, "status", v8::Integer::New(v8::Isolate::GetCurrent(), header.status()));
  if (header.has_from()) setOwn(object, "from", contactToObject(header.from()));
  if (header.has_to()) setOwn(object, "to", contactToObject(header.to()));
  return object;
}

v8::Local<v8::Object> contentToObject(const zeph::MorvikMessage& message) {
  const auto object = v8::Object::New(v8::Isolate::GetCurrent());
  if (!message.has_content()) return object;
  const zeph::MorvikMessageContent& content = message.content();
  setOwn(object, "type", toScript(nameOf(content.type())));
  setOwn(object, "content", endMarked(content.content()));
  if (content.has_header()) setOwn(object, "header", endMarked(content.header()));
  return object;
}

v8::Local<v8::Object> messageToObject(const zeph::MorvikMessage& message) {
  const auto object = v8::Object::New(v8::Isolate::GetCurrent());
  setOwn(object, "header", headerToObject(message));
  setOwn(object, "content", contentToObject(message));
  return object;
}

// Only for the log: whatever the code is, a list reaches the script. A refusal without a list
// reaches nobody, and the script waits for ever.
void logResponse(const zeph::ZephMsg& message) {
  if (!message.has_response()) {
    g_warning("MessageCallbackFunction: has_response false");
  } else if (!message.response().has_code()) {
    return;
  } else if (message.response().code() == zeph::OK) {
    g_debug("MessageCallbackFunction: response : OK");
  } else if (message.response().code() == zeph::ERROR) {
    g_warning("MessageCallbackFunction: response : ERROR");
  }
}

constexpr Binding kFunctions[] = {{"list", list},
                                  {"get", get},
                                  {"delete", deleteMessages},
                                  {"new", newMessage},
                                  {"markAsRead", markAsRead}};

}  // namespace

void MessageCallbackFunction(void* data, const zeph::ZephMsg& message) {
  g_debug("MessageCallbackFunction");
  logResponse(message);
  // The line speaks of an empty list too, but only the missing one ends here: a list that is
  // present and empty reaches the script as an empty array.
  if (!message.has_morvikmessageresponse()) {
    g_warning("MessageCallbackFunction : has_morvikmessageresponse false or list empty. abort");
    return;
  }
  const auto context = static_cast<AnsweredOnce<MessageCallbackContext>*>(data)->take();
  if (!context) return;  // answered before
  if (!context->callback) {
    g_warning("MessageCallbackFunction: the callback is not a function");
    return;
  }
  const TemporaryContext temporary;
  context->callback->call(
      {arrayOf(message.morvikmessageresponse().morvikmessagelist(), messageToObject)});
}

std::span<const Binding> messageFunctions() { return kFunctions; }

}  // namespace morvik
