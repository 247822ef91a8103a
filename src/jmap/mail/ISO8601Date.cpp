#include "jmap/mail/ISO8601Date.h"

#include <fmt/format.h>

namespace ondrel::jmap {

namespace {

// Takes pieces of fixed form from the front of a text; once one did not fit it stays failed.
class Reader {
 public:
  explicit Reader(std::string_view text) : rest_(text) {}

  int digits(std::size_t count) {
    int value = 0;
    for (; count > 0; --count) {
      const bool isDigit = !rest_.empty() && rest_.front() >= '0' && rest_.front() <= '9';
      failed_ = failed_ || !isDigit;
      if (failed_)
        return 0;
      value = value * 10 + (rest_.front() - '0');
      rest_.remove_prefix(1);
    }
    return value;
  }
  bool skip(char c) {
    if (!rest_.starts_with(c))
      return false;
    rest_.remove_prefix(1);
    return true;
  }
  void expect(char c) { failed_ = !skip(c) || failed_; }
  std::chrono::milliseconds fraction() {
    int value = 0;
    int scale = 100;
    do {
      value += digits(1) * scale;
      scale /= 10;
    } while (!failed_ && !rest_.empty() && rest_.front() >= '0' && rest_.front() <= '9');
    return std::chrono::milliseconds(value);
  }
  bool ended() const { return !failed_ && rest_.empty(); }

 private:
  std::string_view rest_;
  bool failed_ = false;
};

} // namespace

std::optional<Milliseconds> parseISO8601Date(std::string_view text) {
  using namespace std::chrono;
  Reader reader(text);
  const auto y = year(reader.digits(4));
  reader.expect('-');
  const auto m = month(static_cast<unsigned>(reader.digits(2)));
  reader.expect('-');
  const auto d = day(static_cast<unsigned>(reader.digits(2)));
  reader.expect('T');
  const hours hour(reader.digits(2));
  reader.expect(':');
  const minutes minute(reader.digits(2));
  reader.expect(':');
  const seconds second(reader.digits(2));
  const auto fraction = reader.skip('.') ? reader.fraction() : 0ms;
  minutes offset{0};
  if (!reader.skip('Z')) {
    const bool east = reader.skip('+');
    if (!east)
      reader.expect('-');
    const hours offsetHours(reader.digits(2));
    reader.expect(':');
    const minutes offsetMinutes(reader.digits(2));
    if (offsetHours > 23h || offsetMinutes > 59min)
      return std::nullopt;
    offset = (offsetHours + offsetMinutes) * (east ? 1 : -1);
  }
  // A leap second is :60.
  const year_month_day date(y, m, d);
  if (!reader.ended() || !date.ok() || hour > 23h || minute > 59min || second > 60s)
    return std::nullopt;
  return sys_days(date) + hour + minute + second + fraction - offset;
}

std::string formatUTCDate(Milliseconds time) {
  using namespace std::chrono;
  const auto day = floor<days>(time);
  const year_month_day date(day);
  const hh_mm_ss clock(time - day);
  auto text = fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}", int(date.year()), unsigned(date.month()),
                          unsigned(date.day()), clock.hours().count(), clock.minutes().count(),
                          clock.seconds().count());
  if (clock.subseconds().count() > 0)
    text += fmt::format(".{:03}", clock.subseconds().count());
  return text + 'Z';
}

} // namespace ondrel::jmap
