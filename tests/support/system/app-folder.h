// A temporary folder with applications that a test makes, removed in the end.
#pragma once

#include <zeph-message.pb.h>

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "support/temporary-folder.h"
#include "support/waiting.h"

namespace morvik::test {

// A descriptor.xml that grants the access names.
std::string descriptorXml(const std::vector<std::string>& accesses);

class AppFolder {
 public:
  [[nodiscard]] std::string path() const { return folder_.path(); }

  // Makes the application's folder with descriptor.xml and main.js.
  void app(const std::string& name, const std::vector<std::string>& accesses,
           std::string_view mainJs);
  // Writes one file of an application; its folder is made when needed.
  void file(const std::string& name, const std::string& file, std::string_view bytes);
  void config(const std::string& name, const net::quelta::zeph::message::ConfigApp& config);

  // Puts a pipe in place of an application's descriptor.xml, so that its start waits there until
  // `openGate` writes the text.
  void gate(const std::string& name);
  void openGate(const std::string& name, std::string_view descriptor);
  // Waits until the application has come to its gate.
  Descriptor awaitAtGate(const std::string& name) const;

 private:
  [[nodiscard]] std::filesystem::path fileOf(const std::string& name,
                                             const std::string& file) const;

  TemporaryFolder folder_;
};

}  // namespace morvik::test
