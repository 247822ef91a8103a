#include "AttachmentWorld.h"
#include "attachments/SearchKey.h"
#include "base/Text.h"

#include <unicode/locid.h>
#include <unicode/unistr.h>

#include <random>

namespace ondrel::attachments {
namespace {

class FilesViewModelTest : public AttachmentTest {
 protected:
  // So many emails from one number on, with one attachment each.
  void answerPage(int first, int count, int total) {
    std::string ids, list;
    for (int i = first; i < first + count; ++i) {
      ids += fmt::format(R"({}"M{}")", ids.empty() ? "" : ",", i);
      list += fmt::format(R"({}{{"id":"M{}","attachments":[{{"blobId":"G","name":"{}"}}]}})",
                          list.empty() ? "" : ",", i, i);
    }
    client.answer("Email/query", reply({fmt::format(R"({{"ids":[{}],"total":{}}})", ids, total),
                                        fmt::format(R"({{"list":[{}]}})", list)}));
  }
  std::string rows() const {
    return model.rowCount() == 0 ? "none"
                                 : fmt::format("{} to {} of {}", model.row(0).name,
                                               model.row(model.rowCount() - 1).name, model.rowCount());
  }
  void load() {
    scope.spawn(model.loadNextPage());
    loop.advance(10s);
  }
};

TEST_F(FilesViewModelTest, LoadsPagesUntilTheEnd) {
  client.delay = 1s;
  answerPage(0, 30, 61);
  answerPage(29, 30, 62); // a mail has come meanwhile
  load();
  EXPECT_EQ(rows(), "0 to 29 of 30");
  EXPECT_FALSE(*model.hasLoadedAll);
  load();
  EXPECT_EQ(rows(), "0 to 58 of 59") << "none twice";
  client.answerOnly("Email/query", "{}");
  load();
  EXPECT_EQ(**model.errorMessage, "Unexpected JMAP response format.");
  EXPECT_TRUE(!*model.isLoading && model.hasPageFailed());
  client.answerOnly("Email/query", reply({R"({"ids":[],"total":0})", R"({"list":[]})"}));
  load();
  EXPECT_TRUE(*model.hasLoadedAll && !*model.errorMessage && !model.hasPageFailed());
  const auto requests = client.sent.size();
  load();
  EXPECT_EQ(client.sent.size(), requests);
}

TEST_F(FilesViewModelTest, BeginsAnewOnRefreshWhateverIsUnderWay) {
  client.delay = 1s;
  for (int i = 0; i < 3; ++i)
    answerPage(i == 2 ? 30 : 0, 30, 90);
  answerPage(0, 30, 90);
  scope.spawn(model.loadIfEmpty());
  loop.advance(1500ms);
  scope.spawn(model.refresh()); // the first page that is on its way is as good as another
  loop.advance(10s);
  EXPECT_EQ(rows(), "0 to 29 of 30");
  scope.spawn(model.refresh());
  loop.advance(10s);
  scope.spawn(model.loadNextPage());
  loop.advance(500ms);
  scope.spawn(model.refresh());
  loop.runUntilIdle();
  EXPECT_EQ(rows(), "none");
  loop.advance(10s);
  EXPECT_EQ(rows(), "0 to 29 of 30") << "the page from further down belongs to the old list";
}

TEST_F(FilesViewModelTest, DoesWhatItsRowsAreAskedFor) {
  const auto picture = info("G1", "a.b.PNG"), other = info("G1", "twin.png"),
             text = info("G2", "t", "text/plain"), pdf = info("G4", "p", "application/pdf");
  std::vector<std::string> shown;
  const auto seen = model.previewURL.observe([&] { shown.push_back(model.previewURL->value_or("-")); });
  model.preview(picture);
  EXPECT_TRUE(model.isBusy(picture.id));
  serve({"PNG"});
  EXPECT_EQ(files.files["/tmp/preview-G1.PNG"], "PNG");
  EXPECT_FALSE(model.isBusy(picture.id));
  model.preview(other); // the same file
  EXPECT_EQ(shown, (std::vector<std::string>{"/tmp/preview-G1.PNG", "-", "/tmp/preview-G1.PNG"}));
  files.files.clear(); // by whoever cleans up there
  model.preview(info("../G5", "../.../none"));
  serve({"5"});
  model.preview(picture);
  serve({"PNG"});
  EXPECT_EQ(files.files.size(), 2U);
  EXPECT_TRUE(files.files.contains("/tmp/preview-..-G5"));

  for (const auto& row : {picture, text, pdf})
    model.print(row);
  model.showEmail(pdf);
  serve({"PDF"});
  loop.advance(1min);
  EXPECT_EQ(printer.jobs, (std::vector<std::string>{"a.b.PNG: /tmp/preview-G1.PNG", "p: /tmp/preview-G4"}));
  EXPECT_EQ(**model.errorMessage, "Download failed (unexpected response).");
  EXPECT_EQ(opened, (std::vector<std::string>{"https://app.example.com/mail/Inbox/T1.M1?u=123 M1"}));

  http.requests.clear();
  for (const auto& row : {picture, other, text, pdf})
    model.loadThumbnail(row);
  model.dropThumbnail("G1"); // by one of two
  model.dropThumbnail("G4");
  http.answer = [](const auto&) { return platform::HttpResponse{404, {}, {}}; };
  loop.advance(1min);
  EXPECT_EQ(http.requests.size(), 1U) << "none for the one that was taken back";
  EXPECT_EQ(
      log.count("error network: FilesViewModel: thumbnail failed for a.b.PNG: Download failed (HTTP 404)."),
      1);
  http.answer = [](const auto&) { return support::FakeHttpClient::ok("good"); };
  for (int i = 0; i < 1000; ++i) {
    model.loadThumbnail(info(fmt::format("T{}", i), "t"));
    loop.advance(1s);
    ASSERT_TRUE(model.thumbnail(fmt::format("T{}", i)) && model.thumbnail("T0"));
  }
  EXPECT_FALSE(model.thumbnail("T1")) << "those seen last stay";

  model.download(picture);
  serve({"x"});
  loop.advance(3s);
  EXPECT_EQ(model.downloads->size(), 1U);
  EXPECT_EQ(watched, 1);
  loop.advance(2s);
  EXPECT_TRUE(model.downloads->empty());
}

TEST_F(FilesViewModelTest, FetchesOfManyPreviewsTheOneThatRunsAndTheLast) {
  const auto row = [](int i) { return info(fmt::format("G{}", i), "a.png"); };
  model.preview(row(0));
  loop.runUntilIdle(); // it is its turn
  for (int i = 1; i < 10; ++i)
    model.preview(row(i));
  EXPECT_TRUE(model.isBusy(row(0).id) && !model.isBusy(row(8).id) && model.isBusy(row(9).id));
  serve({"0"});
  serve({"9"});
  model.preview(row(10));
  model.dropPreview();
  loop.advance(1min);
  EXPECT_EQ(http.opened.size(), 2U);
  EXPECT_EQ(**model.previewURL, "/tmp/preview-G9.png");
  EXPECT_TRUE(!*model.errorMessage && !model.isBusy(row(0).id) && !model.isBusy(row(10).id));
}

TEST_F(FilesViewModelTest, ShowsAndTellsWhatTheFilterLetsThrough) {
  AttachmentRows list(types);
  std::vector<const jmap::AttachmentInfo*> told;
  const auto changes = list.changed.subscribe([&](const RowsChange& change) {
    told.erase(told.begin() + long(change.position), told.begin() + long(change.position + change.removed));
    for (std::size_t i = 0; i < change.added; ++i)
      told.insert(told.begin() + long(change.position + i), &list.row(change.position + i));
    ASSERT_EQ(told.size(), list.count()) << "what follows the rows may look at them at any time";
  });
  std::mt19937 random(1);
  const auto pick = [&](std::initializer_list<const char*> of) {
    return *(of.begin() + random() % of.size());
  };
  std::vector<jmap::AttachmentInfo> all;
  for (int step = 0; step < 400; ++step) {
    std::vector<jmap::AttachmentInfo> page;
    for (int i = 0; i < 5; ++i)
      page.push_back(info(std::to_string(step * 5 + i), pick({"Straße", "ÉTÉ", "x", "ab", "ΟΔΟΣ", "été x"}),
                          pick({"image/png", "text/plain", "nonsense"})));
    list.append(page);
    all.insert(all.end(), page.begin(), page.end());
    const std::string needle = pick({"", " ", "s", "ST", "strasse\n", "ete", "xb", "x", "οδος", "f"});
    std::set<AttachmentCategory> wanted;
    if (random() % 2)
      wanted = {random() % 2 ? AttachmentCategory::text : AttachmentCategory::other};
    list.setFilter(needle, wanted);
    const auto key = searchKey(base::trimmed(needle));
    std::erase_if(page = all, [&](const auto& row) {
      const bool matches = searchKey(row.name + "|F|S").contains(key);
      return !matches || (!wanted.empty() && !wanted.contains(list.categoryOf(row)));
    });
    ASSERT_EQ(list.count(), page.size()) << "'" << needle << "'";
    for (std::size_t i = 0; i < page.size(); ++i)
      ASSERT_TRUE(list.row(i) == page[i] && *told[i] == page[i]) << "'" << needle << "' " << i;
  }
}

TEST(SearchKeyTest, LosesNoMatchOfLowerCase) {
  EXPECT_EQ(searchKey("CAFÉ ﬁn Straße \xFF"), "cafe fin strasse \xEF\xBF\xBD");
  for (UChar32 c = 1; c <= 0x10FFFF; ++c) {
    if (c >= 0xD800 && c <= 0xDFFF)
      continue;
    std::string text, lower;
    const icu::UnicodeString character(c);
    character.toUTF8String(text);
    icu::UnicodeString(character).toLower(icu::Locale::getRoot()).toUTF8String(lower);
    ASSERT_EQ(searchKey(text), searchKey(lower)) << std::hex << c;
  }
}

} // namespace
} // namespace ondrel::attachments
