# Finds V8 as Debian's libnode packages it: headers in include/node, one library libnode.
#
# Looked for first in .deps/v8 below the checkout, where script/bootstrap unpacks the packages when
# the system cannot have them, then in the system. Headers without a library beside them (some
# Node.js packages ship those) do not count.
#
# Gives the target V8::V8.

function(morvik_find_v8_in root)
  find_path(V8_INCLUDE_DIR NAMES v8.h PATHS ${root}/usr/include/node NO_DEFAULT_PATH)
  find_library(V8_LIBRARY NAMES node libnode.so.108
               PATHS ${root}/usr/lib ${root}/usr/lib/${CMAKE_LIBRARY_ARCHITECTURE} NO_DEFAULT_PATH)
  if(NOT V8_LIBRARY)
    unset(V8_INCLUDE_DIR CACHE)
  endif()
endfunction()

foreach(root "${CMAKE_SOURCE_DIR}/.deps/v8" "")
  if(NOT V8_LIBRARY)
    morvik_find_v8_in("${root}")
  endif()
endforeach()

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(V8 REQUIRED_VARS V8_LIBRARY V8_INCLUDE_DIR
                                  REASON_FAILURE_MESSAGE "run script/bootstrap first")

if(V8_FOUND AND NOT TARGET V8::V8)
  add_library(V8::V8 SHARED IMPORTED)
  set_target_properties(V8::V8 PROPERTIES
    IMPORTED_LOCATION "${V8_LIBRARY}"
    IMPORTED_SONAME libnode.so.108
    INTERFACE_INCLUDE_DIRECTORIES "${V8_INCLUDE_DIR}")
endif()
mark_as_advanced(V8_LIBRARY V8_INCLUDE_DIR)
