#pragma once

#include <libsoup/soup.h>

#include <chrono>
#include <cstddef>
#include <functional>
#include <string>

namespace ondrel::demo::http {

// A body of a known length that is made while it goes out.
struct PacedBody {
  std::size_t size = 0;
  std::size_t piece = std::size_t{1} << 18; // bytes
  std::chrono::milliseconds pause{0};       // between two pieces
  std::function<std::string(std::size_t from, std::size_t length)> bytes;
};

// Answers with it. Ends with the connection.
void sendPaced(SoupServerMessage* message, const char* contentType, PacedBody body);

} // namespace ondrel::demo::http
