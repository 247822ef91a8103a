#pragma once

#include "platform/KeptFile.h"
#include "platform/UserDefaults.h"

#include <boost/json/object.hpp>

#include <set>

namespace ondrel::platform::files {

// Settings in one flat JSON object in a file that people may read and edit. Values that the program doesn't
// know, of whatever shape, are kept as they are. What was set in one turn is saved with the next, or later
// when that fails, and at the latest by the destructor. What somebody else has changed in the file meanwhile
// holds, but for the keys that were changed here. Needs an event loop.
class JsonUserDefaults final : public UserDefaults {
 public:
  static constexpr std::size_t largestFile = std::size_t{4} << 20; // bytes
  static constexpr int deepestNesting = 32;

  // `store` must outlive this object.
  JsonUserDefaults(FileStore& store, std::string path);

  std::optional<bool> boolean(std::string_view key) const override;
  std::optional<std::int64_t> integer(std::string_view key) const override;
  std::optional<double> number(std::string_view key) const override; // integers too
  std::optional<std::string> string(std::string_view key) const override;

  using UserDefaults::set;
  void set(std::string_view key, bool value) override;
  void set(std::string_view key, std::int64_t value) override;
  void set(std::string_view key, double value) override; // NaN and infinities are refused with a log line
  void set(std::string_view key, std::string value) override; // invalid UTF-8 is replaced by U+FFFD
  void remove(std::string_view key) override;

  KeptFile& file() { return file_; }
  // Takes what somebody else has changed in the file, as a save does, and tells of it.
  void reread();

 private:
  void store(std::string_view key, boost::json::value value);
  void didChange(std::string_view key);
  std::expected<void, std::string> take(const std::string& text);
  void didSave(bool isSaved);
  void tellTaken();

  boost::json::object values_;
  std::set<std::string> unsaved_; // keys set or removed here
  std::set<std::string> taken_;   // keys that somebody else has changed, until that is told
  bool isLoaded_ = false;
  KeptFile file_;
};

} // namespace ondrel::platform::files
