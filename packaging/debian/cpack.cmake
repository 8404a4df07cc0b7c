# Read by CPack itself: what it can be told in no other way.
set(SHLIBDEPS_EXECUTABLE ${CMAKE_CURRENT_LIST_DIR}/shlibdeps)

# The maintainer is who signed the changelog last, so the address stands once. It ends in .invalid, a
# name that nobody can have: whoever ships packages signs with an address that is read.
file(STRINGS ${CMAKE_CURRENT_LIST_DIR}/changelog signature REGEX "^ -- .*>  " LIMIT_COUNT 1)
string(REGEX REPLACE "^ -- (.*>)  .*" "\\1" CPACK_DEBIAN_PACKAGE_MAINTAINER "${signature}")
