#include "platform/linux/desktop/SharedMimeTypes.h"

#include <gtest/gtest.h>

#include <sstream>

namespace ondrel::platform {

TEST(SharedMimeTypesTest, KnowsTheKindsOfTypes) {
  const desktop::SharedMimeTypes types;
  // Kinds by their numbers.
  std::istringstream cases(
      "image/heic=0 image/svg+xml=07 IMAGE/PNG;a=0 image/x-nobody-knows= application/x-pdf=1 "
      "application/x-zip-compressed=2 application/x-iso9660-image=2 text/csv=7 video/mp4=3 "
      "audio/mpeg=4 application/vnd.ms-excel.sheet.macroEnabled.12=5 application/json=7 "
      "application/vnd.oasis.opendocument.presentation=6 application/octet-stream= = "
      "application/vnd.openxmlformats-officedocument.wordprocessingml.document=");
  for (std::string each; cases >> each;) {
    auto found = each.substr(0, each.find('=') + 1);
    for (int kind = 0; kind < 8; ++kind)
      if (types.conforms(each.substr(0, each.find('=')), static_cast<ContentKind>(kind)))
        found += std::to_string(kind);
    EXPECT_EQ(found, each);
  }
}

} // namespace ondrel::platform
