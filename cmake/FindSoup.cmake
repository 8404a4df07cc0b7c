# Finds libsoup 3, for the tool's web servers.
#
# Looked for in .deps/soup below the checkout, where script/bootstrap unpacks the headers because
# Debian's package of them brings a whole desktop toolkit along, then in the system.
#
# Gives the target Soup::Soup.
find_path(SOUP_INCLUDE_DIR libsoup/soup.h PATH_SUFFIXES libsoup-3.0
          HINTS ${CMAKE_SOURCE_DIR}/.deps/soup/usr/include)
find_library(SOUP_LIBRARY NAMES soup-3.0 libsoup-3.0.so.0)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(Soup REQUIRED_VARS SOUP_LIBRARY SOUP_INCLUDE_DIR
                                  REASON_FAILURE_MESSAGE "run script/bootstrap first")

if(Soup_FOUND AND NOT TARGET Soup::Soup)
  add_library(Soup::Soup SHARED IMPORTED)
  set_target_properties(Soup::Soup PROPERTIES
    IMPORTED_LOCATION "${SOUP_LIBRARY}"
    IMPORTED_SONAME libsoup-3.0.so.0
    INTERFACE_INCLUDE_DIRECTORIES "${SOUP_INCLUDE_DIR}"
    INTERFACE_LINK_LIBRARIES PkgConfig::GIO)
endif()
mark_as_advanced(SOUP_LIBRARY SOUP_INCLUDE_DIR)
