# Many files in one, since most of the time of compiler and clang-tidy goes to the headers that all of
# them include. The tool and the tests are built so (MORVIK_BATCHES, on unless said otherwise; off, an
# edit costs one file); what ships is built file by file, and only script/lint looks at it so (MORVIK_LINT).
option(MORVIK_BATCHES "Build the tool and the tests many files in one" ON)
set(MORVIK_LINT OFF CACHE STRING "Make the sources that script/lint looks at: OFF, ON or DEEP")
set(BATCH_SIZE 16)

# Writes batches of these files and gives their names in OUT. TOGETHER: as they are. APART: each in a copy
# of the namespace of its own, because helpers and tables of many files have the same names; such a
# file defines nothing that another one uses, and no members of a class.
function(write_batches out name how namespace)
  list(LENGTH ARGN count)
  if(count EQUAL 0)
    set(${out} "" PARENT_SCOPE)
    return()
  endif()
  string(REGEX MATCH "[^:]+$" last ${namespace})
  set(number 0)
  foreach(source IN LISTS ARGN)
    file(REAL_PATH ${source} source)
    math(EXPR batch "${number} / ${BATCH_SIZE}")
    math(EXPR number "${number} + 1")
    file(STRINGS ${source} includes REGEX "^#include ")
    list(JOIN includes "\n" includes)
    string(APPEND includes_${batch} "${includes}\n")
    batch_text(text ${source})
    if(how STREQUAL APART)
      set(copy ${last}_${number})
      string(REGEX REPLACE "[^:]+$" "${copy}" whole ${namespace})
      string(CONCAT text "#pragma GCC diagnostic ignored \"-Wunused-const-variable\"\n"
                         "namespace ${whole} {\nusing namespace ::${namespace};\n}\n"
                         "#define ${last} ${copy}\n" "${text}" "#undef ${last}\n")
    endif()
    string(APPEND sources_${batch} "${text}")
  endforeach()
  set(files "")
  foreach(part RANGE ${batch})
    set(file ${CMAKE_BINARY_DIR}/batches/${name}-${part}.cc)
    file(GENERATE OUTPUT ${file} CONTENT "${includes_${part}}${sources_${part}}")
    list(APPEND files ${file})
  endforeach()
  set(${out} ${files} PARENT_SCOPE)
endfunction()

# How a file gets into a batch. The analyzer of clang-tidy follows no path through an included file, so
# script/lint gets the text itself.
function(batch_text out source)
  if(MORVIK_LINT)
    file(READ ${source} text)
    set(${out} "#line 1 \"${source}\"\n${text}" PARENT_SCOPE)
  else()
    set(${out} "#include \"${source}\"\n" PARENT_SCOPE)
  endif()
endfunction()

# The sources of a test program: its tests apart, what they share together.
function(test_sources out name)
  if(NOT MORVIK_BATCHES)
    set(${out} ${ARGN} PARENT_SCOPE)
    return()
  endif()
  foreach(source IN LISTS ARGN)
    file(STRINGS ${source} tests_in_it REGEX "^TEST(_[FP])?\\(" LIMIT_COUNT 1)
    if(tests_in_it)
      list(APPEND tests ${source})
    else()
      list(APPEND shared ${source})
    endif()
  endforeach()
  write_batches(test_files test/${name} APART morvik::test ${tests})
  write_batches(shared_files test/${name}-shared TOGETHER morvik::test ${shared})
  set(${out} ${test_files} ${shared_files} PARENT_SCOPE)
endfunction()

# The sources of a library or program of the tool. The tables of features and the helps of verbs all have
# the same names: those files are built one by one, and script/lint looks at them apart, or alone where
# others use what is in them.
function(batched_sources out target namespace)
  if(NOT MORVIK_BATCHES AND NOT MORVIK_LINT)
    set(${out} ${ARGN} PARENT_SCOPE)
    return()
  endif()
  string(REGEX MATCH "[^:]+$" folder ${namespace})
  foreach(source IN LISTS ARGN)
    file(STRINGS ${source} tables REGEX "^constexpr .* (kFunctions|kCommands|kStimuli|kWords|kHelp)(\\[| =)")
    string(REGEX REPLACE "cc$" "h" header ${source})
    file(STRINGS ${source} members REGEX "^[A-Za-z][^=(]*::~?[A-Za-z]+\\(")
    if(NOT tables)
      list(APPEND together ${source})
    elseif(NOT MORVIK_LINT)
      list(APPEND alone ${source})
    elseif(NOT members AND NOT EXISTS ${header})
      list(APPEND apart ${source})
    else()
      get_filename_component(name ${source} NAME_WE)
      write_batches(files ${folder}/${target}-${name} TOGETHER ${namespace} ${source})
      list(APPEND alone ${files})
    endif()
  endforeach()
  write_batches(together_files ${folder}/${target} TOGETHER ${namespace} ${together})
  write_batches(apart_files ${folder}/${target}-apart APART ${namespace} ${apart})
  set(${out} ${together_files} ${apart_files} ${alone} PARENT_SCOPE)
endfunction()

# Adds to a target that is built file by file what script/lint looks at in place of its sources.
function(lint_batches target namespace)
  if(MORVIK_LINT)
    batched_sources(files ${target} ${namespace} ${ARGN})
    target_sources(${target} PRIVATE ${files})
  endif()
endfunction()

# Batches are checked with the rules of what is in them.
if(MORVIK_LINT)
  if(NOT MORVIK_LINT STREQUAL DEEP)
    configure_file(${CMAKE_SOURCE_DIR}/devkit/quick.clang-tidy
                   ${CMAKE_BINARY_DIR}/batches/devkit/.clang-tidy COPYONLY)
  else()
    file(REMOVE ${CMAKE_BINARY_DIR}/batches/devkit/.clang-tidy)
  endif()
  configure_file(${CMAKE_SOURCE_DIR}/tests/.clang-tidy
                 ${CMAKE_BINARY_DIR}/batches/test/.clang-tidy COPYONLY)
endif()
