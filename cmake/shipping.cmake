# What a build for devices has beside its optimisation.

# No path of the machine it was built on, so that each machine builds the same bytes. A compiler cache may
# name files from the build folder on.
if(CMAKE_BUILD_TYPE STREQUAL "Release")
  add_compile_options(-ffile-prefix-map=${CMAKE_SOURCE_DIR}=. -ffile-prefix-map=..=.
                      -ffile-prefix-map=${CMAKE_BINARY_DIR}=./build)
endif()

# The time that stands in manual pages and packages: of the last commit, unless the environment tells.
set(MORVIK_EPOCH $ENV{SOURCE_DATE_EPOCH})
if(NOT MORVIK_EPOCH)
  execute_process(COMMAND git log -1 --format=%ct WORKING_DIRECTORY ${CMAKE_SOURCE_DIR}
                  OUTPUT_VARIABLE MORVIK_EPOCH OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
endif()
if(NOT MORVIK_EPOCH)
  string(TIMESTAMP MORVIK_EPOCH %s)
endif()

# For what scripts and device servers can reach: an overflow ends the process, and the tables of
# functions cannot be written.
function(harden)
  if(CMAKE_BUILD_TYPE STREQUAL "Release")
    foreach(target IN LISTS ARGN)
      target_compile_options(${target} PRIVATE -fstack-protector-strong -D_FORTIFY_SOURCE=2)
      target_link_options(${target} PRIVATE LINKER:-z,relro,-z,now)
    endforeach()
  endif()
endfunction()

# Programs in the build folder find an engine's library that is only unpacked below the checkout, by a path
# that is the same in each checkout; what is installed finds the system's. FOLDER is where TARGET goes to.
function(install_program target folder component)
  install(TARGETS ${target} RUNTIME DESTINATION ${folder} COMPONENT ${component})
  get_filename_component(engine ${V8_LIBRARY} DIRECTORY)
  cmake_path(IS_PREFIX CMAKE_SOURCE_DIR ${engine} below_checkout)
  if(below_checkout)
    file(RELATIVE_PATH engine ${CMAKE_BINARY_DIR} ${engine})
    set_target_properties(${target} PROPERTIES BUILD_WITH_INSTALL_RPATH ON INSTALL_RPATH "$ORIGIN/${engine}")
    set(installed "\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${folder}/$<TARGET_FILE_NAME:${target}>")
    install(CODE "file(RPATH_REMOVE FILE \"${installed}\")" COMPONENT ${component})
  endif()
endfunction()
