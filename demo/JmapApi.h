#pragma once

#include "demo/JmapMethod.h"

#include <boost/json.hpp>

#include <string>
#include <string_view>
#include <vector>

namespace ondrel::demo {

// An answer of the API resource: the Response object of RFC 8620, 3.4, or problem details.
struct JmapAnswer {
  unsigned status = 200;
  boost::json::object body;
};

// Carries out the method calls of one request, one after the other.
class JmapApi {
 public:
  // `userCapability` is the service's own one, of the user's preferences.
  JmapApi(JmapContext context, std::string userCapability)
      : context_(context), userCapability_(std::move(userCapability)) {}

  JmapAnswer answer(std::string_view contentType, std::string_view body) const;

 private:
  boost::json::array call(const boost::json::array& methodCall, const std::vector<std::string>& capabilities,
                          const boost::json::array& responses) const;
  MethodResult run(const std::string& name, const boost::json::object& arguments,
                   const std::vector<std::string>& capabilities) const;

  JmapContext context_;
  std::string userCapability_;
};

} // namespace ondrel::demo
