#include "Host/Play/Scenario/StrictJson.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "Host/Play/Scenario/ScenarioError.h"

namespace vel::host {

namespace {

using Json = nlohmann::json;

constexpr int kNumberOutOfRange = 406;  // how nlohmann numbers that error

/// Builds the document while the parser reads it, and knows where it is.
class DocumentBuilder final : public nlohmann::json_sax<Json> {
 public:
  explicit DocumentBuilder(std::string_view text) : text_(text) {}

  Json takeDocument() { return std::move(document_); }

  bool null() override { return add(nullptr); }
  bool boolean(bool value) override { return add(value); }
  bool number_integer(number_integer_t value) override { return add(value); }
  bool number_unsigned(number_unsigned_t value) override { return add(value); }
  bool number_float(number_float_t value, const string_t& /*text*/) override { return add(value); }
  bool string(string_t& value) override { return add(std::move(value)); }
  bool binary(binary_t& /*value*/) override { return false; }  // JSON has none

  bool start_object(std::size_t /*size*/) override { return open(Json::object()); }
  bool end_object() override { return close(); }
  bool start_array(std::size_t /*size*/) override { return open(Json::array()); }
  bool end_array() override { return close(); }

  bool key(string_t& name) override {
    if (open_.back()->contains(name)) {
      throw ScenarioError(placeOf(open_.size() - 1).member(name),
                          "a member that stands only once in its object");
    }
    keys_.back() = std::move(name);
    awaitsValue_ = true;
    return true;
  }

  bool parse_error(std::size_t position, const std::string& /*token*/,
                   const nlohmann::detail::exception& error) override {
    if (error.id == kNumberOutOfRange) {
      throw ScenarioError(place(), "a number within the range of a double");
    }
    throwMalformed(std::max<std::size_t>(position, 1) - 1);
  }

  /// Malformed behind so many bytes.
  [[noreturn]] void throwMalformed(std::size_t length) const {
    const std::string_view read = text_.substr(0, length);
    const auto line = 1 + std::ranges::count(read, '\n');
    const std::size_t column = read.size() - (read.rfind('\n') + 1) + 1;
    throw ScenarioError(place(), "well-formed JSON in UTF-8 at line " + std::to_string(line) +
                                     ", column " + std::to_string(column));
  }

 private:
  Json* addValue(Json value) {
    if (open_.empty()) {
      document_ = std::move(value);
      return &document_;
    }
    Json& container = *open_.back();
    if (container.is_array()) {
      return &container.emplace_back(std::move(value));
    }
    awaitsValue_ = false;
    return &(container[keys_.back()] = std::move(value));
  }

  bool add(Json value) {
    addValue(std::move(value));
    return true;
  }

  bool open(Json container) {
    if (open_.size() == kDeepestJson) {
      throw ScenarioError(place(), "no more than " + std::to_string(kDeepestJson) +
                                       " objects and arrays in each other");
    }
    open_.push_back(addValue(std::move(container)));
    keys_.emplace_back();
    return true;
  }

  bool close() {
    open_.pop_back();
    keys_.pop_back();
    return true;
  }

  // Of the innermost container, after the outermost `depth` ones.
  [[nodiscard]] JsonPlace placeOf(std::size_t depth) const {
    JsonPlace place;
    for (std::size_t level = 0; level < depth; ++level) {
      const Json& container = *open_[level];
      place =
          container.is_array() ? place.element(container.size() - 1) : place.member(keys_[level]);
    }
    return place;
  }

  // Of the value that is read now, or of the object whose member's name is.
  [[nodiscard]] JsonPlace place() const {
    if (open_.empty()) {
      return {};
    }
    const JsonPlace container = placeOf(open_.size() - 1);
    if (open_.back()->is_array()) {
      return container.element(open_.back()->size());
    }
    return awaitsValue_ ? container.member(keys_.back()) : container;
  }

  std::string_view text_;
  Json document_;
  // From the outermost to the innermost, each with the name of its latest member.
  std::vector<Json*> open_;
  std::vector<std::string> keys_;
  bool awaitsValue_ = false;
};

}  // namespace

nlohmann::json parseStrictJson(std::string_view text) {
  DocumentBuilder builder(text);
  Json::sax_parse(text.begin(), text.end(), &builder);
  // The parser takes a zero byte for the end, wherever one may come.
  if (const std::size_t zero = text.find('\0'); zero != std::string_view::npos) {
    builder.throwMalformed(zero);
  }
  return builder.takeDocument();
}

}  // namespace vel::host
