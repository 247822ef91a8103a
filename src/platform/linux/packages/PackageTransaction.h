#pragma once

#include "platform/SoftwareUpdater.h"
#include "platform/linux/desktop/MessageBus.h"

#include <cstdint>
#include <expected>
#include <optional>
#include <string>
#include <vector>

namespace ondrel::platform::packages {

// What PackageKit says of a package in a transaction (PkInfoEnum); all others don't matter here.
enum class PackageInfo : std::uint32_t {
  blocked = 9,
  removing = 13,
  obsoleting = 15,
  downgrading = 20,
  untrusted = 23,
};

struct PackageLine {
  PackageInfo info{};
  std::string id;
};

struct PackageDetails {
  std::string id;
  std::string updateText; // what the source says of the update; empty where it says nothing
};

struct TransactionResult {
  std::vector<PackageLine> packages;
  std::vector<PackageDetails> details;
};

struct TransactionCall {
  std::string method;                // of org.freedesktop.PackageKit.Transaction
  glib::Owned<GVariant> arguments{}; // a tuple
  bool mayAsk = false;               // the user may be asked for a password
  bool inBackground = false;
  std::optional<async::Duration> limit{}; // none for what takes its time
  SoftwareUpdater::Progress progress{};
};

using TransactionOutcome = std::expected<TransactionResult, UpdateFault>;

// Runs one transaction of PackageKit to its end. Cancelling or dropping the task cancels the transaction, as
// far as it lets itself be cancelled.
async::Task<TransactionOutcome> runTransaction(glib::Ref<GDBusConnection> connection, TransactionCall call);

} // namespace ondrel::platform::packages
