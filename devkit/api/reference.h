// The table of the script API as a part of a document.
#pragma once

#include <string>

namespace morvik::devkit {

/// A Markdown document with its generated parts made anew. Such a part stands between
/// `<!-- functions: OBJECT... -->`, which gives a table with the objects' functions, or
/// `<!-- details: OBJECT... -->`, which gives arguments, exceptions and an example for each, and
/// `<!-- end -->`. `global` names the global object, and `*` all objects.
std::string withReference(const std::string& document);

/// One function for a terminal: what it takes, does and throws, and an example. Empty when there is
/// none of this path, such as "morvik.led.light".
std::string helpOn(const std::string& path);

}  // namespace morvik::devkit
