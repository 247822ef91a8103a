#include "base/JsonReader.h"

#include <boost/json/value.hpp>
#include <fmt/format.h>

#include <utility>

namespace ondrel::base {

namespace json = boost::json;

JsonReader::JsonReader(const JsonReader& parent, const json::value* value, std::string_view step)
    : value_(value), fault_(parent.fault_) {
  if (!fault_)
    return;
  parentLength_ = parent.path_.size();
  path_ = parent.path_;
  if (!path_.empty() && !step.starts_with('['))
    path_ += '.';
  path_ += step;
}

JsonReader JsonReader::operator[](std::string_view member) const {
  const auto* members = object();
  return {*this, members ? members->if_contains(member) : nullptr, member};
}

JsonReader JsonReader::operator[](std::size_t element) const {
  const auto* list = array();
  return {*this, list ? list->if_contains(element) : nullptr, fault_ ? fmt::format("[{}]", element) : ""};
}

std::size_t JsonReader::size() const {
  const auto* list = array();
  return list ? list->size() : 0;
}

bool JsonReader::isGiven() const {
  return object_ || (value_ && !value_->is_null());
}

const json::object* JsonReader::object() const {
  return object_ ? object_ : expect(value_ ? value_->if_object() : nullptr, "is not an object");
}

const json::array* JsonReader::array() const {
  return expect(value_ ? value_->if_array() : nullptr, "is not an array");
}

std::optional<std::string> JsonReader::string() const {
  const auto* text = expect(value_ ? value_->if_string() : nullptr, "is not a string");
  return text ? std::optional<std::string>(*text) : std::nullopt;
}

std::optional<bool> JsonReader::boolean() const {
  const auto* boolean = expect(value_ ? value_->if_bool() : nullptr, "is not true or false");
  return boolean ? std::optional(*boolean) : std::nullopt;
}

std::optional<std::int64_t> JsonReader::integer() const {
  const auto* integer = expect(value_ ? value_->if_int64() : nullptr, "is not an integer");
  return integer ? std::optional(*integer) : std::nullopt;
}

std::optional<std::int64_t> JsonReader::wholeNumber() const {
  json::error_code error;
  const auto number = value_ ? value_->to_number<std::int64_t>(error) : 0;
  return expect(value_ && !error ? std::optional(number) : std::nullopt, "is not a whole number");
}

std::optional<double> JsonReader::number() const {
  const bool isNumber = value_ && value_->is_number();
  return expect(isNumber ? std::optional(value_->to_number<double>()) : std::nullopt, "is not a number");
}

std::vector<std::string> JsonReader::strings() const {
  std::vector<std::string> result;
  for (const auto& element : elements())
    if (auto text = element.string())
      result.push_back(*std::move(text));
  return result;
}

void JsonReader::complain(std::string what) const {
  if (fault_ && !*fault_)
    *fault_ = JsonFault{path_, std::move(what)};
}

template <class T>
T JsonReader::expect(T found, const char* what) const {
  if (found || !fault_ || *fault_)
    return found;
  if (value_) {
    complain(what);
  } else {
    const auto step = parentLength_ + (path_[parentLength_] == '.' ? 1 : 0);
    *fault_ = JsonFault{path_.substr(0, parentLength_), fmt::format("has no \"{}\"", path_.substr(step))};
  }
  return found;
}

} // namespace ondrel::base
