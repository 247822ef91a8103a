#pragma once

// Takes from this process what a decoder doesn't need, step by step. What the file has in it can do no more
// than is left then: reckon, read fonts, and answer.
namespace ondrel::decoder {

// Address space, files written, core dumps; ends with the program that started it. Before the file is looked
// at.
bool setLimits();

// From here on: no new files to write, no network, no other programs, no new code; of the machine's files
// only those of the system can be read (fonts and tables), none at all where the kernel has no Landlock. Call
// it before the process has threads and when all modules are loaded.
bool shutOff();

} // namespace ondrel::decoder
