// The meaning of a recognised phrase: XML that becomes script objects.
#pragma once

#include <v8.h>

#include <string>

namespace morvik {

/// Sets one property on `object` for the root element of the XML `text`: its content as a String
/// when it has no child elements, else an object made of those in the same way. Of repeated names
/// the last one wins; attributes and text beside elements are passed over. A text that is not
/// well-formed leaves the object as it is.
void parseSemantic(const std::string& text, v8::Local<v8::Object> object);

}  // namespace morvik
