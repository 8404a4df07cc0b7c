// The library's parser at work on an iterator that tells how far it came.
#include "config/json-places.h"

#include <algorithm>
#include <iterator>
#include <vector>

#include <nlohmann/json.hpp>

#include "device/json.h"

namespace morvik::devkit {
namespace {

// Far more than a configuration has, and few enough for paths to stay short.
constexpr std::size_t kDeepest = 50;

// Counts what is read of a text.
class CountingIterator {
 public:
  using iterator_category = std::input_iterator_tag;
  using value_type = char;
  using difference_type = std::ptrdiff_t;
  using pointer = const char*;
  using reference = const char&;

  CountingIterator(const char* at, const char** reached) : at_(at), reached_(reached) {}
  reference operator*() const { return *at_; }
  CountingIterator& operator++() {
    *reached_ = ++at_;
    return *this;
  }
  CountingIterator operator++(int) {
    CountingIterator before = *this;
    ++*this;
    return before;
  }
  bool operator==(const CountingIterator& other) const { return at_ == other.at_; }
  bool operator!=(const CountingIterator& other) const { return at_ != other.at_; }

 private:
  const char* at_;
  const char** reached_;
};

// Follows the parser from member to member.
class PlaceFinder : public nlohmann::json_sax<Json> {
 public:
  PlaceFinder(const std::string& text, const char*& reached,
              std::map<std::string, std::size_t>& places, std::optional<JsonPlaces::Error>& error)
      : text_(text), reached_(reached), places_(places), error_(error) {
    paths_.push_back({"", -1});
  }

  bool null() override { return value(4); }
  bool boolean(bool is) override { return value(is ? 4 : 5); }
  bool number_integer(number_integer_t /*value*/) override { return value(1); }
  bool number_unsigned(number_unsigned_t /*value*/) override { return value(1); }
  bool number_float(number_float_t /*value*/, const string_t& digits) override {
    return value(digits.size());
  }
  bool string(string_t& text) override { return value(text.size() + 2); }
  bool binary(binary_t& /*value*/) override { return true; }

  bool start_object(std::size_t /*size*/) override { return open(-1); }
  bool end_object() override { return close(); }
  bool start_array(std::size_t /*size*/) override { return open(0); }
  bool end_array() override { return close(); }

  bool key(string_t& name) override {
    const std::string& of = paths_[paths_.size() - 1].path;
    key_ = of.empty() ? name : of + '.' + name;
    places_[key_] = before(name.size() + 2);
    return true;
  }

  bool parse_error(std::size_t position, const std::string& token,
                   const nlohmann::detail::exception& what) override {
    const std::string said = what.what();
    // "[json.exception.parse_error.101] parse error at line 1, column 2: syntax error ..."
    const std::size_t colon = said.find(": ");
    // The library tells the last byte; only of a text it knows the first.
    const std::size_t size = token.ends_with('"') ? token.size() : 1;
    error_ = {position - std::min(position, size),
              colon == std::string::npos ? said : said.substr(colon + 2)};
    return false;
  }

 private:
  struct Level {
    std::string path;
    int index;  // of the next element of a list; -1 in an object
  };

  std::size_t before(std::size_t length) const {
    const auto read = static_cast<std::size_t>(reached_ - text_.data());
    return read - std::min(read, length);
  }

  // The path of the value that comes now.
  std::string next(std::size_t length) {
    Level& level = paths_.back();
    if (level.index < 0) return paths_.size() == 1 ? "" : key_;
    std::string path = level.path + '[' + std::to_string(level.index++) + ']';
    places_[path] = before(length);
    return path;
  }

  bool value(std::size_t length) {
    next(length);
    return true;
  }

  bool open(int index) {
    const std::string path = next(1);
    if (paths_.size() > kDeepest) {
      error_ = {before(1), "nested too deep for a configuration"};
      return false;
    }
    if (paths_.size() == 1) places_[path] = before(1);
    paths_.push_back({path, index});
    return true;
  }

  bool close() {
    paths_.pop_back();
    return true;
  }

  const std::string& text_;
  const char*& reached_;
  std::map<std::string, std::size_t>& places_;
  std::optional<JsonPlaces::Error>& error_;
  std::vector<Level> paths_;
  std::string key_;
};

}  // namespace

JsonPlaces::JsonPlaces(const std::string& text) {
  const char* reached = text.data();
  PlaceFinder finder(text, reached, places_, error_);
  Json::sax_parse(CountingIterator(text.data(), &reached),
                  CountingIterator(text.data() + text.size(), &reached), &finder);
}

std::optional<std::size_t> JsonPlaces::of(const std::string& path) const {
  const auto found = places_.find(path);
  return found != places_.end() ? std::optional(found->second) : std::nullopt;
}

}  // namespace morvik::devkit
