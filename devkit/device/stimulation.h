// One stimulus at work: the words behind its own, and every way to act on the device. What a
// stimulus' function gets.
#pragma once

#include <google/protobuf/generated_enum_reflection.h>

#include <initializer_list>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "device/device.h"

namespace morvik::devkit {

// What a refusal says of a name that nothing has, and which names there are: "command wings" and
// the names of all commands.
std::string thereIsNo(const std::string& what, const std::vector<std::string>& names);

// Lives for one call of a stimulus' function. That reads all its words first, and does nothing
// unless `understood` then says so; the first trouble is kept, and told by whoever made this.
class Stimulation {
 public:
  // `only` is the one application that the stimulus is for; none for all.
  Stimulation(Device& device, std::optional<AppNumber> only, std::vector<std::string> words);

  // The next word. `what` names it when it is missing.
  std::string text(const std::string& what);
  // The same for an id, which may not be empty.
  std::string id(const std::string& what);
  int number(const std::string& what, int least = kLeastNumber, int most = kMostNumber);
  // The place of the next word in a list of words, in letters of either case.
  std::size_t oneOf(std::initializer_list<const char*> words);
  // The name of a value, in letters of either case.
  template <class Enum>
  Enum choice(const std::string& what) {
    return static_cast<Enum>(value(*google::protobuf::GetEnumDescriptor<Enum>(), text(what)));
  }
  template <class Enum>
  Enum choiceFrom(const std::string& word) {
    return static_cast<Enum>(value(*google::protobuf::GetEnumDescriptor<Enum>(), word));
  }
  int numberFrom(const std::string& word, int least = kLeastNumber, int most = kMostNumber);

  bool hasMore() const { return !words_.empty(); }
  // The next word, left where it is. There must be one.
  const std::string& next() const { return words_.front(); }
  // All words that are left.
  std::vector<std::string> rest();
  // Takes the word of the form key=VALUE out, wherever it stands, and gives the value.
  std::optional<std::string> named(const std::string& key);

  // For what happens to the device as a whole: there is no doing it for one application alone.
  void mustBeForAll();
  // The first trouble counts.
  void refuse(const std::string& trouble);
  // All words were read, and none made trouble.
  [[nodiscard]] bool understood();
  // Empty when there is none.
  const std::string& trouble() const { return trouble_; }

  Device& device() const { return device_; }
  DeviceState& state() const { return device_.state(); }
  std::optional<AppNumber> only() const { return only_; }
  bool isFor(AppNumber application) const { return !only_ || *only_ == application; }
  // The applications that the stimulus is for.
  std::vector<AppNumber> targets() const;
  // Sends to all of them. Each message is given an id.
  void send(const zeph::ZephMsg& message);

  void tellNobodyHears() { tell("no application is connected\n"); }

  // Tells the writer of the line something.
  void tell(const std::string& text) { told_ += text; }
  const std::string& told() const { return told_; }

 private:
  static constexpr int kLeastNumber = std::numeric_limits<int>::min();
  static constexpr int kMostNumber = std::numeric_limits<int>::max();

  int value(const google::protobuf::EnumDescriptor& names, const std::string& word);

  Device& device_;
  std::optional<AppNumber> only_;
  std::vector<std::string> words_;  // those that are not read yet
  std::string trouble_;
  std::string told_;
};

}  // namespace morvik::devkit
