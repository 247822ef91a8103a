#include "platform/linux/desktop/SharedMimeTypes.h"

#include "base/Text.h"
#include "platform/linux/glib/Ref.h"

#include <gio/gio.h>

#include <algorithm>
#include <array>

namespace ondrel::platform::desktop {

namespace {

// Of a kind are the types with one of these for an ancestor, and those whose generic icon is that one.
// Ancestors alone don't do: for the database a text document is a kind of zip archive, since it is packed as
// one, while a family has nothing but its icon in common.
struct Kind {
  std::array<const char*, 2> ancestors;
  std::string_view genericIcon;
};

Kind kindOf(ContentKind kind) {
  switch (kind) {
  case ContentKind::image:
    return {{"image/*"}, "image-x-generic"};
  case ContentKind::pdf:
    return {{"application/pdf"}, {}};
  case ContentKind::archive:
    return {{"application/x-java-archive", "application/x-raw-disk-image"}, "package-x-generic"};
  case ContentKind::movie:
    return {{"video/*"}, "video-x-generic"};
  case ContentKind::audio:
    return {{"audio/*"}, "audio-x-generic"};
  case ContentKind::spreadsheet:
    return {{}, "x-office-spreadsheet"};
  case ContentKind::presentation:
    return {{}, "x-office-presentation"};
  case ContentKind::text:
    return {{"text/plain", "text/*"}, {}};
  }
  return {};
}

constexpr std::string_view unknownIcon = "application-x-generic";

std::string genericIcon(const std::string& type) {
  const glib::CString icon(g_content_type_get_generic_icon_name(type.c_str()));
  return icon ? icon.get() : std::string(unknownIcon);
}

} // namespace

bool SharedMimeTypes::conforms(std::string_view mimeType, ContentKind kind) const {
  const auto& type = find(mimeType);
  if (!type)
    return false;
  const auto [ancestors, icon] = kindOf(kind);
  return (!icon.empty() && type->genericIcon == icon) ||
         std::ranges::any_of(ancestors, [&type](const char* ancestor) {
           return ancestor && g_content_type_is_a(type->name.c_str(), ancestor);
         });
}

const std::optional<SharedMimeTypes::Type>& SharedMimeTypes::find(std::string_view mimeType) const {
  const auto kept = found_.find(mimeType);
  if (kept != found_.end())
    return kept->second;
  const auto withoutParameters = base::trimmed(mimeType.substr(0, mimeType.find(';')));
  return found_.emplace(mimeType, lookUp(std::string(withoutParameters))).first->second;
}

std::optional<SharedMimeTypes::Type> SharedMimeTypes::lookUp(const std::string& mimeType) const {
  if (registered_.empty()) {
    GList* all = g_content_types_get_registered();
    for (const GList* each = all; each; each = each->next)
      registered_.insert(base::lowercasedAscii(static_cast<const char*>(each->data)));
    g_list_free_full(all, g_free);
  }
  const auto lowercased = base::lowercasedAscii(mimeType);
  auto known = registered_.find(lowercased);
  if (known == registered_.end()) // it may be an alias
    known = std::ranges::find_if(registered_, [&lowercased](const std::string& each) {
      return g_content_type_equals(lowercased.c_str(), each.c_str());
    });
  if (known == registered_.end())
    return std::nullopt;
  // Icons are listed by names with capitals where types have them.
  auto icon = genericIcon(mimeType);
  if (icon == unknownIcon)
    icon = genericIcon(*known);
  return Type{*known, std::move(icon)};
}

} // namespace ondrel::platform::desktop
