#include "platform/linux/packages/PackageKitUpdater.h"
#include "BusTest.h"
#include "PackageServiceStandIn.h"
#include "support/LogCapture.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>

namespace ondrel::platform::packages {
namespace {

using testing::ElementsAre;
using Kind = UpdateFault::Kind;
using Step = UpdateProgress::Step;

class PackageKitTest : public BusTest {
 protected:
  SoftwareUpdater::Found find() { return result(updater.find(false)).value(); }

  support::LogCapture log;
  PackageKitUpdater updater{{.package = "ondrel", .executable = "/usr/bin/ondrel", .isReplaced = {}},
                            connector()};
};

TEST_F(PackageKitTest, FindsTheNewerVersionOfItsOwnPackageWithItsNotes) {
  EXPECT_EQ(result(updater.source()), UpdateSource::none);
  support::PackageServiceStandIn service(bus);
  EXPECT_EQ(result(updater.source()), UpdateSource::packageService);
  service.calls.clear();
  EXPECT_EQ(find().value(), (SoftwareUpdate{"ondrel;1.2-3;amd64;s", "1.2", "1.2-3\n• Faster & <b>"}));
  EXPECT_THAT(service.calls, ElementsAre("SearchFiles", "RefreshCache", "GetUpdates", "UpdatePackages 6",
                                         "GetUpdateDetail"));
  service.updateText = "";
  EXPECT_EQ(find().value()->notes, "") << "an excuse is no note";
  service.calls.clear();
  for (const auto* list : {"[(9, 'ondrel;1.2-3;amd64;s', '')]", "[(5, 'ondrel;0.9-1;amd64;s', '')]",
                           "[(5, 'ondrel;1.0-1;amd64;s', '')]", "[(5, 'ondrel;1.2-3;arm64;s', '')]"}) {
    service.answers["GetUpdates"].packages = list;
    EXPECT_EQ(find().value(), std::nullopt) << list;
  }
  EXPECT_THAT(service.calls, testing::Not(testing::Contains("UpdatePackages 6")));
  service.answers["SearchFiles"].packages = "[(1, 'other;1;amd64;installed', '')]";
  EXPECT_EQ(result(updater.source()), UpdateSource::elsewhere);
}

TEST_F(PackageKitTest, SaysWhatWentWrongAndNeverUpToDateThen) {
  support::PackageServiceStandIn service(bus);
  struct Case {
    const char* method;
    support::PackageServiceStandIn::Answer answer;
    Kind kind;
  };
  const Case cases[] = {
      {"RefreshCache", {nullptr, 2, "Cannot refresh cache whilst offline"}, Kind::noNetwork},
      {"RefreshCache", {nullptr, 64, "E: x is not (yet) available (Could not connect)"}, Kind::unreachable},
      {"RefreshCache", {nullptr, 64, "E: The repository 'x Release' is no longer signed."}, Kind::untrusted},
      {"RefreshCache", {nullptr, 48, "Failed to obtain authentication."}, Kind::refused},
      {"UpdatePackages 6", {"[(23, 'ondrel;1.2-3;amd64;s', '')]"}, Kind::untrusted},
      {"UpdatePackages 6", {"[(13, 'mutt;2;amd64;s', '')]"}, Kind::conflicts},
  };
  const auto usual = service.answers;
  for (const auto& each : cases) {
    service.answers[each.method] = each.answer;
    if (each.answer.error) {
      EXPECT_TRUE(find().has_value()) << "what was known before has been checked before";
      service.answers["GetUpdates"].packages = nullptr;
    }
    const auto found = find();
    EXPECT_TRUE(!found && found.error().kind == each.kind) << each.method << " " << each.answer.text;
    service.answers = usual;
  }
}

TEST_F(PackageKitTest, TakesOnlyAMissingServiceForNone) {
  support::PackageServiceStandIn service(bus);
  using Answer = support::PackageServiceStandIn::Answer;
  const std::pair<Answer, UpdateSource> cases[] = {
      {{.refusal = "org.freedesktop.DBus.Error.NoReply"}, UpdateSource::packageService},
      {{.refusal = "org.freedesktop.DBus.Error.TimedOut"}, UpdateSource::packageService},
      {{.error = 26, .text = "Could not get lock"}, UpdateSource::packageService},
      {{.refusal = "org.freedesktop.DBus.Error.Spawn.ChildExited"}, UpdateSource::none},
      {{.refusal = "org.freedesktop.systemd1.UnitMasked"}, UpdateSource::none},
  };
  for (const auto& [answer, source] : cases) {
    service.answers["SearchFiles"] = answer;
    EXPECT_EQ(result(updater.source()), source) << (answer.refusal ? answer.refusal : answer.text);
    EXPECT_FALSE(find().has_value());
  }
}

TEST_F(PackageKitTest, InstallsWithProgressAndCanBeCalledOff) {
  auto service = std::make_unique<support::PackageServiceStandIn>(bus);
  std::vector<UpdateProgress> told;
  const auto install = [&] {
    return updater.install({"ondrel;1.2-3;amd64;s", "1.2", ""}, [&](auto& each) { told.push_back(each); });
  };
  auto& answer = service->answers["UpdatePackages 2"];
  answer = {nullptr, 48, "Failed to obtain authentication."};
  EXPECT_EQ(result(install())->error().kind, Kind::refused);
  EXPECT_THAT(told, ElementsAre(UpdateProgress{Step::askingUser, {}}, UpdateProgress{Step::downloading, {}},
                                UpdateProgress{Step::downloading, 40}));
  answer = {.ends = false};
  for (const bool isCancelled : {true, false}) {
    std::optional<SoftwareUpdater::Done> done;
    service->calls.clear();
    start(install(), done);
    EXPECT_TRUE(until([&] { return service->calls.size() == 2; }));
    service->claimItHasFinished(bus.connect());
    hear();
    EXPECT_FALSE(done) << "anybody can say so";
    if (isCancelled) {
      scope.cancelAll();
      EXPECT_TRUE(until([&] { return service->calls.back() == "Cancel"; }));
    } else {
      service.reset();
    }
    EXPECT_TRUE(until([&] { return done.has_value(); }));
    EXPECT_EQ(done->error().kind, isCancelled ? Kind::cancelled : Kind::noService);
  }
}

TEST(ReplacedExecutableTest, IsOneInWhosePlaceIsAnother) {
  const support::TemporaryFolder folder;
  folder.write("program", "");
  std::filesystem::permissions(folder.file("program"), std::filesystem::perms::owner_all);
  folder.write("text", "");
  const std::pair<const char*, bool> cases[] = {
      {"program", false}, {"program (deleted)", true}, {"text (deleted)", false}, {"gone (deleted)", false}};
  for (const auto& [target, isReplaced] : cases) {
    std::filesystem::create_symlink(folder.file(target), folder.file("exe"));
    EXPECT_EQ(isExecutableReplaced(folder.file("exe")), isReplaced) << target;
    std::filesystem::remove(folder.file("exe"));
  }
}

TEST(PackageVersionTest, IsOrderedAsThePackageSystemDoes) {
  const char* rising[] = {"1.0~rc1-1", "1.0-1",  "1.0-1+b1", "1.0a-1",
                          "1.2-1",     "1.10-1", "1.10.1-1", "1:0.1-1"};
  for (std::size_t i = 0; i < std::size(rising); ++i)
    for (std::size_t j = 0; j < std::size(rising); ++j)
      EXPECT_EQ(isNewerVersion(rising[i], rising[j]), i > j) << rising[i] << " " << rising[j];
  EXPECT_FALSE(isNewerVersion("1.00", "1.0"));
}

} // namespace
} // namespace ondrel::platform::packages
