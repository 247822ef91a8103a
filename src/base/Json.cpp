#include "base/Json.h"

#include <boost/json/serialize.hpp>
#include <boost/json/value.hpp>
#include <fmt/format.h>

#include <cmath>

namespace ondrel::base {

namespace {

namespace json = boost::json;

std::string numberText(double number) {
  if (!std::isfinite(number))
    return "null";
  auto text = fmt::format("{}", number);
  if (text.find_first_of(".e") == text.npos)
    text += ".0";
  return text;
}

class Writer {
 public:
  Writer(std::string& out, int indent) : out_(out), indent_(indent) {}

  void write(const json::value& value) {
    if (const auto* object = value.if_object())
      writeMembers('{', '}', *object, [this](const auto& member) {
        out_ += json::serialize(member.key());
        out_ += indent_ ? ": " : ":";
        write(member.value());
      });
    else if (const auto* array = value.if_array())
      writeMembers('[', ']', *array, [this](const auto& element) { write(element); });
    else if (const auto* number = value.if_double())
      out_ += numberText(*number);
    else
      out_ += json::serialize(value);
  }

 private:
  template <class Members, class WriteOne>
  void writeMembers(char open, char close, const Members& members, WriteOne writeOne) {
    out_ += open;
    ++depth_;
    bool first = true;
    for (const auto& member : members) {
      if (!first)
        out_ += ',';
      first = false;
      newLine();
      writeOne(member);
    }
    --depth_;
    if (!first)
      newLine();
    out_ += close;
  }

  void newLine() {
    if (indent_)
      out_.append("\n").append(static_cast<std::size_t>(depth_) * static_cast<std::size_t>(indent_), ' ');
  }

  std::string& out_;
  int indent_;
  int depth_ = 0;
};

} // namespace

std::string jsonText(const json::value& value, int indent) {
  std::string text;
  Writer(text, indent).write(value);
  return text;
}

std::string jsonStringLiteral(std::string_view text) {
  return json::serialize(json::string_view(text));
}

} // namespace ondrel::base
