// Single requests: what is sent, what comes back, and every way in which that can fail.
#include "HttpClientCertificate.h"
#include "HttpClientFixture.h"

#include <gio/gio.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include <atomic>
#include <future>

namespace ondrel::platform {

namespace {

using testing::HasSubstr;
using testing::Not;

std::string gzipped(const std::string& text) {
  const auto compressor = glib::adopt(g_zlib_compressor_new(G_ZLIB_COMPRESSOR_FORMAT_GZIP, 9));
  const auto memory = glib::adopt(g_memory_output_stream_new_resizable());
  const auto stream = glib::adopt(g_converter_output_stream_new(memory.get(), G_CONVERTER(compressor.get())));
  g_output_stream_write_all(stream.get(), text.data(), text.size(), nullptr, nullptr, nullptr);
  g_output_stream_close(stream.get(), nullptr, nullptr);
  auto* result = G_MEMORY_OUTPUT_STREAM(memory.get());
  return {static_cast<const char*>(g_memory_output_stream_get_data(result)),
          g_memory_output_stream_get_data_size(result)};
}

constexpr auto gzipHeader = "Content-Encoding: gzip\r\n";
constexpr auto chunkedHead = "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n";

TEST_F(HttpClientTest, GivesWhatTheServerSends) {
  const std::string bytes("a\0b\r\n\xFF\xC3", 7);
  struct Case {
    std::string answer, expected;
  };
  for (const auto& [answer, expected] : std::initializer_list<Case>{
           {response("200 OK", bytes), "200 " + bytes},
           {"HTTP/1.1 204 No Content\r\n\r\n", "204 "},
           {response("304 Not Modified", ""), "304 "},
           {response("401 Unauthorized", "who?", "WWW-Authenticate: Basic realm=\"x\"\r\n"), "401 who?"},
           {response("500 Oh", "<html>"), "500 <html>"},
           {response("302 Found", "no Location"), "302 no Location"},
           {response("200 OK", gzipped("text"), gzipHeader), "200 text"},
           // libsoup's decoder is lenient: what is none passes as it is, and what is cut off ends there.
           {response("200 OK", "plain", gzipHeader), "200 plain"},
           {response("200 OK", gzipped("text").substr(0, 8), gzipHeader), "200 "},
           {response("200 OK", std::string(largest, 'x')), "200 " + std::string(largest, 'x')},
           {std::string(chunkedHead) + "3\r\nabc\r\n1\r\nd\r\n0\r\n\r\n", "200 abcd"},
           // libsoup takes as the end of the body what is no size of a chunk, and the end of the connection
           // where one should stand.
           {std::string(chunkedHead) + "3\r\nabc\r\n", "200 abc"},
           {std::string(chunkedHead) + "3\r\nabc\r\nzz\r\ndef\r\n\r\n", "200 abc"},
           {"HTTP/1.0 200 OK\r\n\r\nuntil the end", "200 until the end"},
       }) {
    SCOPED_TRACE(answer.substr(0, 100));
    HttpClientServer server([&](HttpClientPeer& peer) {
      peer.request();
      peer.send(answer);
    });
    EXPECT_EQ(told(get(server.url())), expected);
  }
}

TEST_F(HttpClientTest, TellsHowARequestFailed) {
  enum End { close, reset, silence };
  const auto half = response("200 OK", std::string(100000, 'x')).substr(0, 50000);
  const auto bomb = gzipped(std::string(largest + 1, '\0'));
  struct Case {
    const char* name;
    std::string answer;
    End end;
    int code;
  };
  for (const auto& [name, answer, end, code] : std::initializer_list<Case>{
           {"closed at once", "", close, WebError::networkConnectionLost},
           {"reset at once", "", reset, WebError::networkConnectionLost},
           {"silence", "", silence, WebError::timedOut},
           {"half a head", "HTTP/1.1 200 OK\r\nConte", close, WebError::badServerResponse},
           {"half a head and silence", "HTTP/1.1 200 OK\r\nConte", silence, WebError::timedOut},
           {"half a body", half, close, WebError::networkConnectionLost},
           {"half a body, reset", half, reset, WebError::networkConnectionLost},
           {"half a body and silence", half, silence, WebError::timedOut},
           {"half a body where the end was to follow",
            "HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Length: 9\r\n\r\nhalf", close,
            WebError::networkConnectionLost},
           {"half a chunk", std::string(chunkedHead) + "9\r\nhalf", close, WebError::networkConnectionLost},
           {"no HTTP", "hello\r\n\r\n", close, WebError::badServerResponse},
           {"endless head", "HTTP/1.1 200 OK\r\nX: " + std::string(200000, 'x'), silence,
            WebError::networkConnectionLost},
           {"too large", response("200 OK", std::string(largest + 1, 'x')), close,
            WebError::badServerResponse},
           {"announces too much", "HTTP/1.1 200 OK\r\nContent-Length: 9000000000\r\n\r\n", silence,
            WebError::badServerResponse},
           {"too large without a length", "HTTP/1.0 200 OK\r\n\r\n" + std::string(largest + 1, 'x'), silence,
            WebError::badServerResponse},
           {"too large once it is decoded", response("200 OK", bomb, gzipHeader), close,
            WebError::badServerResponse},
       }) {
    SCOPED_TRACE(name);
    EXPECT_LT(bomb.size(), 5000U);
    HttpClientServer server([&](HttpClientPeer& peer) {
      peer.request();
      peer.send(answer);
      if (end == reset)
        peer.reset();
      if (end == silence)
        EXPECT_TRUE(peer.seesEnd());
    });
    const auto result =
        send({.url = server.url("/secret"), .timeout = code == WebError::timedOut ? 200ms : 10s});
    ASSERT_FALSE(result) << told(result).substr(0, 100);
    EXPECT_EQ(result.error().code, code) << result.error().description;
    EXPECT_EQ(result.error().domain, WebError::Domain::network);
    EXPECT_THAT(result.error().description, Not(HasSubstr("secret")));
    EXPECT_LE(server.requests().size(), 1U);
  }
}

TEST_F(HttpClientTest, TellsThatThereIsNoServer) {
  std::string url;
  {
    const HttpClientServer gone([](HttpClientPeer&) {});
    url = gone.url();
  }
  EXPECT_EQ(told(get(url)), std::to_string(WebError::cannotConnectToHost));
  const HttpClientServer plain([](HttpClientPeer& peer) { peer.send("no TLS at all\r\n\r\n"); });
  auto https = plain.url();
  EXPECT_EQ(told(get(https.insert(4, "s"))), std::to_string(WebError::secureConnectionFailed));
}

TEST_F(HttpClientTest, RefusesCertificatesThatNobodyVouchesFor) {
  std::atomic<bool> gotRequest = false;
  HttpClientServer server([&](HttpClientPeer& peer) {
    const auto certificate = glib::adopt(g_tls_certificate_new_from_pem(selfSignedCertificate, -1, nullptr));
    const auto socket = glib::adopt(g_socket_new_from_fd(dup(peer.fd()), nullptr));
    const auto connection = glib::adopt(g_socket_connection_factory_create_connection(socket.get()));
    const auto tls =
        glib::adopt(g_tls_server_connection_new(G_IO_STREAM(connection.get()), certificate.get(), nullptr));
    char byte = 0;
    gotRequest = g_input_stream_read(g_io_stream_get_input_stream(tls.get()), &byte, 1, nullptr, nullptr) > 0;
  });
  auto https = server.url("/", "localhost");
  EXPECT_EQ(told(send({.url = https.insert(4, "s"), .headers = {{"Authorization", "Bearer t"}}})),
            std::to_string(WebError::serverCertificateUntrusted));
  EXPECT_FALSE(gotRequest);
}

TEST_F(HttpClientTest, TimeRunsOnlyWhileNothingComes) {
  HttpClientServer server([](HttpClientPeer& peer) {
    peer.request();
    peer.send("HTTP/1.0 200 OK\r\n\r\n");
    for (int i = 0; i < 6; ++i) {
      std::this_thread::sleep_for(150ms);
      peer.send("x");
    }
  });
  EXPECT_EQ(told(send({.url = server.url(), .timeout = 700ms})), "200 xxxxxx");
}

TEST_F(HttpClientTest, SendsTheRequestAndNothingOfItsOwn) {
  HttpClientServer server(HttpClientServer::answering([](const std::string&) {
    return response("200 OK", "x", "Set-Cookie: a=b\r\nCache-Control: max-age=1000\r\nX-y: z\r\n");
  }));
  const std::string body("{\0}", 3);
  const auto first = send({.method = "POST",
                           .url = server.url("/a%20b?c=%2F&d", "x.localhost"),
                           .headers = {{"Authorization", "Bearer t"},
                                       {"Cookie", "one=1; two=2"},
                                       {"Content-Type", "application/json"}},
                           .body = body});
  ASSERT_EQ(told(first), "200 x");
  EXPECT_EQ(headerValue(first->headers, "x-Y"), "z");
  ASSERT_EQ(told(send({.method = "POST", .url = server.url("/empty")})), "200 x");
  ASSERT_EQ(told(get(server.url("/again"))), "200 x");
  ASSERT_EQ(told(get(server.url("/again"))), "200 x");

  const auto requests = server.requests();
  ASSERT_EQ(requests.size(), 4U);
  EXPECT_TRUE(requests[0].starts_with("POST /a%20b?c=%2F&d HTTP/1.1\r\n"));
  EXPECT_TRUE(requests[0].ends_with("\r\n\r\n" + body));
  for (const auto* line : {"Authorization: Bearer t\r\n", "Cookie: one=1; two=2\r\n",
                           "Content-Type: application/json\r\n", "User-Agent: Ondrel/1.2\r\n"})
    EXPECT_THAT(requests[0], HasSubstr(line));
  EXPECT_THAT(requests[1], HasSubstr("Content-Length: 0\r\n"));
  EXPECT_THAT(requests[3], testing::AllOf(Not(HasSubstr("Cookie")), Not(HasSubstr("Authorization")),
                                          Not(HasSubstr("If-")), Not(HasSubstr("Content-"))));
}

TEST_F(HttpClientTest, RefusesWhatMayNotBeSent) {
  std::atomic<int> connections = 0;
  HttpClientServer server([&](HttpClientPeer&) { ++connections; });
  const HttpHeaders token{{"authorization", "Bearer t"}};
  const HttpHeaders cookie{{"COOKIE", "a=b"}};
  const auto bad = WebError::badURL;
  const auto plain = WebError::secureConnectionFailed;
  const auto there = server.origin();
  for (const auto& [request, code] : std::initializer_list<std::pair<HttpRequest, int>>{
           {{.url = ""}, bad},
           {{.url = "file:///etc/passwd"}, bad},
           {{.url = "http:///path"}, bad},
           {{.url = there + "/a b"}, bad},
           {{.url = there + "/a\r\nX: y"}, bad},
           {{.url = there + std::string("/a\0b", 4)}, bad},
           {{.url = "http://user:pass@" + there.substr(7)}, bad},
           {{.method = "GET /x", .url = there}, bad},
           {{.method = "", .url = there}, bad},
           {{.url = there, .headers = {{"X", "a\r\nY: b"}}}, bad},
           {{.url = there, .headers = {{"X", std::string("a\0b", 3)}}}, bad},
           {{.url = there, .headers = {{"X: Y", "a"}}}, bad},
           {{.url = "http://192.0.2.1/", .headers = token}, plain},
           {{.url = "http://192.0.2.1/", .headers = cookie}, plain},
           {{.url = "http://localhost.example/", .headers = token}, plain},
           {{.url = "http://localhost@192.0.2.1/", .headers = token}, bad},
       }) {
    const auto sent = send(request);
    EXPECT_EQ(told(sent), std::to_string(code)) << request.url;
    const auto opened = run(client->open(request));
    ASSERT_FALSE(opened);
    EXPECT_EQ(opened.error().code, code) << request.url;
  }
  runFor(20ms);
  EXPECT_EQ(connections, 0);
}

// The connection of the first request is kept, and closed by the server just when another one comes.
TEST_F(HttpClientTest, KeptConnectionsLoseNothingAndDoubleNothing) {
  for (const std::string method : {"GET", "POST"}) {
    SCOPED_TRACE(method);
    std::atomic<int> reused = 0;
    HttpClientServer server([&](HttpClientPeer& peer) {
      if (peer.request().empty())
        return;
      peer.send(response("200 OK", "x"));
      if (!peer.request().empty())
        ++reused;
    });
    ASSERT_EQ(told(get(server.url("/first"))), "200 x");
    EXPECT_EQ(told(send({.method = method, .url = server.url("/second"), .body = ""})), "200 x");
    EXPECT_EQ(reused, method == "GET" ? 1 : 0) << "only what may be repeated takes a kept connection";
    const auto seen = server.requests();
    EXPECT_EQ(std::ranges::count_if(seen, [](const auto& r) { return r.starts_with("POST"); }),
              method == "POST" ? 1 : 0);
  }
  // Closed before, while nothing was under way; and a connection of its own that dies.
  HttpClientServer server([&](HttpClientPeer& peer) {
    if (peer.request().starts_with("GET"))
      peer.send(response("200 OK", "x"));
  });
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(told(get(server.url())), "200 x");
    runFor(10ms);
  }
  EXPECT_EQ(told(send({.method = "POST", .url = server.url(), .body = "once"})),
            std::to_string(WebError::networkConnectionLost));
  EXPECT_EQ(server.requests().size(), 4U);
}

TEST_F(HttpClientTest, EndsWithItsTask) {
  const auto half = response("200 OK", std::string(100, 'x')).substr(0, 60);
  for (const auto& answer : {std::string(), half}) {
    for (const bool cancel : {false, true}) {
      SCOPED_TRACE(answer + (cancel ? " cancelled" : " dropped"));
      std::promise<bool> ended;
      std::atomic<bool> underWay = false;
      HttpClientServer server([&](HttpClientPeer& peer) {
        peer.request();
        peer.send(answer);
        underWay = true;
        ended.set_value(peer.seesEnd());
      });
      std::optional<HttpResult<HttpResponse>> result;
      {
        async::Scope scope;
        auto handle = scope.spawn(keep(client->send({.url = server.url()}), result));
        ASSERT_TRUE(runUntil([&] { return underWay.load(); }));
        runFor(20ms);
        if (cancel) {
          handle.cancel();
          ASSERT_TRUE(runUntil([&] { return result.has_value(); }));
          EXPECT_TRUE(!*result && result->error().isCancelled());
        }
      }
      auto sawEnd = ended.get_future();
      EXPECT_TRUE(runUntil([&] { return sawEnd.wait_for(0s) == std::future_status::ready; }, 1s));
      EXPECT_EQ(result.has_value(), cancel);
    }
  }
}

} // namespace

} // namespace ondrel::platform
