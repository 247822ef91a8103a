#include "platform/KeptFile.h"

#include "async/VirtualEventLoop.h"
#include "support/FakeDesktop.h"
#include "support/LogCapture.h"

#include <gtest/gtest.h>

#include <optional>

namespace ondrel::platform {
namespace {

using namespace std::chrono_literals;
using Texts = std::vector<std::string>;

class KeptFileTest : public testing::Test {
 protected:
  KeptFile& open() {
    return file.emplace(
        files, KeptFile::inApplicationSupport(files, "f"),
        KeptFile::Words{"can't decode: ", "can't save: ", "kept: ", "no folder", "no place", "can't read: "},
        KeptFile::Content{.take = [this](const std::string& text) -> std::expected<void, std::string> {
                            if (!text.starts_with("good"))
                              return std::unexpected("bad");
                            taken.push_back(text);
                            return {};
                          },
                          .text = [this] { return ours; },
                          .didSave = [this](bool isSaved) { saves += isSaved; }});
  }

  support::LogCapture log;
  async::VirtualEventLoop loop;
  support::FakeFiles files;
  std::string ours = "good ours";
  Texts taken;
  int saves = 0;
  std::optional<KeptFile> file;
};

TEST_F(KeptFileTest, LosesNothingThatStandsInItsPlace) {
  const std::string decodeLine = "error system: can't decode: bad";
  const std::string keptLine = "notice system: kept: /data/f.damaged-1";
  struct Case {
    std::optional<std::string> atStart;
    std::optional<std::string> meanwhile; // has come when it is saved
    Texts taken;
    Texts lines;
    std::optional<std::string> kept = {};
    bool isUnreadable = false;
  };
  const Case cases[] = {
      {{}, {}, {}, {}},
      {"good 1", {}, {"good 1"}, {}},
      {"bad", {}, {}, {decodeLine, keptLine}, "bad"},
      {"good", {}, {}, {"error system: can't read: permission denied", keptLine}, "good", true},
      {{}, "good 2", {"good 2"}, {}},
      {{}, "bad", {}, {keptLine}, "bad"},
      {"good 1", "good 2", {"good 1", "good 2"}, {}},
      {"good 1", "bad", {"good 1"}, {keptLine}, "bad"},
      {"bad", "good 2", {"good 2"}, {decodeLine}},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(&each - cases);
    const auto put = [this](const std::optional<std::string>& text) {
      if (text)
        files.files["/data/f"] = *text;
    };
    file.reset();
    files.files.clear();
    taken.clear();
    support::LogCapture::lines().clear();
    put(each.atStart);
    files.unreadable = each.isUnreadable ? "/data/f" : "";
    open().load();
    EXPECT_EQ(files.files.size(), each.atStart ? 1U : 0U) << "untouched by loading";
    EXPECT_EQ(file->keptFiles(),
              each.isUnreadable || each.atStart == "bad" ? Texts{"/data/f"} : Texts()); // to be told of
    put(each.meanwhile);
    file->save();
    file->save();
    EXPECT_EQ(taken, each.taken);
    EXPECT_EQ(log.lines(), each.lines);
    std::map<std::string, std::string> expected = {{"/data/f", ours}};
    if (each.kept)
      expected["/data/f.damaged-1"] = *each.kept;
    EXPECT_EQ(files.files, expected);
    EXPECT_EQ(file->keptFiles(), each.kept ? Texts{"/data/f.damaged-1"} : Texts());
  }
}

TEST_F(KeptFileTest, SavesSoonAndAgainAndAtTheEnd) {
  open().load();
  file->saveSoon();
  file->saveSoon();
  EXPECT_EQ(files.writes, 0);
  loop.runUntilIdle();
  EXPECT_EQ(saves, 1);
  file->saveIfUnsaved();
  EXPECT_EQ(files.writes, 1);
  file->saveSoon();
  file->save();
  EXPECT_EQ(loop.pendingTimers(), 0U);

  files.files["/data/f"] = "bad";
  files.full = true;
  file->save();
  file->save();
  loop.advance(34s); // tries of its own after 5 and 35 seconds
  EXPECT_EQ(files.writes, 5);
  EXPECT_EQ(log.lines(), Texts{"error system: can't save: no space left on device"}) << "once";
  EXPECT_EQ(files.files, (std::map<std::string, std::string>{{"/data/f", "bad"}}));
  files.support.reset();
  file->save();
  EXPECT_EQ(log.lines().back(), "error system: no folder");
  EXPECT_EQ(**file->problem(), "no place");
  files.support = "/data";
  files.full = false;
  loop.advance(1s);
  EXPECT_EQ(files.files["/data/f"], ours);
  EXPECT_EQ(files.files["/data/f.damaged-1"], "bad");
  EXPECT_FALSE(*file->problem());
  for (const bool isFull : {true, false}) {
    files.full = isFull;
    file->save();
    EXPECT_EQ(loop.pendingTimers(), isFull ? 1U : 0U);
  }

  ours = "good last";
  file->saveSoon();
  file.reset();
  EXPECT_EQ(files.files["/data/f"], ours) << "saved at the end";
}

} // namespace
} // namespace ondrel::platform
