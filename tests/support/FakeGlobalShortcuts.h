#pragma once

#include "async/sleep.h"
#include "platform/desktop/GlobalShortcuts.h"

#include <map>
#include <string>

namespace ondrel::support {

// A desktop that takes its time to answer.
class FakeGlobalShortcuts final : public platform::GlobalShortcuts {
 public:
  const base::Observable<bool>& isAvailable() const override { return available; }
  async::Task<std::expected<std::string, std::string>> reserve(std::string name,
                                                               platform::KeyCombination keys) override {
    [[maybe_unused]] const bool slept = co_await async::sleep(answerTakes);
    if (keys.key == taken)
      co_return std::unexpected("These are taken.");
    reserved[name] = keys;
    co_return words;
  }
  void release(const std::string& name) override { reserved.erase(name); }

  base::Observable<bool> available{true};
  std::string words; // of the desktop for the keys
  async::Duration answerTakes = std::chrono::seconds(1);
  std::string taken; // a key that another program has
  std::map<std::string, platform::KeyCombination> reserved;
};

} // namespace ondrel::support
