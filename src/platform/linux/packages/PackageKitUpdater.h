#pragma once

#include "platform/SoftwareUpdater.h"
#include "platform/linux/desktop/MessageBus.h"
#include "platform/linux/packages/PackageId.h"
#include "platform/linux/packages/PackageTransaction.h"

#include <expected>
#include <functional>
#include <string>

namespace ondrel::platform::packages {

// Updates by PackageKit on the system bus, which stands for the machine's own package system: that checks the
// signatures, and polkit asks the user.
class PackageKitUpdater final : public SoftwareUpdater {
 public:
  struct Options {
    std::string package;              // that is updated, "ondrel"
    std::string executable;           // the running one; an absolute path
    bool isSandboxed = false;         // the machine's packages are not the program's
    std::function<bool()> isReplaced; // the executable is another file by now
  };
  explicit PackageKitUpdater(Options options, desktop::BusConnector bus = desktop::systemBus);

  async::Task<UpdateSource> source() override;
  async::Task<Found> find(bool mayAsk) override;
  async::Task<Done> download(SoftwareUpdate update, Progress progress) override;
  async::Task<Done> install(SoftwareUpdate update, Progress progress) override;
  bool isReplaced() const override { return options_.isReplaced(); }

 private:
  using Installed = std::expected<std::optional<PackageId>, UpdateFault>;

  async::Task<TransactionOutcome> run(TransactionCall call);
  async::Task<Installed> installed();
  async::Task<Found> newest(PackageId installed);
  async::Task<Done> tryOut(std::string id);
  async::Task<std::string> notes(std::string id);
  async::Task<Done> updatePackage(std::string id, std::uint64_t flags, Progress progress);

  const Options options_;
  const desktop::BusConnector bus_;
};

// Whether another executable is in the place of the one that this process runs.
bool isOwnExecutableReplaced();
// The same of the process whose "/proc/<id>/exe" it is.
bool isExecutableReplaced(const std::string& link);

} // namespace ondrel::platform::packages
