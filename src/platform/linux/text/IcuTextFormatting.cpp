#include "platform/linux/text/IcuTextFormatting.h"

#include <fmt/chrono.h>

#include <cstdlib>
#include <unicode/brkiter.h>
#include <unicode/datefmt.h>
#include <unicode/locid.h>
#include <unicode/timezone.h>
#include <unicode/utext.h>

namespace ondrel::platform::text {

namespace {

// As POSIX has it for the category LC_TIME.
std::string localeForDates() {
  for (const auto* name : {"LC_ALL", "LC_TIME", "LANG"})
    if (const auto* value = std::getenv(name); value && *value)
      return value;
  return "C";
}

icu::Locale icuLocale(const std::string& posix) {
  if (posix == "C" || posix == "POSIX" || posix.starts_with("C."))
    return icu::Locale::getUS();
  return icu::Locale::createCanonical(posix.c_str());
}

using Milliseconds = std::chrono::sys_time<std::chrono::milliseconds>;

std::string formatted(const icu::DateFormat& format, Milliseconds time) {
  icu::UnicodeString text;
  format.format(static_cast<UDate>(time.time_since_epoch().count()), text);
  std::string result;
  text.toUTF8String(result);
  return result;
}

struct CloseText {
  void operator()(UText* text) const { utext_close(text); }
};

} // namespace

struct IcuTextFormatting::Formats {
  Formats(const icu::Locale& locale, std::unique_ptr<icu::TimeZone> zone) {
    times.reset(
        icu::DateFormat::createDateTimeInstance(icu::DateFormat::kMedium, icu::DateFormat::kShort, locale));
    dates.reset(icu::DateFormat::createDateInstance(icu::DateFormat::kMedium, locale));
    for (auto* format : {times.get(), dates.get()})
      if (format)
        format->setTimeZone(*zone);
    UErrorCode failure = U_ZERO_ERROR;
    characters.reset(icu::BreakIterator::createCharacterInstance(locale, failure));
  }

  // Absent when ICU has no data at all.
  std::unique_ptr<icu::DateFormat> times;
  std::unique_ptr<icu::DateFormat> dates;
  std::unique_ptr<icu::BreakIterator> characters;
};

IcuTextFormatting::IcuTextFormatting()
    : formats_(std::make_unique<Formats>(icuLocale(localeForDates()),
                                         std::unique_ptr<icu::TimeZone>(icu::TimeZone::createDefault()))) {
}

IcuTextFormatting::IcuTextFormatting(const std::string& locale, const std::string& timeZone)
    : formats_(std::make_unique<Formats>(
          icuLocale(locale),
          std::unique_ptr<icu::TimeZone>(icu::TimeZone::createTimeZone(timeZone.c_str())))) {
}

IcuTextFormatting::~IcuTextFormatting() = default;

std::string IcuTextFormatting::mediumDateShortTime(Milliseconds time) const {
  return formats_->times ? formatted(*formats_->times, time)
                         : fmt::format("{:%F %R}", std::chrono::floor<std::chrono::seconds>(time));
}

std::string IcuTextFormatting::mediumDate(Milliseconds time) const {
  return formats_->dates ? formatted(*formats_->dates, time)
                         : fmt::format("{:%F}", std::chrono::floor<std::chrono::seconds>(time));
}

std::string_view IcuTextFormatting::firstCharacters(std::string_view text, std::size_t count) const {
  // A character has at least one byte.
  if (text.size() <= count || !formats_->characters)
    return text;
  UErrorCode failure = U_ZERO_ERROR;
  const std::unique_ptr<UText, CloseText> bytes(
      utext_openUTF8(nullptr, text.data(), static_cast<std::int64_t>(text.size()), &failure));
  auto& characters = *formats_->characters;
  characters.setText(bytes.get(), failure);
  if (U_FAILURE(failure))
    return text;
  characters.first();
  for (; count > 0; --count)
    if (characters.next() == icu::BreakIterator::DONE)
      return text;
  return text.substr(0, static_cast<std::size_t>(characters.current()));
}

} // namespace ondrel::platform::text
