#pragma once

#include "Process.h"
#include "app/PersistedSession.h"

#include <boost/json/object.hpp>
#include <boost/json/value.hpp>
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ondrel::e2e {

// The built program with a profile of its own, on a demonstration service of its own. Each test ends with a
// look at what the program said: no warning and no critical of any library.
class ProgramTest : public testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;

  std::unique_ptr<Process> start(std::vector<std::string> arguments = {}, Environment more = {});
  // Waits until the program shows the service's page.
  bool waitForPage(Process& program, std::size_t times = 1);
  // Ends it as the desktop does and gives its exit status.
  std::optional<int> quit(Process& program);

  // How often the service was asked for a path of the web application.
  int requests(const std::string& path) const;

  // Asks the service's control interface, and gives it an order; the answer is JSON.
  boost::json::value askService(const std::string& path) const;
  boost::json::value order(const std::string& path, const boost::json::object& what = {}) const;

  std::string read(const std::filesystem::path& file) const;
  void write(const std::filesystem::path& file, const std::string& text) const;
  std::optional<app::PersistedSession> session() const;
  std::filesystem::path sessionFile() const { return profile / "data/ondrel/session.json"; }
  std::filesystem::path defaultsFile() const { return profile / "config/ondrel/defaults.json"; }

  std::filesystem::path profile;
  std::string address; // of the web application
  std::vector<std::string> outputs;

 private:
  Environment environment_;
  int controlPort_ = 0;
  std::unique_ptr<Process> service_;
  int starts_ = 0;
};

// How often a text stands in another.
std::size_t count(const std::string& text, const std::string& part);

} // namespace ondrel::e2e
