#pragma once

#include "demo/MailStore.h"

#include <boost/json/fwd.hpp>

#include <string>
#include <vector>

namespace ondrel::demo {

// What Email/get was asked for.
struct EmailJsonOptions {
  std::vector<std::string> properties;
  std::vector<std::string> bodyProperties;
  bool fetchText = false;
  bool fetchHtml = false;
  bool fetchAll = false;
  std::size_t mostBodyBytes = 0; // of each body value; 0: all of it
};

std::vector<std::string> defaultEmailProperties();
std::vector<std::string> defaultBodyProperties();
bool isEmailProperty(const std::string& property);

// The Email object of RFC 8621, 4.1, with the chosen properties and always the id.
boost::json::object emailJson(const MailStore& store, const Email& email, const EmailJsonOptions& options);

} // namespace ondrel::demo
