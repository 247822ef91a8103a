#pragma once

#include <boost/json/fwd.hpp>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <ranges>
#include <string>
#include <string_view>
#include <vector>

namespace ondrel::base {

// What is wrong with a document.
struct JsonFault {
  std::string path; // of the value: windows[0].title
  std::string what; // "is not a string"
};

// A place in a JSON document that somebody else wrote. What is missing or of another type is absent, and so
// is all below it; nothing throws. A decoder that takes a record whole or not at all gives a place for the
// fault, reads what it needs, and looks there at the end for the first thing that was wrong. The document
// outlives its readers.
class JsonReader {
 public:
  JsonReader() = default; // holds nothing
  explicit JsonReader(const boost::json::value& value) : value_(&value) {}
  explicit JsonReader(const boost::json::object& object) : object_(&object) {}
  JsonReader(const boost::json::value& value, std::optional<JsonFault>& fault, std::string name = {})
      : value_(&value), fault_(&fault), path_(std::move(name)) {}
  explicit JsonReader(boost::json::value&&) = delete;

  JsonReader operator[](std::string_view member) const;
  JsonReader operator[](std::size_t element) const;
  // Of an array; none of anything else.
  auto elements() const {
    return std::views::iota(std::size_t{0}, size()) |
           std::views::transform([list = *this](std::size_t index) { return list[index]; });
  }
  std::size_t size() const;

  // Null where there is nothing.
  const boost::json::value* value() const { return value_; }
  // Of any type but null. To ask is no fault.
  bool isGiven() const;
  const boost::json::object* object() const;
  const boost::json::array* array() const;

  std::optional<std::string> string() const;
  std::optional<bool> boolean() const;
  // One that is written as such, without a point or an exponent.
  std::optional<std::int64_t> integer() const;
  // However it is written: 1e3 and 5.0 too.
  std::optional<std::int64_t> wholeNumber() const;
  std::optional<double> number() const; // integers too
  // Those among the elements of an array.
  std::vector<std::string> strings() const;

  // Sets the field, or leaves it and gives false.
  bool read(std::string& field) const { return set(field, string()); }
  bool read(bool& field) const { return set(field, boolean()); }
  bool read(std::int64_t& field) const { return set(field, integer()); }
  bool read(double& field) const { return set(field, number()); }

  // Notes what types can't tell as the fault, unless there is one already.
  void complain(std::string what) const;

 private:
  JsonReader(const JsonReader& parent, const boost::json::value* value, std::string_view step);

  template <class T>
  static bool set(T& field, std::optional<T> value) {
    if (value)
      field = *std::move(value);
    return value.has_value();
  }
  template <class T>
  T expect(T found, const char* what) const;

  const boost::json::value* value_ = nullptr;
  const boost::json::object* object_ = nullptr; // instead, for a reader that begins with one
  // The rest is for faults alone, and empty where nobody asks for them.
  std::optional<JsonFault>* fault_ = nullptr;
  std::string path_;
  std::size_t parentLength_ = 0; // of the path
};

} // namespace ondrel::base
