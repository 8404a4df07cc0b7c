// A part of a text in memory of its own.
#pragma once

#include <cstddef>
#include <memory>

namespace morvik {

/// The bytes of `text` from `start` up to but without `end`, and an end mark. `start` is at most
/// `end`, and both lie within the text. Memory that cannot be had ends the process with status 1,
/// before anything is read, and with a text on standard error.
std::unique_ptr<char[]> substring(const char* text, std::size_t start, std::size_t end);

}  // namespace morvik
