#include "platform/linux/packages/PackageKitUpdater.h"

#include "base/Log.h"
#include "base/Translation.h"
#include "platform/linux/packages/UpdateNotes.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <utility>

namespace ondrel::platform::packages {

namespace {

using Kind = UpdateFault::Kind;

constexpr base::Logger logger("system");
constexpr std::chrono::minutes lookLimit{10};

constexpr std::uint64_t noFilter = 0;
constexpr std::uint64_t installedOnly = 1U << 2; // PkFilterEnum

// PkTransactionFlagEnum.
constexpr std::uint64_t onlyTrusted = 1U << 1;
constexpr std::uint64_t simulate = 1U << 2;
constexpr std::uint64_t onlyDownload = 1U << 3;

glib::Owned<GVariant> owned(GVariant* floating) {
  return glib::Owned<GVariant>(g_variant_ref_sink(floating));
}

glib::Owned<GVariant> withText(std::uint64_t number, const std::string& text) {
  const char* texts[] = {text.c_str(), nullptr};
  return owned(g_variant_new("(t^as)", number, texts));
}

} // namespace

PackageKitUpdater::PackageKitUpdater(Options options, desktop::BusConnector bus)
    : options_(std::move(options)), bus_(std::move(bus)) {
}

async::Task<TransactionOutcome> PackageKitUpdater::run(TransactionCall call) {
  auto connection = co_await bus_();
  if (!connection)
    co_return std::unexpected(UpdateFault{Kind::noService, "there is no system bus"});
  auto outcome = co_await runTransaction(std::move(connection), std::move(call));
  co_return outcome;
}

// The package that the running program belongs to, if it is the one that is updated.
async::Task<PackageKitUpdater::Installed> PackageKitUpdater::installed() {
  TransactionCall call{
      .method = "SearchFiles", .arguments = withText(installedOnly, options_.executable), .limit = lookLimit};
  const auto outcome = co_await run(std::move(call));
  if (!outcome)
    co_return std::unexpected(outcome.error());
  for (const auto& line : outcome->packages)
    if (auto id = PackageId::parse(line.id); id && id->name == options_.package)
      co_return id;
  co_return std::nullopt;
}

async::Task<UpdateSource> PackageKitUpdater::source() {
  if (options_.isSandboxed)
    co_return UpdateSource::sandbox;
  const auto package = co_await installed();
  if (!package) {
    logger.info("The package service can't be asked: {}", package.error().details);
    // Any other fault passes, and is told when updates are looked for.
    co_return package.error().kind == Kind::noService ? UpdateSource::none : UpdateSource::packageService;
  }
  co_return *package ? UpdateSource::packageService : UpdateSource::elsewhere;
}

async::Task<SoftwareUpdater::Found> PackageKitUpdater::find(bool mayAsk) {
  const auto package = co_await installed();
  if (!package)
    co_return std::unexpected(package.error());
  if (!*package)
    co_return std::unexpected(UpdateFault{Kind::other, base::tr("the program is of no package")});
  // Not by force: that would throw away what has been downloaded.
  TransactionCall refresh{.method = "RefreshCache",
                          .arguments = owned(g_variant_new("(b)", FALSE)),
                          .mayAsk = mayAsk,
                          .inBackground = !mayAsk,
                          .limit = lookLimit};
  const auto refreshed = co_await run(std::move(refresh));
  auto found = co_await newest(**package);
  // It lists what was known before, so that finding nothing there says nothing. What it does list has been
  // checked then, and another source than ours may be the one that failed.
  const bool isKnown = !found || found->has_value();
  if (!refreshed && !isKnown)
    co_return std::unexpected(refreshed.error());
  co_return found;
}

async::Task<SoftwareUpdater::Found> PackageKitUpdater::newest(PackageId installed) {
  TransactionCall call{
      .method = "GetUpdates", .arguments = owned(g_variant_new("(t)", noFilter)), .limit = lookLimit};
  const auto outcome = co_await run(std::move(call));
  if (!outcome)
    co_return std::unexpected(outcome.error());
  std::optional<PackageId> newest;
  for (const auto& line : outcome->packages) {
    auto id = PackageId::parse(line.id);
    if (id && id->name == installed.name && id->architecture == installed.architecture &&
        line.info != PackageInfo::blocked &&
        isNewerVersion(id->version, newest ? newest->version : installed.version))
      newest = std::move(id);
  }
  if (!newest)
    co_return std::nullopt;
  const auto tried = co_await tryOut(newest->text);
  if (!tried)
    co_return std::unexpected(tried.error());
  auto whatIsNew = co_await notes(newest->text);
  co_return SoftwareUpdate{newest->text, shownVersion(newest->version, installed.version),
                           std::move(whatIsNew)};
}

// Whether the update would leave all other packages where they are, and all that it brings is trusted.
async::Task<SoftwareUpdater::Done> PackageKitUpdater::tryOut(std::string id) {
  TransactionCall call{
      .method = "UpdatePackages", .arguments = withText(onlyTrusted | simulate, id), .limit = lookLimit};
  const auto outcome = co_await run(std::move(call));
  if (!outcome)
    co_return std::unexpected(outcome.error());
  for (const auto& line : outcome->packages) {
    if (line.info == PackageInfo::untrusted)
      co_return std::unexpected(UpdateFault{Kind::untrusted, line.id});
    if (line.info == PackageInfo::removing || line.info == PackageInfo::obsoleting ||
        line.info == PackageInfo::downgrading)
      co_return std::unexpected(UpdateFault{Kind::conflicts, line.id});
  }
  co_return {};
}

async::Task<std::string> PackageKitUpdater::notes(std::string id) {
  const char* ids[] = {id.c_str(), nullptr};
  TransactionCall call{
      .method = "GetUpdateDetail", .arguments = owned(g_variant_new("(^as)", ids)), .limit = lookLimit};
  const auto outcome = co_await run(std::move(call));
  if (outcome)
    for (const auto& details : outcome->details)
      if (details.id == id)
        co_return updateNotes(details.updateText);
  co_return "";
}

async::Task<SoftwareUpdater::Done> PackageKitUpdater::updatePackage(std::string id, std::uint64_t flags,
                                                                    Progress progress) {
  // What it takes may have changed since it was found.
  const auto tried = co_await tryOut(id);
  if (!tried)
    co_return tried;
  TransactionCall call{.method = "UpdatePackages",
                       .arguments = withText(onlyTrusted | flags, id),
                       .mayAsk = true,
                       .progress = std::move(progress)};
  const auto outcome = co_await run(std::move(call));
  if (!outcome)
    co_return std::unexpected(outcome.error());
  co_return {};
}

async::Task<SoftwareUpdater::Done> PackageKitUpdater::download(SoftwareUpdate update, Progress progress) {
  return updatePackage(std::move(update.identifier), onlyDownload, std::move(progress));
}

async::Task<SoftwareUpdater::Done> PackageKitUpdater::install(SoftwareUpdate update, Progress progress) {
  return updatePackage(std::move(update.identifier), 0, std::move(progress));
}

bool isOwnExecutableReplaced() {
  return isExecutableReplaced("/proc/self/exe");
}

bool isExecutableReplaced(const std::string& link) {
  constexpr std::string_view mark = " (deleted)";
  std::error_code error;
  auto path = std::filesystem::read_symlink(link, error).native();
  if (error || !path.ends_with(mark))
    return false;
  path.resize(path.size() - mark.size());
  // A package that was removed leaves nothing to restart as.
  return access(path.c_str(), X_OK) == 0;
}

} // namespace ondrel::platform::packages
