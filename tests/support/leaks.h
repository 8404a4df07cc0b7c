// What may be left when a process ends, to the leak sanitizer: what the script engine has, in a
// process that ends while it is there. It is told by the functions that the engine allocates in.
// None of them ever calls the host, so what the host loses while a script calls it counts. Of our
// own, what is kept for life says so in its name.
#pragma once

namespace morvik::test {

// As the sanitizer reads it.
inline constexpr char kMayBeLeft[] =
    "leak:v8::internal::AllocWithRetry\n"
    "leak:v8::internal::AlignedAlloc\n"
    "leak:v8::internal::MemoryChunk::MemoryChunk\n"
    "leak:v8::internal::Page::AllocateFreeListCategories\n"
    "leak:v8::internal::CodeObjectRegistry\n"
    "leak:KeptForLife\n";

}  // namespace morvik::test
