// Charsets of responses, and percent-escaping.
#pragma once

#include <string>
#include <string_view>

#include "web/http-buffer.h"

namespace morvik {

/// Turns the body into UTF-8, best effort: the charset is guessed from the word "encoding" near the
/// body's start, else from "charset" in the headers. When nothing is found, or the conversion
/// fails, the body stays byte for byte as it is; failures are told on standard output. Ends the
/// process with status 1 when there is no memory for the converted text.
///
/// Both buffers must be as httpWriteCallback left them: null, or followed by a NUL.
void convertResponseToUtf8(HttpBuffer& body, const HttpBuffer& headers);

/// Percent-escapes a text. `*out` receives a new text, to be released with curl_free, or null when
/// libcurl gives none. The escaped text stands in the log.
void urlEncode(const char* text, char** out);

/// The text percent-escaped, of any length and without a line in the log.
std::string percentEscaped(std::string_view text);

}  // namespace morvik
