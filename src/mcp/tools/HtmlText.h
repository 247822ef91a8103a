#pragma once

#include <string>
#include <string_view>

namespace ondrel::mcp::tools {

// An HTML message as plain text for a reader without a screen: blocks and rows of tables on lines of their
// own, cells parted by bars, links behind their words, quotes behind "> ". What a reader of the page would
// not see is left out: scripts, styles, hidden elements. Nothing is loaded. Takes and gives UTF-8; never
// fails. Of a document beyond all use (4 MiB, 512 levels) only the beginning counts.
std::string textOfHtml(std::string_view html);

} // namespace ondrel::mcp::tools
