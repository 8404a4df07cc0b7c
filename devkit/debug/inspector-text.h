// Texts between the engine's inspector and everybody else.
#pragma once

#include <v8-inspector.h>

#include <memory>
#include <string>
#include <string_view>

namespace morvik::devkit {

/// The inspector's text as UTF-8.
std::string utf8Of(const v8_inspector::StringView& text);
/// The inspector's own copy of a text in UTF-8.
std::unique_ptr<v8_inspector::StringBuffer> bufferOf(const std::string& utf8);
/// A message of the protocol as the inspector takes it, which is the one place where it reads
/// UTF-8. The message must outlive it.
v8_inspector::StringView protocolView(std::string_view message);

}  // namespace morvik::devkit
