// The library tells only that bytes are damaged; a walk along the fields tells where.
#include "config/config-bytes.h"

#include <google/protobuf/descriptor.h>
#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/unknown_field_set.h>
#include <google/protobuf/wire_format_lite.h>

#include <map>

namespace morvik::devkit {
namespace {

namespace zeph = net::quelta::zeph::message;
namespace protobuf = google::protobuf;
using protobuf::internal::WireFormatLite;
using Input = protobuf::io::CodedInputStream;

constexpr const char* kDamageCure =
    "Write the file anew: morvik-dev config build makes it of a text.";

void tellOfBytes(const std::string& file, const char* kind, std::string text, const char* cure,
                 std::vector<FolderTrouble>& findings) {
  findings.push_back({.file = file, .text = std::move(text), .kind = kind, .cure = cure});
}

class DamageSearch {
 public:
  explicit DamageSearch(const std::string& bytes)
      : input_(reinterpret_cast<const std::uint8_t*>(bytes.data()), static_cast<int>(bytes.size())),
        size_(static_cast<int>(bytes.size())) {}

  /// Where the damage is and what it is; empty when the walk meets none.
  std::string find() {
    walk(*zeph::ConfigApp::descriptor(), "", size_);
    return damage_;
  }

 private:
  bool walk(const protobuf::Descriptor& message, const std::string& path, int end) {
    std::map<int, int> counts;
    while (input_.CurrentPosition() < end) {
      const int at = input_.CurrentPosition();
      const std::uint32_t tag = input_.ReadTag();
      const int number = WireFormatLite::GetTagFieldNumber(tag);
      if (number == 0 || WireFormatLite::GetTagWireType(tag) > WireFormatLite::WIRETYPE_FIXED32) {
        return damaged(at, path, "no field begins here");
      }
      const auto* field = message.FindFieldByNumber(number);
      if (!passOver(tag, field, nameOf(path, number, field, counts[number]++), end)) return false;
    }
    return true;
  }

  static std::string nameOf(const std::string& path, int number,
                            const protobuf::FieldDescriptor* field, int index) {
    std::string name = path.empty() ? "" : path + '.';
    if (field == nullptr) return name + "the unknown field " + std::to_string(number);
    name += field->name();
    return field->is_repeated() ? name + '[' + std::to_string(index) + ']' : name;
  }

  bool passOver(std::uint32_t tag, const protobuf::FieldDescriptor* field, const std::string& name,
                int end) {
    const int at = input_.CurrentPosition();
    if (WireFormatLite::GetTagWireType(tag) != WireFormatLite::WIRETYPE_LENGTH_DELIMITED) {
      if (WireFormatLite::SkipField(&input_, tag) && input_.CurrentPosition() <= end) return true;
      return damaged(at, name, "its value is cut off or malformed");
    }
    std::uint32_t length = 0;
    if (!input_.ReadVarint32(&length)) return damaged(at, name, "its length is cut off");
    const auto left = static_cast<std::uint32_t>(end - input_.CurrentPosition());
    if (length > left) {
      return damaged(at, name,
                     "it should have " + std::to_string(length) + " bytes, and " +
                         std::to_string(left) + (left == 1 ? " is" : " are") + " left");
    }
    const auto size = static_cast<int>(length);
    const bool isMessage = field != nullptr && field->message_type() != nullptr;
    return isMessage ? walk(*field->message_type(), name, input_.CurrentPosition() + size)
                     : input_.Skip(size);
  }

  bool damaged(int at, const std::string& name, const std::string& what) {
    damage_ = "at byte " + std::to_string(at) + (name.empty() ? "" : ", in " + name) + ": " + what;
    return false;
  }

  Input input_;
  const int size_;
  std::string damage_;
};

void tellUnknown(const std::string& file, const protobuf::Message& message,
                 std::vector<FolderTrouble>& findings) {
  const auto& unknown = message.GetReflection()->GetUnknownFields(message);
  for (int i = 0; i < unknown.field_count(); ++i) {
    const int number = unknown.field(i).number();
    const auto* field = message.GetDescriptor()->FindFieldByNumber(number);
    const std::string of = message.GetDescriptor()->name();
    tellOfBytes(file, "config-unknown",
                field != nullptr
                    ? field->name() + " of " + of + " is of another kind than it should be"
                    : of + " has no field with the number " + std::to_string(number),
                "The host passes it over, and it is not shown.", findings);
  }
}

}  // namespace

ConfigRead readConfigBytes(const std::string& file, const std::string& bytes) {
  ConfigRead read;
  if (!read.config.ParsePartialFromString(bytes)) {
    const std::string damage = DamageSearch(bytes).find();
    tellOfBytes(file, "config-damaged", "is damaged " + (damage.empty() ? "somewhere" : damage),
                kDamageCure, read.findings);
    return read;
  }
  std::vector<std::string> missing;
  read.config.FindInitializationErrors(&missing);
  for (const std::string& field : missing) {
    tellOfBytes(file, "config-incomplete", "lacks the required field " + field,
                "Add it: morvik-dev config set FILE NAME=VALUE.", read.findings);
  }
  tellUnknown(file, read.config, read.findings);
  for (const auto& instance : read.config.configinstance()) {
    tellUnknown(file, instance, read.findings);
  }
  return read;
}

}  // namespace morvik::devkit
