#include "Host/Play/Scenario/StrictJson.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "Host/Play/Scenario/ScenarioError.h"

namespace vel::host {

namespace {

using Json = nlohmann::json;

using JsonPointer = Json::json_pointer;

// The JSON library's error id for a number that is out of range.
constexpr int kNumberOutOfRange = 406;

/// Builds the document from the parser's calls. The JSON library's own builder accepts duplicate
/// members and does not report which value is invalid.
class DocumentBuilder final : public nlohmann::json_sax<Json> {
 public:
  explicit DocumentBuilder(std::string_view text) : text_(text) {}

  Json takeDocument() { return std::move(document_); }

  bool null() override { return addScalar(nullptr); }
  bool boolean(bool value) override { return addScalar(value); }
  bool number_integer(number_integer_t value) override { return addScalar(value); }
  bool number_unsigned(number_unsigned_t value) override { return addScalar(value); }
  bool number_float(number_float_t value, const string_t& /*text*/) override {
    return addScalar(value);
  }
  bool string(string_t& value) override { return addScalar(std::move(value)); }
  bool binary(binary_t& /*value*/) override { return false; }  // not part of JSON

  bool start_object(std::size_t /*size*/) override { return open(Json::object()); }
  bool end_object() override { return close(); }
  bool start_array(std::size_t /*size*/) override { return open(Json::array()); }
  bool end_array() override { return close(); }

  bool key(string_t& name) override {
    if (openContainers_.back()->contains(name)) {
      // The whole message is "…: expected each member only once in an object".
      throw ScenarioError((containerPointer() / name).to_string(),
                          "each member only once in an object");
    }
    keys_.back() = std::move(name);
    expectsValue_ = true;
    return true;
  }

  bool parse_error(std::size_t position, const std::string& /*token*/,
                   const nlohmann::detail::exception& error) override {
    if (error.id == kNumberOutOfRange) {
      throw ScenarioError(currentPointer().to_string(), "a number within the range of a double");
    }
    // `position` is the number of bytes that the parser has read.
    throwMalformed(std::max<std::size_t>(position, 1) - 1);
  }

  /// Throws the error for malformed JSON. `errorPosition` is the index of the invalid byte or of
  /// the last byte of an unexpected token. The message contains the line and the column of this
  /// byte, counted from 1.
  [[noreturn]] void throwMalformed(std::size_t errorPosition) const {
    const std::string_view textBeforeError = text_.substr(0, errorPosition);
    const auto line = 1 + std::ranges::count(textBeforeError, '\n');
    // `rfind` returns npos in the first line, and npos + 1 is 0.
    const std::size_t column = textBeforeError.size() - (textBeforeError.rfind('\n') + 1) + 1;
    throw ScenarioError(currentPointer().to_string(), "well-formed JSON in UTF-8 at line " +
                                                          std::to_string(line) + ", column " +
                                                          std::to_string(column));
  }

 private:
  Json* addValue(Json value) {
    if (openContainers_.empty()) {
      document_ = std::move(value);
      return &document_;
    }
    Json& container = *openContainers_.back();
    if (container.is_array()) {
      return &container.emplace_back(std::move(value));
    }
    expectsValue_ = false;
    return &(container[keys_.back()] = std::move(value));
  }

  bool addScalar(Json value) {
    addValue(std::move(value));
    return true;
  }

  bool open(Json container) {
    if (openContainers_.size() == kMaximumJsonDepth) {
      throw ScenarioError(
          currentPointer().to_string(),
          "at most " + std::to_string(kMaximumJsonDepth) + " levels of nested objects and arrays");
    }
    openContainers_.push_back(addValue(std::move(container)));
    keys_.emplace_back();
    return true;
  }

  bool close() {
    openContainers_.pop_back();
    keys_.pop_back();
    return true;
  }

  // Returns the JSON pointer to the innermost open object or array.
  [[nodiscard]] JsonPointer containerPointer() const {
    JsonPointer pointer;
    for (std::size_t level = 0; level + 1 < openContainers_.size(); ++level) {
      const Json& container = *openContainers_[level];
      pointer = container.is_array() ? pointer / (container.size() - 1) : pointer / keys_[level];
    }
    return pointer;
  }

  // Returns the JSON pointer to the value that the parser reads. If the parser expects the name
  // of a member, returns the JSON pointer to the object.
  [[nodiscard]] JsonPointer currentPointer() const {
    if (openContainers_.empty()) {
      return JsonPointer();
    }
    if (openContainers_.back()->is_array()) {
      return containerPointer() / openContainers_.back()->size();
    }
    return expectsValue_ ? containerPointer() / keys_.back() : containerPointer();
  }

  std::string_view text_;
  Json document_;
  // The objects and arrays that are not closed yet, from the outermost to the innermost.
  std::vector<Json*> openContainers_;
  // For each element of `openContainers_`, the name of its latest member. The name is empty for an
  // array.
  std::vector<std::string> keys_;
  bool expectsValue_ = false;  // true between the name of a member and its value
};

}  // namespace

nlohmann::json parseStrictJson(std::string_view text) {
  DocumentBuilder builder(text);
  Json::sax_parse(text.begin(), text.end(), &builder);
  // The parser treats a zero byte as the end of the text.
  if (const std::size_t zeroByte = text.find('\0'); zeroByte != std::string_view::npos) {
    builder.throwMalformed(zeroByte);
  }
  return builder.takeDocument();
}

}  // namespace vel::host
