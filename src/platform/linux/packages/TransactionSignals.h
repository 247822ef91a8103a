#pragma once

#include "async/Future.h"
#include "platform/linux/packages/PackageTransaction.h"

#include <cstdint>
#include <string>

namespace ondrel::platform::packages {

// Collects what a transaction of PackageKit tells until it has finished, and passes its progress on.
class TransactionSignals {
 public:
  TransactionSignals(async::Resolver<TransactionOutcome> resolver, SoftwareUpdater::Progress progress)
      : resolver_(std::move(resolver)), progress_(std::move(progress)) {}

  // A signal of the transaction's own interface. Unknown ones, and those of another type, are ignored.
  void take(const std::string& member, GVariant* arguments);
  // A signal that tells of changed properties.
  void takeProperties(GVariant* arguments);
  void fail(UpdateFault fault);
  // The transaction has come to its end.
  bool hasFinished() const { return hasFinished_; }

 private:
  void takePackage(GVariant* package);
  void finish(std::uint32_t exit);

  async::Resolver<TransactionOutcome> resolver_;
  const SoftwareUpdater::Progress progress_;
  TransactionResult result_;
  std::optional<UpdateFault> fault_;
  UpdateProgress told_;
  bool hasFinished_ = false;
};

// What an error of PackageKit (PkErrorEnum) with its text, which is in English, comes to.
UpdateFault faultOf(std::uint32_t code, const std::string& text);

} // namespace ondrel::platform::packages
