// The one table of the script API, api/script-api.json. Typings, the reference and what check knows
// are made from it; docs/check.md tells how its entries are written.
#pragma once

#include <set>
#include <string>

#include "device/json.h"

namespace morvik::devkit {

/// The whole table: `types`, `shapes` and `objects`.
const Json& apiTable();

/// The names that a descriptor may grant.
const std::set<std::string>& accessNames();

/// Whether there is an object of this path, such as "morvik.led".
bool hasObject(const std::string& path);

/// "morvik.led.light", "log": as a script writes a member of an object of the table.
std::string pathOf(const Json& object, const Json& member);

/// "light(color, fn?)": what a function takes, with a question mark where something may be left
/// out.
std::string signatureOf(const Json& function);

/// The lines of an example as one text, each with a line end.
std::string exampleOf(const Json& function);

}  // namespace morvik::devkit
