# The warnings that our own code is built with; every one is an error.
add_library(morvik_warnings INTERFACE)
target_compile_options(morvik_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual
  -Wold-style-cast -Wformat=2 -Werror)
