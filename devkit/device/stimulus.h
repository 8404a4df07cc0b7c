// What the world can do to the device, as data: rows of tables, which stand with their features.
#pragma once

#include <google/protobuf/descriptor.h>

#include <array>
#include <limits>
#include <span>
#include <string>
#include <vector>

namespace morvik::devkit {

class Stimulation;

/// One argument of a stimulus. On a line it is the next word, or a word of the form name=VALUE; as
/// JSON it is the member of its name.
struct Argument {
  enum class Kind {
    kText,    ///< any text
    kId,      ///< a text that is not empty
    kNumber,  ///< a whole number from `least` to `most`
    kChoice,  ///< one of `choices`, in letters of either case
    kName,    ///< one of `choices`, letter by letter
    kPair,    ///< NAME=VALUE, where NAME is one of `choices`
  };
  enum class Form { kWord, kNamed };
  using Choices = std::vector<std::string> (*)();
  using Words = std::span<const std::string>;

  const char* name;             ///< in JSON, and before the "=" of a named one
  const char* usage = nullptr;  ///< in the help; null for the choices, with | between them
  const char* what = nullptr;   ///< in the sentence that says it is missing; null for `usage`
  Kind kind = Kind::kText;
  Form form = Form::kWord;
  bool needed = true;
  bool many = false;                ///< any number of them: a list in JSON
  bool secret = false;              ///< its values are told to nobody
  bool insteadOfLast = false;       ///< either the one before or this one, in the help
  const char* byDefault = nullptr;  ///< in the place of one that is left out; null for none
  Choices choices = nullptr;
  const char* called = nullptr;  ///< what one of them is called: "there is no command wings"
  int least = std::numeric_limits<int>::min();
  int most = std::numeric_limits<int>::max();
  /// Whether the words that are left begin with this argument; null for yes. Only for one that is
  /// not needed.
  bool (*standsIn)(Words left) = nullptr;
};

/// Something that the world can do to the device.
struct Stimulus {
  /// The sections of the help and of a form, in their order.
  enum class Group { kBody, kUser, kAround, kFault, kHelp };
  /// Whom it can be done for: one application or all, or the device as a whole.
  enum class For { kApplications, kDevice };

  const char* name;
  Group group;
  For whom;
  std::span<const Argument> arguments;
  const char* help;
  /// Reads the arguments, asks whether all was understood, and only then acts.
  void (*act)(Stimulation& stimulation);
  /// The words behind the name, where the arguments alone cannot tell which go together; null where
  /// they can.
  const char* usage = nullptr;
};

/// The names of all values of an enumeration of the schema, in its order.
template <const google::protobuf::EnumDescriptor* (*descriptor)()>
std::vector<std::string> namesOf() {
  const int count = descriptor()->value_count();
  std::vector<std::string> names;
  names.reserve(static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i) names.push_back(descriptor()->value(i)->name());
  return names;
}

}  // namespace morvik::devkit
