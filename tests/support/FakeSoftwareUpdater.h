#pragma once

#include "async/sleep.h"
#include "platform/SoftwareUpdater.h"

#include <string>
#include <vector>

namespace ondrel::support {

// A package service that takes its time: a second for each answer, and half of it for each step that it
// tells. As the real one it tells progress of nothing in particular first, and can be called off.
class FakeSoftwareUpdater final : public platform::SoftwareUpdater {
 public:
  using Fault = platform::UpdateFault;

  async::Task<platform::UpdateSource> source() override {
    calls.push_back("source");
    // Called off while it comes to its bus, the real one finds no service.
    if (!co_await async::sleep(std::chrono::seconds(1)))
      co_return platform::UpdateSource::none;
    co_return who;
  }
  async::Task<Found> find(bool mayAsk) override {
    calls.push_back(mayAsk ? "find" : "find quietly");
    if (!co_await async::sleep(std::chrono::seconds(1)))
      co_return std::unexpected(calledOff());
    if (!mayAsk && needsPassword)
      co_return std::unexpected(Fault{Fault::Kind::refused, "error 48"});
    co_return found;
  }
  async::Task<Done> download(platform::SoftwareUpdate update, Progress progress) override {
    return work("download " + update.version, platform::UpdateProgress::Step::downloading, progress,
                &downloaded);
  }
  async::Task<Done> install(platform::SoftwareUpdate update, Progress progress) override {
    return work("install " + update.version, platform::UpdateProgress::Step::installing, progress,
                &installed);
  }
  bool isReplaced() const override { return replaced; }

  static platform::SoftwareUpdate next() { return {"ondrel;1.2-3;amd64;source", "1.2", "• Faster"}; }

  platform::UpdateSource who = platform::UpdateSource::packageService;
  Found found = next();
  bool needsPassword = false; // to look
  Done downloaded;
  Done installed;
  bool replaced = false;
  std::vector<std::string> calls;

 private:
  async::Task<Done> work(std::string call, platform::UpdateProgress::Step step, Progress progress,
                         Done* done) {
    calls.push_back(std::move(call));
    for (const auto& told : {platform::UpdateProgress{}, platform::UpdateProgress{step, 50}}) {
      progress(told);
      if (!co_await async::sleep(std::chrono::milliseconds(500)))
        co_return std::unexpected(calledOff());
    }
    co_return *done;
  }
  static Fault calledOff() { return {Fault::Kind::cancelled, "called off"}; }
};

} // namespace ondrel::support
