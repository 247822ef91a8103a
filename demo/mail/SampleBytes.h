#pragma once

#include <string>

namespace ondrel::demo::mail {

// Small files that programs can read, the same for the same arguments.

// A picture of stripes.
std::string pngOf(unsigned width, unsigned height, unsigned seed);
// The same file, which says that it is of another size.
std::string withPngSize(std::string png, unsigned width, unsigned height);
std::string pdfOf(const std::string& title, unsigned pages);
// One file, not compressed.
std::string zipOf(const std::string& name, const std::string& bytes);
// A second of a tone.
std::string wavOf(unsigned hertz);

} // namespace ondrel::demo::mail
