# Lets ctest ask a program of tests what it has, when it runs: a new test needs no entry anywhere. No
# two tests may have one name. What follows PROPERTIES is given to each.
function(discover_tests target)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "PREFIX" "PROPERTIES")
  set(list ${CMAKE_CURRENT_BINARY_DIR}/${target}-list.cmake)
  file(GENERATE OUTPUT ${list} CONTENT "set(PROGRAM $<TARGET_FILE:${target}>)\nset(PREFIX ${arg_PREFIX})
set(PROPERTIES ${arg_PROPERTIES})\ninclude(${CMAKE_SOURCE_DIR}/cmake/list-tests.cmake)\n")
  set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES ${list})
endfunction()

# Builds the programs that are tested with a program that tests them, which finds them by these names.
function(tests_programs target)
  add_dependencies(${target} morvik-dev morvikvm short-timers)
  target_compile_definitions(${target} PRIVATE
    MORVIKVM="$<TARGET_FILE:morvikvm>"
    MORVIK_DEV="$<TARGET_FILE:morvik-dev>"
    PROGRAMS="$<TARGET_FILE_DIR:morvikvm>"
    SHORT_TIMERS="$<TARGET_FILE:short-timers>"
    SOURCE_DIR="${CMAKE_SOURCE_DIR}")
endfunction()

include(CTest)
if(BUILD_TESTING)
  find_package(GTest REQUIRED)
  add_subdirectory(tests)
endif()
