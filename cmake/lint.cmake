# What script/lint looks at, build/lint/batches: all sources many in one, more than a compiler is given,
# because clang-tidy's checks walk through all headers of each file that it gets. Nothing of it is built.
set(MORVIK_BATCHES ON)

# The analyzer follows no path through an included file, so the text itself is there. What a name shadows is
# in another file here; the compiler tells of what is in its own.
function(batch_text out source)
  file(READ ${source} text)
  set(${out} "#pragma GCC diagnostic ignored \"-Wshadow\"\n#line 1 \"${source}\"\n${text}" PARENT_SCOPE)
endfunction()

# The sources of what is built as one. The tables of features and the helps of verbs are made of the same
# names, so they stand apart, but for those that others use.
function(write_sources out name namespace)
  foreach(source IN LISTS ARGN)
    file(STRINGS ${source} tables REGEX "^constexpr .* (kFunctions|kCommands|kStimuli|kWords|kHelp)(\\[| =)")
    file(STRINGS ${source} members REGEX "^[A-Za-z][^=(]*::~?[A-Za-z]+\\(")
    string(REGEX REPLACE "cc$" "h" header ${source})
    if(tables AND NOT members AND NOT EXISTS ${header})
      list(APPEND apart ${source})
    else()
      list(APPEND together ${source})
    endif()
  endforeach()
  write_batches(apart_files ${name}-apart APART ${namespace} ${apart})
  write_batches(files ${name} TOGETHER ${namespace} ${together})
  set(${out} ${apart_files} ${files} PARENT_SCOPE)
endfunction()

# These files as those of the programs and libraries behind LIKE are built, with the headers of what is
# behind USING.
function(lint_files name)
  cmake_parse_arguments(PARSE_ARGV 1 LINT "" "" "FILES;LIKE;USING")
  add_library(lint-${name} OBJECT EXCLUDE_FROM_ALL ${LINT_FILES})
  target_link_libraries(lint-${name} PRIVATE morvik_warnings ${LINT_USING})
  target_compile_definitions(lint-${name} PRIVATE MORVIK_VERSION="${PROJECT_VERSION}")
  foreach(target IN LISTS LINT_LIKE)
    target_include_directories(lint-${name} PRIVATE "$<TARGET_PROPERTY:${target},INCLUDE_DIRECTORIES>")
    target_compile_definitions(lint-${name} PRIVATE "$<TARGET_PROPERTY:${target},COMPILE_DEFINITIONS>")
  endforeach()
endfunction()

# Programs: each in a namespace of its own, since all have a main and are not meant to stand together.
function(write_programs out name)
  set(number 0)
  foreach(source IN LISTS ARGN)
    math(EXPR number "${number} + 1")
    batch_text(text ${source})
    string(REGEX MATCHALL "\n#include [^\n]*" includes "${text}")
    string(REGEX REPLACE "\n#include [^\n]*" "\n" text "${text}")
    string(JOIN "" head ${head} ${includes})
    string(APPEND body "namespace program${number} {\n${text}}  // namespace program${number}\n")
  endforeach()
  set(file ${CMAKE_BINARY_DIR}/batches/${name}.cc)
  file(GENERATE OUTPUT ${file} CONTENT "${head}\n#define main mainOfProgram\n${body}")
  set(${out} ${file} PARENT_SCOPE)
endfunction()

# The analyzer takes its time over each line of what ships.
set(BATCH_SIZE 24)
write_sources(files morvik/core morvik ${MORVIK_CORE_SOURCES})
lint_files(core FILES ${files} USING morvik_core)
set(BATCH_SIZE 44)

# Rooms of the tool. Those in one call stand in one batch, in this order, so their helpers need different
# names.
function(lint_rooms name)
  set(sources "")
  foreach(folder IN LISTS ARGN)
    file(GLOB found ${folder}/*.cc)
    list(APPEND sources ${found})
  endforeach()
  list(FILTER sources EXCLUDE REGEX "/main\\.cc$")
  write_sources(files devkit/${name} morvik::devkit ${sources})
  lint_files(${name} FILES ${files} USING morvik_core morvik_control morvik_debug)
  target_include_directories(lint-${name} SYSTEM PRIVATE ${V8_INSPECTOR_INCLUDE_DIR})
endfunction()
lint_rooms(device devkit/device devkit/device/features devkit/server devkit/terminal)
lint_rooms(run devkit/run)
lint_rooms(rooms devkit/api devkit/config devkit/control devkit/debug devkit/page devkit/replay devkit/scaffold
           devkit/test devkit/check)
lint_rooms(verbs devkit)

file(GLOB sources bench/compare/*.cc)
list(FILTER sources EXCLUDE REGEX "(/(main|probe|log-daemon)|-test)\\.cc$")
write_batches(files devkit/bench TOGETHER morvik::bench ${sources})
lint_files(bench FILES ${files} USING bench-measures)

# Two programs of tests have headers of one name.
function(lint_tests name)
  cmake_parse_arguments(PARSE_ARGV 1 LINT "" "" "FILES;LIKE;USING")
  list(TRANSFORM LINT_FILES APPEND ".cc")
  file(GLOB sources ${LINT_FILES})
  test_sources(files ${name} ${sources})
  lint_files(${name}-tests FILES ${files} LIKE ${LINT_LIKE} USING ${LINT_USING} GTest::gmock)
endfunction()
lint_tests(unit FILES tests/host/* tests/channel/* tests/devices/* tests/web/* tests/support/unit/*
           tests/support/whole/* tests/features/feature-rows-test LIKE unit-tests USING morvik_core web-peers)
lint_tests(system FILES tests/end-to-end/* tests/package/* tests/soak/* tests/support/system/*
           tests/features/feature-rows-test LIKE system-tests package-tests USING morvik_device web-peers)
lint_tests(devkit FILES tests/devkit/* tests/page/* tests/debug/* tests/browser/* tests/support/*
           tests/support/web/* tests/support/browser/* bench/compare/*-test
           LIKE devkit-tests debug-tests browser-tests browser-support web-peers compare-tests
           USING morvik_control morvik_debug web-peers browser-support bench-measures)
file(GLOB sources tests/features/*.cc)
list(FILTER sources EXCLUDE REGEX "-test\\.cc$")
write_batches(files test/features APART morvik::test ${sources})
lint_files(features FILES ${files} LIKE feature-rows)

file(GLOB fuzzers tests/fuzz/*-fuzz.cc)
file(GLOB shared tests/fuzz/*.cc)
list(REMOVE_ITEM shared ${fuzzers})
write_batches(files test/fuzzers APART morvik::test ${fuzzers})
write_batches(shared_files test/fuzz TOGETHER morvik::test ${shared})
lint_files(fuzz FILES ${files} ${shared_files} LIKE unit-tests USING morvik_core web-peers GTest::gmock)

file(GLOB sources devkit/main.cc devkit/debug/main.cc bench/*.cc bench/peers/floor/floor.cc tests/browser/screenshot/main.cc)
foreach(program main probe log-daemon)
  list(APPEND sources ${CMAKE_SOURCE_DIR}/bench/compare/${program}.cc)
endforeach()
write_programs(files devkit/programs ${sources})
lint_files(programs FILES ${files} LIKE http-bench bench-compare screenshot
           USING morvik_core morvik_control morvik_debug web-peers browser-support bench-measures GTest::gmock)

# Batches are checked with the rules of what is in them.
foreach(folder devkit test)
  file(REMOVE ${CMAKE_BINARY_DIR}/batches/${folder}/.clang-tidy)
endforeach()
if(NOT MORVIK_LINT STREQUAL DEEP)
  configure_file(devkit/quick.clang-tidy batches/devkit/.clang-tidy COPYONLY)
endif()
configure_file(tests/.clang-tidy batches/test/.clang-tidy COPYONLY)
