#include "integrations/SupportMail.h"

#include "base/Url.h"

namespace ondrel::integrations {

std::string supportMailURL(std::string_view address, std::string_view subject) {
  return "mailto:" + base::percentEncodedPath(address) +
         "?subject=" + base::percentEncodedQueryValue(subject);
}

} // namespace ondrel::integrations
