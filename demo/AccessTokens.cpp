#include "demo/AccessTokens.h"

#include "demo/GLibPointers.h"

namespace ondrel::demo {

const std::string& AccessTokens::current() {
  if (token_.empty())
    token_ = std::string("demo-") + StringPtr(g_uuid_string_random()).get();
  return token_;
}

} // namespace ondrel::demo
