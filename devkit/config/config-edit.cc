// A change is looked up in the schema, which gives the way to its field, and done there.
#include "config/config-edit.h"

#include <google/protobuf/io/tokenizer.h>
#include <google/protobuf/text_format.h>
#include <google/protobuf/util/message_differencer.h>

#include <algorithm>
#include <set>

#include "config/config-text.h"
#include "device/nearest.h"
#include "device/text.h"

namespace morvik::devkit {
namespace {

namespace zeph = net::quelta::zeph::message;
namespace protobuf = google::protobuf;
using protobuf::FieldDescriptor;
using protobuf::Message;
using protobuf::TextFormat;
using Tree = TextFormat::ParseInfoTree;

// "a.b.c" taken word by word.
class Way {
 public:
  explicit Way(std::string text) : left_(std::move(text)) {}

  bool isAtEnd() const { return left_.empty(); }
  std::string rest() { return std::exchange(left_, ""); }
  std::string next() {
    const std::size_t dot = std::min(left_.find('.'), left_.size());
    std::string word = left_.substr(0, dot);
    left_.erase(0, dot + 1);
    return word;
  }

 private:
  std::string left_;
};

// What stands for an element of a list of messages: the key of a parameter, the name of an
// instance.
const FieldDescriptor& keyOf(const protobuf::Descriptor& element) {
  const auto* key = element.FindFieldByName("key");
  return key != nullptr ? *key : *element.FindFieldByName("name");
}

bool isList(const FieldDescriptor& field) {
  return field.is_repeated() && field.message_type() == nullptr;
}

int indexOf(const Message& message, const FieldDescriptor& field, const std::string& key) {
  const auto& reflection = *message.GetReflection();
  for (int i = 0; i < reflection.FieldSize(message, &field); ++i) {
    const Message& element = reflection.GetRepeatedMessage(message, &field, i);
    const auto& name = keyOf(*element.GetDescriptor());
    if (element.GetReflection()->GetString(element, &name) == key) return i;
  }
  return -1;
}

// Where a change leads. Follows the field of the change from message to message.
class Destination {
 public:
  struct Step {
    const FieldDescriptor* field;
    int index;  // of a message in a list
  };

  // False with a trouble. Elements that are not there end the way: `missing` then.
  bool find(const Message& root, const std::string& fieldPath) {
    Way way(fieldPath);
    message_ = &root;
    while (true) {
      if (!enter(way)) return false;
      if (isMissing() || field_->message_type() == nullptr) return true;
    }
  }

  const std::string& trouble() const { return trouble_; }
  const std::vector<Step>& steps() const { return steps_; }  // to the message of `field`
  const FieldDescriptor& field() const { return *field_; }
  const Message& message() const { return *message_; }
  // The key of the element that `field` lacks.
  const std::string& missing() const { return missing_; }
  bool isMissing() const { return !missing_.empty(); }

 private:
  bool enter(Way& way) {
    const auto* type = message_->GetDescriptor();
    const std::string name = isParameter_ ? "value" : way.next();
    field_ = type->FindFieldByName(name);
    if (field_ == nullptr) return refuse(noField(*type, name));
    if (field_->message_type() == nullptr) {
      return way.isAtEnd() || refuse(name + " holds no fields");
    }
    isParameter_ = field_->message_type()->FindFieldByName("key") != nullptr;
    const std::string key = isParameter_ ? way.rest() : way.next();
    if (key.empty()) return refuse(nameWanted(name));
    if (!isParameter_ && way.isAtEnd()) return refuse(nameWanted(name + '.' + key));
    const int index = indexOf(*message_, *field_, key);
    if (index < 0) missing_ = key;
    if (index < 0) return true;
    steps_.push_back({field_, index});
    message_ = &message_->GetReflection()->GetRepeatedMessage(*message_, field_, index);
    return true;
  }

  static std::string nameWanted(const std::string& of) {
    return of + " is a group: name what is in it, such as " + of +
           (of.starts_with("configInstance.") ? ".uuid" : ".city");
  }

  static std::string noField(const protobuf::Descriptor& type, const std::string& name) {
    const auto fields = fieldsOf(type);
    const auto near = nearest(name, fields);
    return type.name() + " has no field " + cited(name) +
           (near ? ": perhaps " + *near : "; it has " + listed(fields));
  }

  bool refuse(std::string text) {
    trouble_ = std::move(text);
    return false;
  }

  const Message* message_ = nullptr;
  const FieldDescriptor* field_ = nullptr;
  std::vector<Step> steps_;
  std::string missing_;
  std::string trouble_;
  bool isParameter_ = false;
};

std::optional<std::string> valueTrouble(const FieldDescriptor& field, const std::string& value) {
  const bool isFlag = field.cpp_type() == FieldDescriptor::CPPTYPE_BOOL;
  if (!isFlag || value == "true" || value == "false") return std::nullopt;
  return field.name() + " is true or false, not " + cited(value);
}

// A value of the text form.
std::string written(const FieldDescriptor& field, const std::string& value) {
  if (field.cpp_type() == FieldDescriptor::CPPTYPE_BOOL) return field.name() + ": " + value;
  std::string text;
  TextFormat::Printer printer;
  printer.SetUseUtf8StringEscaping(true);
  zeph::KeyValue holder;
  holder.set_value(value);
  printer.PrintFieldValueToString(holder, zeph::KeyValue::descriptor()->FindFieldByName("value"),
                                  -1, &text);
  return field.name() + ": " + text;
}

std::string writtenElement(const FieldDescriptor& field, const std::string& key) {
  const auto& name = keyOf(*field.message_type());
  // A parameter is whole with its value; that is then changed.
  const auto* value = field.message_type()->FindFieldByName("value");
  return field.name() + " { " + written(name, key) +
         (value != nullptr ? ' ' + written(*value, "") : "") + " }";
}

Message& messageAt(Message& root, const std::vector<Destination::Step>& steps) {
  Message* message = &root;
  for (const auto& [field, index] : steps) {
    message = message->GetReflection()->MutableRepeatedMessage(message, field, index);
  }
  return *message;
}

void addElement(Message& message, const FieldDescriptor& field, const std::string& key) {
  Message* element = message.GetReflection()->AddMessage(&message, &field);
  element->GetReflection()->SetString(element, &keyOf(*element->GetDescriptor()), key);
  const auto* value = element->GetDescriptor()->FindFieldByName("value");
  if (value != nullptr) element->GetReflection()->SetString(element, value, "");
}

void setValue(Message& message, const FieldDescriptor& field, const std::string& value) {
  const auto& reflection = *message.GetReflection();
  if (field.cpp_type() == FieldDescriptor::CPPTYPE_BOOL) {
    reflection.SetBool(&message, &field, value == "true");
  } else if (field.is_repeated()) {
    reflection.AddString(&message, &field, value);
  } else {
    reflection.SetString(&message, &field, value);
  }
}

// A text that an edit has broken is told by what it then lacks, and not on standard error.
class SilentErrors : public protobuf::io::ErrorCollector {
 public:
  void AddError(int /*line*/, protobuf::io::ColumnNumber /*column*/,
                const std::string& /*message*/) override {}
};

// The edits of one text. What is written is parsed again for each, which is done in no time.
class TextEditor {
 public:
  explicit TextEditor(std::string text) : text_(std::move(text)) { parse(); }

  const zeph::ConfigApp& config() const { return config_; }
  const std::string& text() const { return text_; }

  void replace(const Destination& way, const std::string& with) {
    const Tree& tree = *treeAt(way.steps());
    const int index = way.field().is_repeated() ? 0 : -1;
    const auto [begin, end] = rangeOf(tree, way.field(), index);
    text_.replace(begin, end - begin, with);
    parse();
  }

  // Takes all values of a list out of the text.
  void clear(const Destination& way) {
    const auto& reflection = *way.message().GetReflection();
    for (int left = reflection.FieldSize(way.message(), &way.field()); left > 0; --left) {
      const Tree& tree = *treeAt(way.steps());
      const bool isTold = tree.GetLocation(&way.field(), left - 1).line >= 0;
      if (!isTold) continue;  // several in brackets have the place of the first
      const auto [begin, end] = rangeOf(tree, way.field(), left - 1);
      eraseWithLine(begin, end);
    }
    parse();
  }

  void add(const Destination& way, const std::string& field) {
    if (way.steps().empty()) {
      if (!text_.empty() && !text_.ends_with('\n')) text_ += '\n';
      text_ += field + '\n';
    } else {
      insertBeforeBrace(closingBrace(way.steps()), field);
    }
    parse();
  }

 private:
  struct Range {
    std::size_t begin;
    std::size_t end;
  };

  void parse() {
    tree_ = std::make_unique<Tree>();
    config_.Clear();
    SilentErrors errors;
    TextFormat::Parser parser;
    parser.RecordErrorsTo(&errors);
    parser.AllowPartialMessage(true);
    parser.WriteLocationsTo(tree_.get());
    parser.ParseFromString(text_, &config_);
  }

  const Tree* treeAt(const std::vector<Destination::Step>& steps) const {
    const Tree* tree = tree_.get();
    for (const auto& [field, index] : steps) tree = tree->GetTreeForNested(field, index);
    return tree;
  }

  Range rangeOf(const Tree& tree, const FieldDescriptor& field, int index) const {
    const auto range = tree.GetLocationRange(&field, index);
    return {offsetOf(text_, range.start.line, range.start.column),
            offsetOf(text_, range.end.line, range.end.column)};
  }

  std::size_t closingBrace(const std::vector<Destination::Step>& steps) const {
    const std::vector<Destination::Step> outer(steps.begin(), steps.end() - 1);
    return rangeOf(*treeAt(outer), *steps.back().field, steps.back().index).end - 1;
  }

  bool isBlank(std::size_t begin, std::size_t end) const {
    return text_.substr(begin, end - begin).find_first_not_of(" \t\r") == std::string::npos;
  }

  void insertBeforeBrace(std::size_t brace, const std::string& field) {
    const std::size_t line = text_.rfind('\n', brace) + 1;
    if (line > 0 && isBlank(line, brace)) {
      text_.insert(line, text_.substr(line, brace - line) + "  " + field + '\n');
    } else {
      text_.insert(brace, (isBlank(brace - 1, brace) ? "" : " ") + field + ' ');
    }
  }

  void eraseWithLine(std::size_t begin, std::size_t end) {
    const std::size_t line = begin == 0 ? 0 : text_.rfind('\n', begin - 1) + 1;
    const std::size_t lineEnd = std::min(text_.find('\n', end), text_.size());
    if (isBlank(line, begin) && isBlank(end, lineEnd)) {
      begin = line;
      end = std::min(lineEnd + 1, text_.size());
    }
    text_.erase(begin, end - begin);
  }

  std::string text_;
  zeph::ConfigApp config_;
  std::unique_ptr<Tree> tree_;
};

// Lists that have been emptied for their new values.
using Emptied = std::set<std::string>;

std::optional<std::string> changeMessage(zeph::ConfigApp& config, const ConfigChange& one,
                                         Emptied& emptied) {
  Destination way;
  if (!way.find(config, one.field)) return way.trouble();
  if (way.isMissing()) {
    addElement(messageAt(config, way.steps()), way.field(), way.missing());
    return changeMessage(config, one, emptied);
  }
  if (auto trouble = valueTrouble(way.field(), one.value)) return trouble;
  Message& message = messageAt(config, way.steps());
  if (isList(way.field()) && emptied.insert(one.field).second) {
    message.GetReflection()->ClearField(&message, &way.field());
  }
  setValue(message, way.field(), one.value);
  return std::nullopt;
}

// The change is known to make sense.
void changeInText(TextEditor& editor, const ConfigChange& one, Emptied& emptied) {
  Destination way;
  if (!way.find(editor.config(), one.field)) return;
  if (way.isMissing()) {
    editor.add(way, writtenElement(way.field(), way.missing()));
    return changeInText(editor, one, emptied);
  }
  if (isList(way.field()) && emptied.insert(one.field).second) editor.clear(way);
  const Message& message = way.message();
  const bool isThere =
      !way.field().is_repeated() && message.GetReflection()->HasField(message, &way.field());
  if (isThere) {
    editor.replace(way, written(way.field(), one.value));
  } else {
    editor.add(way, written(way.field(), one.value));
  }
}

}  // namespace

std::optional<ConfigChange> changeIn(const std::string& word) {
  const std::size_t equals = word.find('=');
  if (equals == std::string::npos || equals == 0) return std::nullopt;
  return ConfigChange{word.substr(0, equals), word.substr(equals + 1)};
}

std::optional<std::string> change(zeph::ConfigApp& config,
                                  const std::vector<ConfigChange>& changes) {
  Emptied emptied;
  for (const ConfigChange& one : changes) {
    if (auto trouble = changeMessage(config, one, emptied)) return trouble;
  }
  return std::nullopt;
}

std::optional<std::string> changeText(const std::string& text,
                                      const std::vector<ConfigChange>& changes,
                                      std::string& trouble) {
  TextEditor editor(text);
  zeph::ConfigApp wanted = editor.config();
  if (auto reason = change(wanted, changes)) {
    trouble = *reason;
    return std::nullopt;
  }
  Emptied emptied;
  for (const ConfigChange& one : changes) changeInText(editor, one, emptied);
  if (protobuf::util::MessageDifferencer::Equals(editor.config(), wanted)) return editor.text();
  trouble = "the text is written in a way in which it cannot be changed: do it by hand";
  return std::nullopt;
}

}  // namespace morvik::devkit
