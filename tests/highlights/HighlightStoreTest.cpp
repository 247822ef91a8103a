#include "highlights/file/HighlightStore.h"

#include "async/VirtualEventLoop.h"
#include "highlights/file/HighlightAnchor.h"
#include "support/FakeDesktop.h"
#include "support/LogCapture.h"

#include <boost/json/object.hpp>
#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <gtest/gtest.h>

#include <random>

namespace ondrel::highlights {
namespace {

const std::string path = "/data/highlights.json";
const std::string oneRecord =
    R"({"id":"h1","threadId":"T1","exact":"words","prefix":"a ","suffix":" b","occurrenceIndex":2,"createdAt":769012345.625})";

PersistedHighlight highlight(std::string id, std::string exact = "words") {
  return {std::move(id), "T1", std::move(exact), "", "", 0, 1.5};
}

class HighlightStoreTest : public testing::Test {
 protected:
  HighlightStore& open() { return store.emplace(files, files); }
  std::string file() { return files.files[path]; }
  std::vector<std::string> ids(const std::string& messageId) {
    std::vector<std::string> result;
    for (const auto& each : store->highlights(messageId))
      result.push_back(each.id);
    return result;
  }

  support::LogCapture log;
  async::VirtualEventLoop loop;
  support::FakeFiles files;
  std::optional<HighlightStore> store;
};

TEST_F(HighlightStoreTest, KeepsItsFormat) {
  files.files[path] = R"({"m@x":[)" + oneRecord + "]}";
  open();
  const auto& read = store->highlights("m@x").at(0);
  EXPECT_EQ(read, (PersistedHighlight{"h1", "T1", "words", "a ", " b", 2, 769012345.625}));

  auto added = read;
  added.id = "h2";
  added.createdAt = 769012345.1;
  store->add(added, "m@x");
  EXPECT_TRUE(file().ends_with(R"("createdAt":769012345.1}]})")) << file();
  store->remove("h2", "m@x");
  EXPECT_EQ(file(), R"({"m@x":[)" + oneRecord + "]}");
}

TEST_F(HighlightStoreTest, KeepsTheQuoteThatAPageSends) {
  const auto decoded = [](std::string_view quote) {
    return HighlightAnchor::decode(R"({"id":"h","exact":"onetwo","prefix":"\ud83d","suffix":"",)"
                                   R"("occurrenceIndex":0,"quote":)" +
                                   std::string(quote) + "}");
  };
  const auto quote = R"({"prefix":"a","exact":"one two","suffix":"\ud83d"})";
  const auto made = PersistedHighlight::from(decoded(quote).value(), "T1", 1.5);
  EXPECT_EQ(made,
            (PersistedHighlight{"h", "T1", "onetwo", "", "", 0, 1.5, HighlightQuote{"a", "one two", ""}}));
  open().add(made, "m@x");
  EXPECT_TRUE(file().contains(R"("createdAt":1.5,"quote":{"prefix":"a","exact":"one two","suffix":""}}])"));
  EXPECT_EQ(made.encode().size(), 7U) << "a page needs no quote";
  EXPECT_EQ(open().highlights("m@x").front(), made);
  for (const auto* other :
       {"null", "[]", R"({"prefix":"","exact":"one two"})", R"({"prefix":"","exact":"","suffix":1})"})
    EXPECT_FALSE(decoded(other).value().quote) << other;
}

TEST_F(HighlightStoreTest, ADamagedFileEmptiesTheStoreAndIsKept) {
  const auto broken = [](std::string_view from, std::string_view to) {
    auto text = R"({"good@x":[)" + oneRecord + R"(],"m@x":[)" + oneRecord + "]}";
    return text.replace(text.rfind(from), from.size(), to);
  };
  std::vector<std::string> damaged = {"",
                                      "[]",
                                      R"({"m@x":[1]})",
                                      "{\"m\xFF@x\":[]}",
                                      broken("769012345.625", "1e999"),
                                      broken(":2,", ":2.5,"),
                                      broken("words", "\\ud800")};
  for (const auto* key : {"id", "threadId", "exact", "prefix", "suffix", "occurrenceIndex", "createdAt"})
    damaged.push_back(broken(key, "other"));
  for (const auto& content : damaged) {
    files.files = {{path, content}};
    EXPECT_TRUE(open().byMessageId().empty()) << content;
  }
  store->add(highlight("new"), "m@x");
  EXPECT_EQ(files.files[path + ".damaged-1"], damaged.back());
  EXPECT_EQ(ids("m@x"), std::vector<std::string>{"new"});
}

TEST_F(HighlightStoreTest, RemovesById) {
  int changes = 0;
  open();
  const auto subscription = store->changed.subscribe([&] { ++changes; });
  store->remove("h", "m@x");
  EXPECT_EQ(files.writes, 0);
  for (const auto* id : {"a", "b", "a"})
    store->add(highlight(id), "m@x");
  store->add(highlight("a"), "n@x");
  EXPECT_EQ(changes, 4);

  store->remove("a", "unknown@x");
  EXPECT_EQ(files.writes, 4) << "nothing to save";
  store->remove("unknown", "m@x");
  EXPECT_EQ(files.writes, 5);
  EXPECT_EQ(changes, 4);
  store->remove("a", "m@x");
  EXPECT_EQ(ids("m@x"), std::vector<std::string>{"b"});
  EXPECT_EQ(ids("n@x"), std::vector<std::string>{"a"});
  store->remove("b", "m@x");
  EXPECT_FALSE(file().contains("m@x"));
  store->removeAll();
  EXPECT_EQ(file(), "{}");
  EXPECT_EQ(changes, 7);
}

TEST_F(HighlightStoreTest, WhatAnotherCopyHasSavedIsMergedById) {
  using Change = std::function<void(HighlightStore&)>;
  const auto add = [](const char* id) { return [id](auto& copy) { copy.add(highlight(id), "m@x"); }; };
  const auto remove = [](const char* id) { return [id](auto& copy) { copy.remove(id, "m@x"); }; };
  const auto removeAll = [](auto& copy) { copy.removeAll(); };
  const auto readd = [](auto& copy) {
    const HighlightStore::Batch batch(copy);
    copy.remove("a", "m@x");
    copy.add(highlight("a"), "m@x");
  };
  struct Case {
    std::vector<Change> theirs;
    Change ours;
    std::vector<std::string> result; // both had a, b, c
  };
  const Case cases[] = {
      {{add("t")}, add("o"), {"a", "b", "c", "o", "t"}},
      {{remove("a"), add("t")}, add("o"), {"b", "c", "o", "t"}},
      {{add("t")}, remove("a"), {"b", "c", "t"}},
      {{remove("a")}, remove("b"), {"c"}},
      {{remove("a"), remove("b")}, remove("c"), {}},
      {{add("t")}, removeAll, {"t"}},
      {{removeAll}, add("o"), {"o"}},
      {{removeAll}, readd, {"a"}},
      {{add("t"), add("o")}, add("o"), {"a", "b", "c", "t", "o"}},
      {{remove("b"), add("b")}, remove("x"), {"a", "c", "b"}},
  };
  for (const auto& each : cases) {
    files.files.clear();
    open();
    for (const auto* id : {"a", "b", "c"})
      store->add(highlight(id), "m@x");
    HighlightStore other(files, files);
    for (const auto& change : each.theirs)
      change(other);
    other.add(highlight("theirs"), "t@x");
    int changes = 0;
    const auto subscription = store->changed.subscribe([&] { ++changes; });
    each.ours(*store);
    EXPECT_EQ(ids("m@x"), each.result) << &each - cases;
    EXPECT_EQ(ids("t@x"), std::vector<std::string>{"theirs"});
    EXPECT_GE(changes, 1);
    EXPECT_EQ(files.files.size(), 1U) << "nothing is set aside";
    const auto merged = store->byMessageId();
    EXPECT_EQ(open().byMessageId(), merged) << file();
  }
}

TEST_F(HighlightStoreTest, MergesWhatComesWhileItReadsOrCantSave) {
  open();
  store->add(highlight("a"), "m@x");
  HighlightStore(files, files).add(highlight("b"), "m@x");
  // A third one saves while we read the second one's.
  files.afterRead = [this] {
    files.afterRead = nullptr;
    HighlightStore(files, files).add(highlight("c"), "m@x");
  };
  store->add(highlight("d"), "m@x");
  EXPECT_EQ(ids("m@x"), (std::vector<std::string>{"a", "d", "b", "c"}));

  HighlightStore(files, files).remove("b", "m@x");
  files.full = true;
  store->remove("c", "m@x");
  store->add(highlight("e"), "m@x");
  EXPECT_TRUE(store->isUnsaved("e", "m@x") && store->isUnsaved("c", "m@x"));
  EXPECT_FALSE(store->isUnsaved("a", "m@x"));
  files.full = false;
  HighlightStore(files, files).add(highlight("f"), "m@x");
  loop.advance(platform::KeptFile::firstRetry);
  EXPECT_EQ(ids("m@x"), (std::vector<std::string>{"a", "d", "e", "f"}));
  EXPECT_FALSE(store->isUnsaved("e", "m@x"));
  EXPECT_EQ(open().highlights("m@x").size(), 4U);
}

TEST_F(HighlightStoreTest, WhatALaterVersionHasWrittenSurvives) {
  const auto later = [](const std::string& note) {
    return R"({"version":{"of":[1.5]},"m@x":[)" + oneRecord.substr(0, oneRecord.size() - 1) +
           R"(,"quote":{"prefix":"","exact":"words","suffix":"","lang":"de"},"note":")" + note +
           R"(","tags":["a",{}]}],"empty":null})";
  };
  files.files[path] = later("one");
  open();
  EXPECT_EQ(store->highlights("m@x").front().quote->exact, "words");
  files.files[path] = later("two");
  store->add(highlight("new"), "m@x");
  store->remove("new", "m@x");
  EXPECT_EQ(boost::json::parse(file()), boost::json::parse(later("two")));
  store->removeAll();
  EXPECT_EQ(boost::json::parse(file()), boost::json::parse(R"({"version":{"of":[1.5]},"empty":null})"));
}

TEST_F(HighlightStoreTest, ABatchIsOneSave) {
  open();
  {
    const HighlightStore::Batch batch(*store);
    for (const auto* id : {"a", "b", "c"})
      store->add(highlight(id), "m@x");
    const HighlightStore::Batch inner(*store);
    store->remove("b", "m@x");
    EXPECT_EQ(files.writes, 0);
  }
  EXPECT_EQ(files.writes, 1);
  EXPECT_EQ(open().highlights("m@x").size(), 2U);
}

TEST_F(HighlightStoreTest, EveryTextComesBackAsItWas) {
  const std::string texts[] = {std::string("\0nul\0", 5), "\"quotes\" \\ / </script> \x01\x1f\x7f",
                               "\xE2\x80\xA8\xE2\x80\xA9 \xEF\xBB\xBF \xEF\xBF\xBD \xEF\xBF\xBF",
                               "\xF0\x9F\x91\xA9\xE2\x80\x8D\xF0\x9F\x91\xA9\xE2\x80\x8D\xF0\x9F\x91\xA7 "
                               "e\xCC\x81 \xD7\xA9\xE2\x80\xAE\xF4\x8F\xBF\xBF",
                               std::string(1 << 20, 'a')};
  open();
  HighlightStore::ByMessageId expected;
  for (const auto& text : texts) {
    auto one = highlight(text, text);
    one.prefix = one.suffix = one.threadId = text;
    one.occurrenceIndex = std::numeric_limits<std::int64_t>::max();
    one.createdAt = 0.1 + 0.2;
    expected[text].push_back(one);
    store->add(one, text);
  }
  open();
  EXPECT_EQ(store->byMessageId(), expected);
}

TEST_F(HighlightStoreTest, TheFileFollowsAnyRowOfChanges) {
  std::mt19937 random(6);
  open();
  for (int step = 0; step < 600; ++step) {
    const auto messageId = std::to_string(random() % 5) + "@x";
    const auto id = std::to_string(random() % 12);
    if (random() % 100 == 0)
      store->removeAll();
    else if (random() % 2)
      store->add(highlight(id), messageId);
    else
      store->remove(id, messageId);
    if (random() % 10 == 0) {
      const auto before = store->byMessageId();
      open();
      ASSERT_EQ(store->byMessageId(), before) << "step " << step;
    }
  }
  EXPECT_EQ(files.files.size(), files.exists(path) ? 1U : 0U);
}

} // namespace
} // namespace ondrel::highlights
