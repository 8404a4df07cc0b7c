// Texts of the log in the form that a person reads.
#pragma once

#include <string>
#include <string_view>

namespace morvik::devkit {

/// What a script gave to `log`, as UTF-8: the host passes on one byte for each of its characters.
std::string fromScriptBytes(std::string_view bytes);

/// A message in protobuf's text form with its octal escapes (`\303\251`) turned into the UTF-8 that
/// they stand for, wherever they stand for some; all else stays as it is.
std::string withoutEscapes(std::string_view dump);

/// Valid UTF-8 in which every control character but newline is replaced, so that a terminal shows
/// the text and does nothing else; a tab becomes blanks.
std::string harmless(const std::string& text);

/// The text with something in front of each further line of it.
std::string withIndentedLines(const std::string& text, std::string_view indent);

/// The first of a text's lines.
std::string_view firstLine(std::string_view text);

}  // namespace morvik::devkit
