// One look at the message and at what the parser did not know in it.
#include "check/config.h"

#include <google/protobuf/unknown_field_set.h>
#include <zeph-message.pb.h>

#include <string>

#include "check/source-text.h"

namespace morvik::devkit {
namespace {

namespace zeph = net::quelta::zeph::message;
using google::protobuf::Message;

constexpr const char* kConfigFile = "config.bin";

void tell(const char* kind, std::string text, const char* cure,
          std::vector<FolderTrouble>& findings) {
  findings.push_back(
      {.file = kConfigFile, .text = std::move(text), .refuses = false, .kind = kind, .cure = cure});
}

// A number that is known stands among the unknown ones when its value is of another kind.
void checkUnknown(const Message& message, std::vector<FolderTrouble>& findings) {
  const auto& unknown = message.GetReflection()->GetUnknownFields(message);
  for (int i = 0; i < unknown.field_count(); ++i) {
    const int number = unknown.field(i).number();
    const auto* field = message.GetDescriptor()->FindFieldByNumber(number);
    const std::string of = message.GetDescriptor()->name();
    tell("config-unknown",
         field != nullptr ? field->name() + " of " + of + " is of another kind than it should be"
                          : of + " has no field with the number " + std::to_string(number),
         "The host passes it over. Write the file with proto/zeph-message.proto.", findings);
  }
}

}  // namespace

void checkConfig(const std::filesystem::path& folder, std::vector<FolderTrouble>& findings) {
  const auto bytes = bytesOf(folder / kConfigFile);
  zeph::ConfigApp config;
  if (!bytes || !config.ParsePartialFromString(*bytes)) return;  // told already
  if (!config.IsInitialized()) {
    tell("config-incomplete", "lacks required fields: " + config.InitializationErrorString(),
         "Write them; proto/zeph-message.proto has all fields.", findings);
  }
  checkUnknown(config, findings);
  for (const auto& instance : config.configinstance()) checkUnknown(instance, findings);
}

}  // namespace morvik::devkit
