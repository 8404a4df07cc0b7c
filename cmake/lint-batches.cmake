# Sources for clang-tidy alone: many files in one, since most of its time goes to the headers that all
# of them include.
option(MORVIK_LINT "Make the sources that script/lint looks at" OFF)
set(LINT_BATCH_SIZE 12)

# Adds batches of these files to a target. All of them stand in morvik::test. There each gets a
# namespace of its own, because the helpers of tests have the same names, or with TOGETHER as the
# first one stays where it is, because it has the members of a class.
function(lint_batches target)
  if(NOT MORVIK_LINT)
    return()
  endif()
  set(together NO)
  if("${ARGV1}" STREQUAL TOGETHER)
    set(together YES)
    list(POP_FRONT ARGN)
  endif()
  set(number 0)
  foreach(source IN LISTS ARGN)
    math(EXPR batch "${number} / ${LINT_BATCH_SIZE}")
    math(EXPR number "${number} + 1")
    set(name test_${number})
    file(STRINGS ${source} includes REGEX "^#include ")
    list(JOIN includes "\n" includes)
    string(APPEND includes_${batch} "${includes}\n")
    if(together)
      string(APPEND sources_${batch} "#include \"${source}\"\n")
    else()
      string(APPEND sources_${batch}
             "namespace morvik::${name} {\nusing namespace ::morvik::test;\n}\n"
             "#define test ${name}\n#include \"${source}\"\n#undef test\n")
    endif()
  endforeach()
  foreach(part RANGE ${batch})
    set(file ${CMAKE_BINARY_DIR}/lint/${target}-${together}-${part}.cc)
    file(CONFIGURE OUTPUT ${file} CONTENT "${includes_${part}}${sources_${part}}")
    target_sources(${target} PRIVATE ${file})
  endforeach()
  configure_file(${CMAKE_SOURCE_DIR}/tests/.clang-tidy ${CMAKE_BINARY_DIR}/lint/.clang-tidy COPYONLY)
endfunction()
