#pragma once

#include "platform/documents/ContentTypes.h"

#include <map>
#include <optional>
#include <set>
#include <string>

namespace ondrel::platform::desktop {

// The desktop's own database of types (shared-mime-info): their kinds, aliases and generic icons, which are
// the same for all types of a family.
class SharedMimeTypes final : public ContentTypes {
 public:
  bool conforms(std::string_view mimeType, ContentKind kind) const override;

 private:
  // A known type.
  struct Type {
    std::string name; // its own, in lower case
    std::string genericIcon;
  };

  const std::optional<Type>& find(std::string_view mimeType) const;
  std::optional<Type> lookUp(const std::string& mimeType) const;

  mutable std::set<std::string> registered_; // in lower case
  mutable std::map<std::string, std::optional<Type>, std::less<>> found_;
};

} // namespace ondrel::platform::desktop
