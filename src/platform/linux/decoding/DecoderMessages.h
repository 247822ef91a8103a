#pragma once

#include <cstdint>

// What the program and ondrel-decoder say to each other over a socket, in the byte order of the machine. The
// decoder is started as `ondrel-decoder image` or `ondrel-decoder pdf`, with the socket and the file as
// descriptors. It answers each request before it reads the next one, and ends when the socket does. For the
// program an answer is hostile until it is checked (DecoderAnswers.h): what the decoder reads may have taken
// it over.
namespace ondrel::platform::decoding {

inline constexpr int socketDescriptor = 3;
inline constexpr int documentDescriptor = 4;

enum class Action : std::uint32_t { describe = 1, render = 2, text = 3 };

struct Request {
  Action action = Action::describe;
  std::int32_t page = 0;
  std::int32_t width = 0; // pixels, to render
  std::int32_t height = 0;
};

enum class Status : std::uint32_t { done = 0, damaged = 1, tooLarge = 2 };

// `length` bytes follow, none unless it is done. To render: pixels as in Picture. To describe: a Description
// and its pages. The text: its characters.
struct AnswerHeader {
  Status status = Status::done;
  Action action = Action::describe; // of the request
  std::uint64_t length = 0;
};

struct Description {
  std::uint32_t pageCount = 0;
  std::uint32_t isAnimation = 0; // 0 or 1
};
struct PageDescription {
  float width = 0;
  float height = 0;
  std::uint32_t delay = 0; // milliseconds, of a frame
};

struct PlacedCharacter {
  std::uint32_t character = 0;
  float left = 0; // 0 to 1
  float top = 0;
  float right = 0;
  float bottom = 0;
};

inline constexpr std::uint32_t mostPages = 20'000;
inline constexpr std::uint32_t mostCharacters = 200'000; // of a page; the rest is left out

} // namespace ondrel::platform::decoding
