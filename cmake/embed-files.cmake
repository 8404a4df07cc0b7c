# Files inside a program, through GLib's resources.
find_program(GLIB_COMPILE_RESOURCES glib-compile-resources REQUIRED)

# Makes an object library of these files, whose names are told from BASE on. Programs find them below
# PREFIX; C_NAME is what the generated functions begin with.
function(embed_files target base prefix c_name)
  list(TRANSFORM ARGN REPLACE "(.+)" "    <file>\\1</file>" OUTPUT_VARIABLE entries)
  list(JOIN entries "\n" entries)
  set(list ${CMAKE_CURRENT_BINARY_DIR}/${target}.gresource.xml)
  file(CONFIGURE OUTPUT ${list} @ONLY CONTENT
       "<gresources>\n  <gresource prefix=\"${prefix}\">\n${entries}\n  </gresource>\n</gresources>\n")
  set(source ${CMAKE_CURRENT_BINARY_DIR}/${target}.c)
  list(TRANSFORM ARGN PREPEND ${base}/ OUTPUT_VARIABLE files)
  add_custom_command(
    OUTPUT ${source}
    COMMAND ${GLIB_COMPILE_RESOURCES} --generate-source --internal --c-name=${c_name}
            --sourcedir=${base} --target=${source} ${list}
    DEPENDS ${list} ${files}
    VERBATIM)
  # Generated C, and built without the warnings that our own code is built with.
  add_library(${target} OBJECT ${source})
  target_link_libraries(${target} PRIVATE PkgConfig::GIO)
endfunction()
