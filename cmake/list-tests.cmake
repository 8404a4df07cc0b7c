# Runs inside ctest: asks a built program (PROGRAM) for its tests and adds them, with PREFIX before
# their names and PROPERTIES. Each test is a process of its own; MORVIK_TESTS_BY=suite in the
# environment makes it one process a suite, which costs a start and an end for each suite alone.
cmake_policy(VERSION 3.25)

if(NOT EXISTS ${PROGRAM})
  get_filename_component(name ${PROGRAM} NAME)
  add_test(${name}_NOT_BUILT ${name}_NOT_BUILT)
  return()
endif()
execute_process(COMMAND ${PROGRAM} --gtest_list_tests OUTPUT_VARIABLE listed RESULT_VARIABLE failed)
if(failed)
  message(FATAL_ERROR "${PROGRAM} does not list its tests: ${failed}")
endif()

# What follows the filter are properties of this one.
function(add_filtered name filter)
  add_test("${PREFIX}${name}" ${PROGRAM} "--gtest_filter=${filter}")
  set_tests_properties("${PREFIX}${name}" PROPERTIES ${ARGN} ${PROPERTIES})
endfunction()

# A line is a suite ("LedTest.") or, further in, a test of it; behind "#" stands a parameter's value.
string(REGEX REPLACE " *#[^\n]*" "" listed "${listed}")
string(REGEX MATCHALL "[^\n]+" lines "${listed}")
set(by $ENV{MORVIK_TESTS_BY})
foreach(line IN LISTS lines)
  if(line MATCHES "^([^ ].*)\\.$")
    set(suite ${CMAKE_MATCH_1})
    if(by STREQUAL "suite")
      add_filtered(${suite} "${suite}.*" TIMEOUT 600)
    endif()
  elseif(line MATCHES "^  (.*)" AND NOT by STREQUAL "suite")
    set(test "${suite}.${CMAKE_MATCH_1}")
    add_filtered(${test} ${test} TIMEOUT 120 SKIP_REGULAR_EXPRESSION "[[]  SKIPPED ]")
  endif()
endforeach()
