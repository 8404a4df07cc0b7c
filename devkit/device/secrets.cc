// The list of what is secret, and a walk through a message.
#include "device/secrets.h"

#include <algorithm>
#include <string_view>

namespace morvik::devkit {
namespace {

using google::protobuf::FieldDescriptor;
using google::protobuf::Message;

// Fields by their whole names; a message alone stands for all of its texts.
constexpr std::string_view kSecrets[] = {
    "Social",
    "AuthenticationToken.token",
    "AuthenticationResponse.authentication",
    "Config.SipInfo.password",
    "ConfigApp.apiKey",
    "ConfigInstance.accessToken",
    "M2m.Account.sipPassword",
    "RunApplication.apiKey",
    "ScheduleConf.ScheduleApp.apiKey",
};

void hideIn(Message& message);

void hide(Message& message, const FieldDescriptor& field) {
  const auto* reflection = message.GetReflection();
  const bool isMessage = field.cpp_type() == FieldDescriptor::CPPTYPE_MESSAGE;
  if (!field.is_repeated()) {
    if (isMessage) hideIn(*reflection->MutableMessage(&message, &field));
    if (isSecret(field)) reflection->SetString(&message, &field, kSecret);
    return;
  }
  for (int i = 0; i < reflection->FieldSize(message, &field); ++i) {
    if (isMessage) hideIn(*reflection->MutableRepeatedMessage(&message, &field, i));
    if (isSecret(field)) reflection->SetRepeatedString(&message, &field, i, kSecret);
  }
}

void hideIn(Message& message) {
  std::vector<const FieldDescriptor*> fields;
  message.GetReflection()->ListFields(message, &fields);
  for (const FieldDescriptor* field : fields) hide(message, *field);
}

}  // namespace

// The names stand below the package of the schema.
bool isSecret(const FieldDescriptor& field) {
  const std::size_t package = field.file()->package().size() + 1;
  const auto is = [&](const std::string& name) {
    return std::find(std::begin(kSecrets), std::end(kSecrets),
                     std::string_view(name).substr(package)) != std::end(kSecrets);
  };
  return field.cpp_type() == FieldDescriptor::CPPTYPE_STRING &&
         (is(field.full_name()) || is(field.containing_type()->full_name()));
}

net::quelta::zeph::message::ZephMsg withoutSecrets(
    const net::quelta::zeph::message::ZephMsg& message) {
  net::quelta::zeph::message::ZephMsg hidden(message);
  hideIn(hidden);
  return hidden;
}

}  // namespace morvik::devkit
