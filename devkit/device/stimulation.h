// One stimulus at work: its arguments, and every way to act on the device. What a stimulus'
// function gets.
#pragma once

#include <google/protobuf/generated_enum_reflection.h>

#include <optional>
#include <string>
#include <vector>

#include "device/arguments.h"
#include "device/device.h"
#include "device/stimulus.h"

namespace morvik::devkit {

/// Lives for one call of a stimulus' function. That reads what it needs, and does nothing unless
/// `understood` then says so; the first trouble is kept, and told by whoever made this.
class Stimulation {
 public:
  /// `only` is the one application that the stimulus is for; none for all.
  Stimulation(Device& device, const Stimulus& stimulus, std::optional<AppNumber> only);

  /// To be filled before the function is called.
  Arguments& arguments() { return arguments_; }

  // What the arguments say; see Arguments.
  bool has(const std::string& name) const { return arguments_.has(name); }
  std::string text(const std::string& name) const { return arguments_.text(name); }
  int number(const std::string& name) const { return arguments_.number(name); }
  std::vector<std::string> all(const std::string& name) const { return arguments_.all(name); }
  /// The value of the schema that a choice names.
  template <class Enum>
  Enum choice(const std::string& name) const {
    const auto& values = *google::protobuf::GetEnumDescriptor<Enum>();
    const auto* found = values.FindValueByName(text(name));
    return static_cast<Enum>(found != nullptr ? found->number() : values.value(0)->number());
  }

  /// The first trouble counts.
  void refuse(const std::string& trouble);
  /// All arguments were read, and none made trouble. Tells of the stimulus when so: to be asked
  /// once.
  [[nodiscard]] bool understood();
  /// Empty when there is none.
  const std::string& trouble() const { return trouble_; }

  Device& device() const { return device_; }
  const DeviceState& state() const { return device_.state(); }
  std::optional<AppNumber> only() const { return only_; }
  bool isFor(AppNumber application) const { return !only_ || *only_ == application; }
  /// The applications that the stimulus is for.
  std::vector<AppNumber> targets() const;
  /// Sends to all of them. Each message is given an id.
  void send(const zeph::ZephMsg& message);

  void tellNobodyHears() { tell("no application is connected\n"); }

  /// Tells whoever asked something.
  void tell(const std::string& text) { told_ += text; }
  const std::string& told() const { return told_; }

 private:
  Device& device_;
  const Stimulus& stimulus_;
  std::optional<AppNumber> only_;
  Arguments arguments_;
  std::string trouble_;
  std::string told_;
};

}  // namespace morvik::devkit
