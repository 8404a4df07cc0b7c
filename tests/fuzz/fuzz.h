// What every fuzzer is made of: one function that takes an input, and claims about what came of it.
#pragma once

#include <string_view>

namespace morvik::test {

/// Each fuzzer defines it: does with the input what the program would. It may be called any number
/// of times in a process, and one call must leave nothing to the next.
void fuzz(std::string_view input);

/// Ends the process with the text, which the fuzzer takes for a finding, unless the claim holds.
void require(bool claim, const char* text);

}  // namespace morvik::test
