// Files that the user drops on a page or pastes into it. The engine gives pages none; what is tried here
// begins where the toolkit has handed them over.
#include "platform/linux/pagefiles/FileList.h"
#include "support/WebKitTest.h"

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>

#include <fstream>
#include <sys/stat.h>

namespace ondrel::tests {
namespace {

using Lines = std::vector<std::string>;

constexpr const char* dropZone = R"(<!doctype html><meta charset=utf-8>
<style>body{margin:0} #zone{width:200px;height:100px}</style><div id=zone contenteditable>zone</div><p>beside it</p>
<script>
  const say = (text) => window.webkit.messageHandlers.ondrel.postMessage(text);
  const tell = async (event, data) => {
    event.preventDefault();
    const files = [...data.files];
    window.kept = files[0];
    const texts = await Promise.all(files.map((file) => file.slice(0, 9).text()));
    say(event.type + ' at ' + event.clientX + ',' + event.clientY + ' ' + data.types + ' ' +
        JSON.stringify(files.map((file, i) => [file.name, file.size, file.type, texts[i]])));
  };
  zone.addEventListener('dragenter', () => say('enter'));
  zone.addEventListener('dragleave', () => say('leave'));
  zone.addEventListener('dragover', (event) => event.preventDefault());
  zone.addEventListener('drop', (event) => tell(event, event.dataTransfer));
  zone.addEventListener('paste', (event) => tell(event, event.clipboardData));
</script>)";

class FilesTest : public WebKitTest {
 protected:
  platform::pagefiles::WebKitPageFiles& files() {
    return *static_cast<platform::webkit::WebKitView&>(view()).pageFiles();
  }
  glib::Ref<GFile> file(const std::string& name, const std::string& content = "text") {
    std::ofstream(folder_ / name) << content;
    return existing(name);
  }
  glib::Ref<GFile> existing(const std::string& name) {
    return glib::adopt(g_file_new_for_path((folder_ / name).c_str()));
  }
  // What the page has said, after so many lines.
  Lines said(std::size_t number) {
    EXPECT_TRUE(waitForMessages(number));
    runFor(50ms);
    Lines lines;
    for (const auto& message : delegate_.messages)
      lines.emplace_back(message.body.as_string());
    delegate_.messages.clear();
    return lines;
  }
  std::string refused() {
    std::string text;
    waitFor([&] {
      for (const auto& event : delegate_.events)
        if (event.starts_with("refused "))
          text = event.substr(8);
      return !text.empty();
    });
    return text;
  }
};

TEST_F(FilesTest, ADropArrivesWithItsFilesWhereItFell) {
  loadHtml(dropZone);
  files().drop(
      {file("a \"<>&'\\%41 \u00FC\n.txt", "first"), file("bad\xFF.png", "second"), file("empty.txt", "")},
      {50, 60});
  EXPECT_EQ(said(2),
            (Lines{"enter", R"(drop at 50,60 Files [["a \"<>&'\\%41 ü\n.txt",5,"text/plain","first"],)"
                            R"(["bad�.png",6,"image/png","second"],["empty.txt",0,"text/plain",""]])"}))
      << "names that the engine itself would lose";
  view().setPageZoom(2);
  files().drop({file("one.txt")}, {50, 60});
  EXPECT_EQ(said(2).at(1), R"(drop at 25,30 Files [["one.txt",4,"text/plain","text"]])");
}

TEST_F(FilesTest, APageThatReadsAFileAfterItHasChangedIsToldSo) {
  loadHtml(dropZone);
  files().drop({file("one.txt", "first")}, {50, 60});
  said(2);
  file("one.txt", "something else");
  // The engine compares whole seconds.
  std::filesystem::last_write_time(folder_ / "one.txt", std::filesystem::file_time_type::clock::now() + 1h);
  evaluate("kept.text().then(() => say('read'), () => say('failed')); 0");
  EXPECT_EQ(said(1), Lines{"failed"});
}

TEST_F(FilesTest, APageThatDoesNotWantFilesStaysAsItIs) {
  loadHtml(dropZone);
  files().drop({file("one.txt"), file("two.html", "<script>alert()</script>")}, {50, 120});
  runFor(500ms);
  EXPECT_EQ(delegate_.messages.size(), 0U);
  EXPECT_EQ(view().url(), server_.url("/page"));
  EXPECT_EQ(delegate_.actions.size(), 1U);
}

TEST_F(FilesTest, APasteGoesToTheFocus) {
  loadHtml(dropZone);
  evaluate("zone.focus(); 0");
  files().paste({file("one.txt")});
  EXPECT_EQ(said(1), Lines{R"(paste at undefined,undefined Files [["one.txt",4,"text/plain","text"]])"});
  files().paste(PagePicture{"image/png", std::string("\x89PNG\0\r\n\x1A\n", 9)});
  EXPECT_TRUE(
      said(1).at(0).starts_with(R"(paste at undefined,undefined Files [["image.png",9,"image/png",")"));
}

TEST_F(FilesTest, AListThatAPageHasChosenIsNone) {
  struct Case {
    std::vector<const char*> types;
    bool areFiles;
  };
  const char* const list = "text/uri-list";
  const char* const html = "text/html";
  const Case cases[] = {{{list}, true},
                        {{list, "text/plain"}, true},
                        {{"text/plain"}, false},
                        {{list, html}, false},
                        {{list, "text/x-moz-url"}, false},
                        {{list, "org.webkitgtk.WebKit.custom-pasteboard-data"}, false},
                        {{list, html, "x-special/gnome-copied-files"}, true},
                        {{list, html, "application/vnd.portal.filetransfer"}, true},
                        {{list, html, "application/x-kde4-urilist"}, true}};
  for (const auto& each : cases) {
    auto types = each.types;
    // As the toolkit tells what another program offers.
    auto* formats = gdk_content_formats_union_deserialize_gtypes(
        gdk_content_formats_new(types.data(), static_cast<guint>(types.size())));
    EXPECT_EQ(platform::pagefiles::offersFiles(formats), each.areFiles) << types.back();
    gdk_content_formats_unref(formats);
  }
}

TEST_F(FilesTest, WhatIsNoFileIsToldAndTheRestArrives) {
  loadHtml(dropZone);
  std::filesystem::create_directory(folder_ / "Photos");
  mkfifo((folder_ / "pipe").c_str(), 0600);
  files().drop({existing("Photos"), existing("gone"), existing("pipe"), file("one.txt")}, {50, 60});
  EXPECT_EQ(said(2).at(1), R"(drop at 50,60 Files [["one.txt",4,"text/plain","text"]])");
  EXPECT_EQ(refused(), "“Photos” is a folder. Only files can be added. 2 files can't be read.");
}

TEST_F(FilesTest, FramesOfTheSameOriginHaveThemAndOthersDont) {
  support::PageServer elsewhere;
  server_.serve("/inner", dropZone);
  elsewhere.serve("/inner", dropZone);
  const std::string frame = "' style='border:0;width:300px;height:150px;display:block'></iframe>";
  loadHtml("<body style='margin:0' ondragover='event.preventDefault()' ondrop=\"" +
           std::string("document.title='mine'") + "\"><iframe src='/inner" + frame + "<iframe src='" +
           elsewhere.url("/inner") + frame);
  files().drop({file("one.txt")}, {50, 60});
  EXPECT_EQ(said(2).at(1), R"(drop at 50,60 Files [["one.txt",4,"text/plain","text"]])");
  files().drop({file("one.txt")}, {50, 210});
  runFor(500ms);
  EXPECT_EQ(delegate_.messages.size(), 0U);
  EXPECT_NE(view().title(), "mine");
}

} // namespace
} // namespace ondrel::tests
