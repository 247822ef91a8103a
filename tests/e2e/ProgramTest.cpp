#include "ProgramTest.h"

#include "support/Loopback.h"

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>

#include <csignal>
#include <fstream>
#include <iostream>
#include <sstream>

namespace ondrel::e2e {

namespace fs = std::filesystem;

namespace {

constexpr std::chrono::seconds startLimit{30};
constexpr std::chrono::seconds endLimit{20};

// A page script of the main configuration says this in each page that has been parsed.
constexpr auto pageIsThere = "files-auto-share: script installed on ";

// A library's warning or critical, in the program's log or straight from a process of the engine; or a
// sanitizer's.
bool isComplaint(const std::string& line) {
  // The engine's own processes look for an accessibility bus by themselves.
  if (line.contains("a11y bus"))
    return false;
  // "<date> <time> <origin> <level>: ...", where the program's own lines have "ondrel[category]" as their
  // origin.
  std::istringstream words(line);
  std::string date;
  std::string time;
  std::string origin;
  std::string level;
  words >> date >> time >> origin >> level;
  const bool isOfALibrary = date.starts_with("20") && !origin.starts_with("ondrel[") &&
                            (level == "error:" || level == "warning:" || level == "notice:");
  return isOfALibrary || line.contains("CRITICAL") || line.contains("WARNING") ||
         line.contains("AddressSanitizer") || line.contains("LeakSanitizer") ||
         line.contains("runtime error");
}

// For whoever has only the output of the tests to find out what went wrong.
void printEnd(const std::string& log) {
  constexpr std::size_t lines = 60;
  auto at = log.size();
  for (std::size_t i = 0; i <= lines && at != log.npos && at != 0; ++i)
    at = log.rfind('\n', at - 1);
  std::istringstream rest(at == log.npos || at == 0 ? log : log.substr(at + 1));
  for (std::string line; std::getline(rest, line);)
    std::cout << "said: " << line.substr(0, 300) << '\n';
}

int portOf(const std::string& url) {
  return std::stoi(url.substr(url.rfind(':') + 1));
}

// The body of the answer of a loopback server; empty when there is none.
std::string ask(int port, const std::string& method, const std::string& path, const std::string& body = {}) {
  const auto answer =
      support::answerAt(port, method + " " + path + " HTTP/1.0\r\nHost: localhost\r\nContent-Length: " +
                                  std::to_string(body.size()) + "\r\n\r\n" + body);
  const auto head = answer.find("\r\n\r\n");
  return head == answer.npos ? "" : answer.substr(head + 4);
}

} // namespace

void ProgramTest::SetUp() {
  auto pattern = (fs::temp_directory_path() / "ondrel-e2e-XXXXXX").string();
  profile = mkdtemp(pattern.data());
  environment_ = {{"XDG_CONFIG_HOME", profile / "config"},
                  {"XDG_DATA_HOME", profile / "data"},
                  {"XDG_CACHE_HOME", profile / "cache"},
                  {"ONDREL_SITE", profile / "site.json"},
                  {"ONDREL_LOG", "debug"}};
  service_ =
      std::make_unique<Process>(DEMO_SERVICE, std::vector<std::string>{"--site-file", profile / "site.json"},
                                Environment(), profile / "service.log");
  ASSERT_TRUE(eventually([this] { return service_->output().ends_with("\n"); })) << service_->output();
  const auto started = boost::json::parse(service_->output());
  address = started.at("web").as_string();
  controlPort_ = portOf(std::string(started.at("control").as_string()));
}

void ProgramTest::TearDown() {
  for (const auto& output : outputs) {
    std::istringstream lines(read(output));
    for (std::string line; std::getline(lines, line);) {
      EXPECT_FALSE(isComplaint(line)) << line;
    }
  }
  service_.reset();
  if (!HasFailure()) {
    fs::remove_all(profile);
    return;
  }
  for (const auto& output : outputs) {
    std::cout << "said: (" << fs::path(output).filename().string() << ")\n";
    printEnd(read(output));
  }
}

std::unique_ptr<Process> ProgramTest::start(std::vector<std::string> arguments, Environment more) {
  more.insert(environment_.begin(), environment_.end());
  outputs.push_back(profile / ("output-" + std::to_string(++starts_)));
  return std::make_unique<Process>(ONDREL_PROGRAM, std::move(arguments), more, outputs.back());
}

bool ProgramTest::waitForPage(Process& program, std::size_t times) {
  return eventually([&] { return count(program.output(), pageIsThere) >= times; }, startLimit);
}

std::optional<int> ProgramTest::quit(Process& program) {
  program.signal(SIGTERM);
  return program.wait(endLimit);
}

int ProgramTest::requests(const std::string& path) const {
  const auto counted = askService("/control/requests");
  const auto* host = counted.as_object().if_contains("localhost");
  const auto* times = host ? host->as_object().if_contains(path) : nullptr;
  return times ? static_cast<int>(times->as_int64()) : 0;
}

boost::json::value ProgramTest::askService(const std::string& path) const {
  return boost::json::parse(ask(controlPort_, "GET", path));
}

boost::json::value ProgramTest::order(const std::string& path, const boost::json::object& what) const {
  const auto answer = ask(controlPort_, "POST", path, boost::json::serialize(what));
  return answer.empty() ? boost::json::value() : boost::json::parse(answer);
}

std::string ProgramTest::read(const fs::path& file) const {
  std::ifstream stream(file, std::ios::binary);
  std::ostringstream text;
  text << stream.rdbuf();
  return text.str();
}

void ProgramTest::write(const fs::path& file, const std::string& text) const {
  fs::create_directories(file.parent_path());
  std::ofstream(file, std::ios::binary) << text;
}

std::optional<app::PersistedSession> ProgramTest::session() const {
  auto decoded = app::PersistedSession::decode(read(sessionFile()));
  return decoded ? std::optional(std::move(*decoded)) : std::nullopt;
}

std::size_t count(const std::string& text, const std::string& part) {
  std::size_t found = 0;
  for (auto at = text.find(part); at != text.npos; at = text.find(part, at + part.size()))
    ++found;
  return found;
}

} // namespace ondrel::e2e
