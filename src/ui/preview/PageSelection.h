#pragma once

#include "platform/documents/DocumentDecoder.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace ondrel::ui {

// A place on a page, 0 to 1 from its left and its top.
struct PagePoint {
  double x = 0;
  double y = 0;
};

// Part of a page's text, in reading order.
struct TextRange {
  std::size_t begin = 0;
  std::size_t end = 0;
};

// The text between two places, the characters under both included; empty where there is none near.
TextRange textBetween(const platform::PageText& text, PagePoint from, PagePoint to);

// The same to the end of the page, and from its beginning.
TextRange textFrom(const platform::PageText& text, PagePoint from);
TextRange textUpTo(const platform::PageText& text, PagePoint to);

// What covers it, a box for each line.
std::vector<platform::PageText::Box> lineBoxes(const platform::PageText& text, TextRange range);

// For the clipboard, in UTF-8.
std::string selectedText(const platform::PageText& text, TextRange range);

} // namespace ondrel::ui
