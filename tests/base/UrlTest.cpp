#include "base/Url.h"
#include "base/LoopbackHost.h"

#include <gtest/gtest.h>

namespace ondrel::base {
namespace {

TEST(Url, TakesAddressesApart) {
  const auto url = Url::parse("https://user:pw@app.example.com:8443/mail/In%20box/T1.M2?u=a%26b&x#frag?ment");
  ASSERT_TRUE(url);
  EXPECT_EQ(url->scheme(), "https");
  EXPECT_EQ(url->host(), "app.example.com");
  EXPECT_EQ(url->port(), "8443");
  EXPECT_EQ(url->hostWithPort(), "app.example.com:8443");
  EXPECT_EQ(url->path(), "/mail/In%20box/T1.M2");
  EXPECT_EQ(url->query(), "u=a%26b&x");
  EXPECT_EQ(url->lastPathComponent(), "T1.M2");
  EXPECT_EQ(url->queryItem("u"), "a&b");
  EXPECT_EQ(url->queryItem("x"), std::nullopt);
}

TEST(Url, KnowsFormsWithoutAuthority) {
  const auto mailto = Url::parse("mailto:a@b?subject=x%20y");
  ASSERT_TRUE(mailto);
  EXPECT_EQ(mailto->scheme(), "mailto");
  EXPECT_EQ(mailto->host(), std::nullopt);
  EXPECT_EQ(mailto->path(), "a@b");
  EXPECT_EQ(Url::parse("/relative/path")->scheme(), std::nullopt);
  EXPECT_EQ(Url::parse("https:///path")->host(), std::nullopt);
  EXPECT_EQ(Url::parse("http://[::1]:80/")->host(), "[::1]");
  EXPECT_EQ(Url::parse("EMAIL://x")->scheme(), "EMAIL");
  EXPECT_EQ(Url::parse("https://host/a/b/")->lastPathComponent(), "b");
  EXPECT_EQ(Url::parse("https://host")->lastPathComponent(), "");
}

TEST(Url, RefusesWhatIsNone) {
  for (const std::string text :
       {"", "a b", "http://x/\n", "http://x%/", "http://x%2/y", "http://x\\y/", "http://{x}/", ":x", "1a:b",
        "http://x/\xFF", "http://x:8a/", "<http://x>", "http://x/\"", "http://x/\x7F", "http://[",
        "http://[::1", "http://::1]/", "http://a[b]/", "http://[[::1]]/"})
    EXPECT_FALSE(Url::parse(text)) << text;
  EXPECT_FALSE(Url::parse(std::string_view("http://x/\0y", 11)));
  const auto large = "https://x/" + std::string(1 << 20, 'a');
  EXPECT_EQ(Url::parse(large)->absoluteString(), large);
}

TEST(Url, LetsPassWhatEnginesLeaveRaw) {
  for (const std::string text :
       {"https://x/?sale=50%", "https://x/?a={b}^c|d`e", "https://x/a\\b#%zz", "https://x/%2"})
    EXPECT_TRUE(Url::parse(text)) << text;
  EXPECT_EQ(Url::parse("https://x/?u=50%")->queryItem("u"), "50%");
}

TEST(Url, ComparesOrigins) {
  const auto base = *Url::parse("https://app.example.com/mail/");
  const std::pair<const char*, bool> cases[] = {
      {"https://app.example.com", true},
      {"https://APP.example.com:443/x", true},
      {"HTTPS://app.example.com", true},
      {"http://app.example.com/", false},
      {"https://app.example.com:8443", false},
      {"https://app.example.com.evil/", false},
      {"https://app.example.com@evil/", false},
      {"null", false},
      {"about:srcdoc", false},
  };
  for (const auto& [text, same] : cases)
    EXPECT_EQ(base.sameOrigin(*Url::parse(text)), same) << text;
}

TEST(Url, EncodesTextForAPath) {
  const std::pair<std::string, const char*> cases[] = {
      {"", ""},
      {"In box", "In%20box"},
      {"a/b", "a/b"},
      {"AZaz09-._~!$&'()*+,;=:@", "AZaz09-._~!$&'()*+,;=:@"},
      {"50%?#[]\"<>\\^`{|}\n\x7F", "50%25%3F%23%5B%5D%22%3C%3E%5C%5E%60%7B%7C%7D%0A%7F"},
      {"\u00e9\U0001F4E7", "%C3%A9%F0%9F%93%A7"},
      {std::string("\0", 1), "%00"},
  };
  for (const auto& [text, encoded] : cases) {
    EXPECT_EQ(percentEncodedPath(text), encoded);
    EXPECT_EQ(percentDecoded(encoded), text);
  }
}

TEST(LoopbackHost, IsThisMachineBeyondDoubt) {
  for (const auto* host :
       {"localhost", "LOCALHOST", "a.b.localhost", "127.0.0.1", "127.255.9.10", "[::1]", "::1"})
    EXPECT_TRUE(isLoopbackHost(host)) << host;
  for (const auto* host : {"",
                           "notlocalhost",
                           "localhost.example",
                           "localhost.",
                           "127.evil.example",
                           "127.0.0.1.example",
                           "127.1",
                           "127.0.0.1.",
                           "127.0.0.256",
                           "127.0.0.01",
                           "127.0.0.0x1",
                           "127.0.0.+1",
                           "127.0.0.1 ",
                           "127..0.1",
                           "127.0.0.1.1",
                           "128.0.0.1",
                           "0.0.0.0",
                           "[::]",
                           "[::2]",
                           "[::1",
                           "0:0:0:0:0:0:0:1"})
    EXPECT_FALSE(isLoopbackHost(host)) << host;
}

} // namespace
} // namespace ondrel::base
