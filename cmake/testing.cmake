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

# On a machine that only builds and runs (script/bootstrap --for=demo) there are no tests: what they need
# is missing, and asking for them says that there is no such target.
include(CTest)
find_package(GTest QUIET)
find_program(NGINX nginx HINTS ${CMAKE_SOURCE_DIR}/.deps/nginx/usr/sbin PATHS /usr/sbin)
find_file(TYPESCRIPT typescript.js HINTS ${CMAKE_SOURCE_DIR}/.deps/typescript/usr/share/nodejs/typescript/lib
          PATHS /usr/share/nodejs/typescript/lib)
find_program(CHROMIUM chromium)
find_program(CHROMEDRIVER chromedriver)
if(BUILD_TESTING AND GTest_FOUND AND NGINX AND TYPESCRIPT AND CHROMIUM AND CHROMEDRIVER)
  add_subdirectory(tests)
elseif(BUILD_TESTING)
  message(STATUS "Tests are left out: script/bootstrap installs what they need")
endif()
