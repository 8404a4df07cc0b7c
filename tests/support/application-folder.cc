// A descriptor, and a script.
#include "support/application-folder.h"

#include <fstream>

namespace morvik::test {

void writeApplication(const std::filesystem::path& folder, const std::string& script,
                      const std::string& accesses) {
  std::filesystem::create_directories(folder);
  if (!std::filesystem::exists(folder / "descriptor.xml")) {
    std::ofstream(folder / "descriptor.xml")
        << "<descriptor><accesses>" << accesses << "</accesses></descriptor>";
  }
  std::ofstream(folder / "main.js") << script;
}

std::string interactiveScript(const std::string& onGrant) {
  return "var at = instanceName.split(':');\n"
         "morvik.connect(at[0], Number(at[1]));\n"
         "morvik.start(function () {\n" +
         onGrant + "\n});\n";
}

}  // namespace morvik::test
