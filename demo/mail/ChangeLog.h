#pragma once

#include <array>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace ondrel::demo::mail {

enum class DataType { email, mailbox };

// What happened to the mail since the service began, by type of data; nothing is ever destroyed. The states
// that it gives out are opaque, change with every change and mean nothing to a later run.
class ChangeLog {
 public:
  struct Changes {
    std::vector<std::string> created;
    std::vector<std::string> updated;
    std::string newState;
    bool hasMore = false;
  };

  ChangeLog();
  void record(DataType type, std::string id, bool isNew = false);
  std::string state(DataType type) const;
  // What happened after a state, about at most so many things (0: any number). None when the state is
  // unknown or too old.
  std::optional<Changes> since(DataType type, const std::string& state, std::size_t most) const;
  // From the states given so far nothing can be worked out any more.
  void forget();

 private:
  struct Journal {
    std::size_t base = 0; // the number of the state before the first entry
    std::vector<std::pair<std::string, bool>> entries;
  };

  std::string stateText(std::size_t number) const { return run_ + std::to_string(number); }

  std::string run_;
  std::array<Journal, 2> journals_;
};

} // namespace ondrel::demo::mail
