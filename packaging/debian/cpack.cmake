# Read by CPack itself: what it can be told in no other way.
set(SHLIBDEPS_EXECUTABLE ${CMAKE_CURRENT_LIST_DIR}/shlibdeps)
