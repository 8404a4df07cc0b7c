# The message classes, made by protoc from proto/zeph-message.proto: the header into include/ and
# the source into src/ of the build tree.
find_package(Protobuf REQUIRED)

set(ZEPH_PROTO ${CMAKE_SOURCE_DIR}/proto/zeph-message.proto)
set(ZEPH_GENERATED_DIR ${CMAKE_BINARY_DIR}/include)
set(ZEPH_GENERATED_SOURCE ${CMAKE_BINARY_DIR}/src/zeph-message.pb.cc)
file(MAKE_DIRECTORY ${ZEPH_GENERATED_DIR} ${CMAKE_BINARY_DIR}/src)

add_custom_command(
  OUTPUT ${ZEPH_GENERATED_DIR}/zeph-message.pb.h ${ZEPH_GENERATED_SOURCE}
  COMMAND protobuf::protoc --cpp_out=${ZEPH_GENERATED_DIR} -I ${CMAKE_SOURCE_DIR}/proto ${ZEPH_PROTO}
  COMMAND ${CMAKE_COMMAND} -E rename ${ZEPH_GENERATED_DIR}/zeph-message.pb.cc ${ZEPH_GENERATED_SOURCE}
  DEPENDS ${ZEPH_PROTO}
  COMMENT "Generating the message classes"
  VERBATIM)

add_library(zeph_message STATIC ${ZEPH_GENERATED_SOURCE} ${ZEPH_GENERATED_DIR}/zeph-message.pb.h)
target_include_directories(zeph_message SYSTEM PUBLIC ${ZEPH_GENERATED_DIR})
target_link_libraries(zeph_message PUBLIC protobuf::libprotobuf)
# A debug build of these classes would complain on standard error about texts that are not UTF-8,
# which scripts may send.
target_compile_definitions(zeph_message PRIVATE NDEBUG)
# What protoc writes is not ours to look at for undefined behaviour, and builds in half the time so.
without_undefined_sanitizer(zeph_message)
