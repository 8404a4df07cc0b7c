// The files beside an application that editors read.
#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>

namespace morvik::devkit {

/// Their contents by their names: morvik.d.ts, what a script can call, with what these access names
/// grant or with everything; morvik-test.d.ts, what a test can say; jsconfig.json.
std::map<std::string, std::string> editorFiles(
    const std::optional<std::set<std::string>>& granted = std::nullopt);

/// Whether a file of one of these names was made here, and may be replaced.
bool isOwnEditorFile(const std::string& content);

}  // namespace morvik::devkit
