#pragma once

#include "demo/Arguments.h"

#include <functional>
#include <initializer_list>
#include <optional>
#include <string>
#include <vector>

namespace ondrel::demo {

// The common part of the "/get" methods, RFC 8620, 5.1, for objects that are cheap to make whole.
class GetAnswer {
 public:
  // Reads `ids` and `properties`. Properties that aren't among the given ones are invalid.
  GetAnswer(Arguments& arguments, const char* accountId, std::initializer_list<const char*> properties);

  // `all` is what an absent or null `ids` stands for; `make` gives none for an unknown id.
  MethodResult of(const std::vector<std::string>& all, const std::string& state,
                  const std::function<std::optional<boost::json::object>(const std::string&)>& make) const;

 private:
  const char* accountId_;
  std::optional<std::vector<std::string>> ids_;
  std::optional<std::vector<std::string>> properties_;
};

} // namespace ondrel::demo
