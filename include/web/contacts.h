// The user's contacts, which the server keeps.
#pragma once

#include <v8.h>
#include <zeph-message.pb.h>

#include "host/script.h"
#include "host/zeph-msg-listener.h"

namespace morvik {

/// A contact as scripts see it: the texts that are present, and always the array `objects`. Built
/// in the current context.
v8::Local<v8::Object> contactToObject(const zeph::Contact& contact);

/// A reply function; `data` is an AnsweredOnce<ScriptFunction>. Hands the script an array of
/// contacts, once; an empty one when the answer holds none.
void getContactCallbackFunction(void* data, const zeph::ZephMsg& message);

}  // namespace morvik
