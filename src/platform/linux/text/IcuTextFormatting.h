#pragma once

#include "platform/TextFormatting.h"

#include <memory>

namespace ondrel::platform::text {

// By ICU's locale data.
class IcuTextFormatting final : public TextFormatting {
 public:
  // The locale that the environment names for dates, and the machine's time zone.
  IcuTextFormatting();
  // A POSIX locale ("de_DE.UTF-8") and the name of a time zone ("Europe/Berlin").
  IcuTextFormatting(const std::string& locale, const std::string& timeZone);
  ~IcuTextFormatting() override;

  std::string mediumDateShortTime(std::chrono::sys_time<std::chrono::milliseconds> time) const override;
  std::string mediumDate(std::chrono::sys_time<std::chrono::milliseconds> time) const override;
  std::string_view firstCharacters(std::string_view text, std::size_t count) const override;

 private:
  struct Formats;
  std::unique_ptr<Formats> formats_;
};

} // namespace ondrel::platform::text
