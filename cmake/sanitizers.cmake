# Address and undefined-behaviour sanitizers for the whole build, the first finding ends the process.
option(MORVIK_SANITIZE "Build with address and undefined-behaviour sanitizers" OFF)
if(MORVIK_SANITIZE)
  # The engine's library carries no run-time type information, which vptr checks would need.
  add_compile_options(-fsanitize=address,undefined -fno-sanitize=vptr -fno-sanitize-recover=all
                      -fno-omit-frame-pointer)
  # With sanitizers the compiler takes what std::regex copies for uninitialised.
  add_compile_options(-Wno-maybe-uninitialized)
  add_link_options(-fsanitize=address,undefined)
endif()

# For programs and libraries of tests that only talk to the programs under test: theirs are not the
# faults that sanitizers are to find, and they build in half the time.
function(without_sanitizers)
  if(MORVIK_SANITIZE)
    foreach(target IN LISTS ARGN)
      target_compile_options(${target} PRIVATE -fno-sanitize=all)
      target_compile_definitions(${target} PRIVATE MORVIK_PROGRAMS_ARE_SANITIZED)
    endforeach()
  endif()
endfunction()

# For programs of tests that have what they test inside: what is tested is looked at for undefined
# behaviour, and the checks of the tests' own lines would take half of the time to build them.
function(without_undefined_sanitizer)
  if(MORVIK_SANITIZE)
    foreach(target IN LISTS ARGN)
      target_compile_options(${target} PRIVATE -fno-sanitize=undefined)
    endforeach()
  endif()
endfunction()
