// New applications, made from the samples.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace morvik::devkit {

struct AppTemplate {
  std::string name;   ///< of the sample
  std::string about;  ///< what it shows, for a list
};

/// All samples; the first one is for those who choose none.
const std::vector<AppTemplate>& appTemplates();

/// Makes a folder with the sample's files and its test under the application's name, which is the
/// folder's, typings and an editor's jsconfig.json. The folder may be there when it is empty. Gives
/// what keeps it from being made; nothing is replaced.
[[nodiscard]] std::optional<std::string> makeApplication(const std::filesystem::path& folder,
                                                         const std::string& templateName);

}  // namespace morvik::devkit
