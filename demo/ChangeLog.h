#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ondrel::demo {

enum class DataType { email, mailbox, thread };

// What happened to the mail since the service began, by type of data. The states that it gives out are
// opaque, change with every change and mean nothing to a later run.
class ChangeLog {
 public:
  enum class Kind { created, updated, destroyed };
  struct Changes {
    std::vector<std::string> created;
    std::vector<std::string> updated;
    std::vector<std::string> destroyed;
    std::string newState;
    bool hasMore = false;
  };

  ChangeLog();
  void record(DataType type, Kind kind, std::string id);
  std::string state(DataType type) const;
  // What happened after a state, about at most so many things (0: any number). None when the state is
  // unknown or too old.
  std::optional<Changes> since(DataType type, std::string_view state, std::size_t most) const;
  // From the states given so far nothing can be worked out any more.
  void forget();

 private:
  struct Entry {
    Kind kind;
    std::string id;
  };
  struct Journal {
    std::size_t base = 0; // the number of the state before the first entry
    std::vector<Entry> entries;
  };

  const Journal& journal(DataType type) const { return journals_[static_cast<std::size_t>(type)]; }
  std::string stateText(std::size_t number) const { return run_ + "-" + std::to_string(number); }

  std::string run_;
  std::array<Journal, 3> journals_;
};

} // namespace ondrel::demo
