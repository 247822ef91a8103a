#pragma once

#include "async/EventLoop.h"
#include "platform/FileStore.h"
#include "platform/RetriedSave.h"
#include "platform/UserDefaults.h"

#include <boost/json/object.hpp>

#include <memory>

namespace ondrel::platform::files {

// Settings in one flat JSON object in a file that people may read and edit. Values that the program doesn't
// know, of whatever shape, are kept as they are. A file that can't be read as such is kept aside before the
// first save. Needs an event loop; what was set in one turn is saved with the next, or later
// when that fails, and at the latest by the destructor.
class JsonUserDefaults final : public UserDefaults {
 public:
  static constexpr std::size_t largestFile = std::size_t{4} << 20; // bytes
  static constexpr int deepestNesting = 32;

  // `store` must outlive this object.
  JsonUserDefaults(FileStore& store, std::string path);
  ~JsonUserDefaults() override;

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

  // Saves now what is not saved yet.
  void flush();
  // Of the file.
  RetriedSave& saving() { return saving_; }

 private:
  void load();
  void store(std::string_view key, boost::json::value value);
  void didChange(std::string_view key);
  RetriedSave::Result write();

  FileStore& store_;
  std::string path_;
  boost::json::object values_;
  bool damaged_ = false; // the file holds what values_ was not read from
  bool unsaved_ = false;
  bool savePosted_ = false;
  RetriedSave saving_;
  std::shared_ptr<JsonUserDefaults*> self_; // for posted saves: empty once this object has gone
};

} // namespace ondrel::platform::files
