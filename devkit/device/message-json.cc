// By way of the bytes: protobuf's direct way complains of missing fields on standard error.
#include "device/message-json.h"

#include <google/protobuf/type.pb.h>
#include <google/protobuf/util/json_util.h>
#include <google/protobuf/util/type_resolver_util.h>
#include <zeph-message.pb.h>

#include <memory>

namespace morvik::devkit {
namespace {

namespace protobuf = google::protobuf;

constexpr const char* kTypes = "type.googleapis.com";

// The schema without a required field: a missing one would hide what else is wrong, and is told by
// the message itself.
class OptionalTypes : public protobuf::util::TypeResolver {
 public:
  protobuf::util::Status ResolveMessageType(const std::string& address,
                                            protobuf::Type* type) override {
    auto status = types_->ResolveMessageType(address, type);
    for (protobuf::Field& field : *type->mutable_fields()) {
      if (field.cardinality() == protobuf::Field::CARDINALITY_REQUIRED)
        field.set_cardinality(protobuf::Field::CARDINALITY_OPTIONAL);
    }
    return status;
  }

  protobuf::util::Status ResolveEnumType(const std::string& address,
                                         protobuf::Enum* type) override {
    return types_->ResolveEnumType(address, type);
  }

 private:
  const std::unique_ptr<protobuf::util::TypeResolver> types_{
      protobuf::util::NewTypeResolverForDescriptorPool(
          kTypes, net::quelta::zeph::message::ZephMsg::descriptor()->file()->pool())};
};

protobuf::util::TypeResolver& typesOfSchema() {
  static auto* const keptForLife = new OptionalTypes;
  return *keptForLife;
}

}  // namespace

std::optional<std::string> readJson(const std::string& text, protobuf::Message& message) {
  const std::string type = std::string(kTypes) + '/' + message.GetDescriptor()->full_name();
  std::string bytes;
  const auto status = protobuf::util::JsonToBinaryString(&typesOfSchema(), type, text, &bytes);
  if (!status.ok()) return status.message().ToString();
  if (!message.ParsePartialFromString(bytes)) return "holds what no message can";
  return std::nullopt;
}

}  // namespace morvik::devkit
