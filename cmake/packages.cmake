# The Debian packages morvik and morvik-dev, by CPack; script/package makes them.
set(DEBIAN ${CMAKE_SOURCE_DIR}/packaging/debian)

# What every package has beside its own files.
foreach(package morvik morvik-dev)
  execute_process(COMMAND gzip -9nc ${DEBIAN}/changelog OUTPUT_FILE ${MADE}/changelog.gz)
  install(FILES ${DEBIAN}/copyright ${MADE}/changelog.gz DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package}
          COMPONENT ${package})
  if(EXISTS ${DEBIAN}/${package}/lintian-overrides)
    install(FILES ${DEBIAN}/${package}/lintian-overrides DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides
            RENAME ${package} COMPONENT ${package})
  endif()
endforeach()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME morvik)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE
                                                WORLD_READ WORLD_EXECUTE)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL morvik morvik-dev)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING IGNORE)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# What the programs are linked to, as the machine's packages tell; of the engine's library, which may only
# be unpacked beside the system, packaging/debian/shlibs.local tells it.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_PROJECT_CONFIG_FILE ${DEBIAN}/cpack.cmake)
get_filename_component(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${V8_LIBRARY} DIRECTORY)

set(CPACK_DEBIAN_MORVIK_PACKAGE_NAME morvik)
set(CPACK_DEBIAN_MORVIK_PACKAGE_SECTION misc)
set(CPACK_DEBIAN_MORVIK_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_MORVIK_PACKAGE_DEPENDS "systemd | systemd-standalone-sysusers, systemd | systemd-standalone-tmpfiles")
file(GLOB CPACK_DEBIAN_MORVIK_PACKAGE_CONTROL_EXTRA ${DEBIAN}/morvik/p*)
set(CPACK_COMPONENT_MORVIK_DESCRIPTION "host of small JavaScript applications on a household device
Runs up to three applications at once, each in a process of its own, in a
script engine with tight limits, and lets each use what its descriptor asks
for. A device server on the other end of a TCP connection drives the device.

A service starts the launcher, which takes launch lines from a FIFO.")

set(CPACK_DEBIAN_MORVIK-DEV_PACKAGE_NAME morvik-dev)
set(CPACK_DEBIAN_MORVIK-DEV_PACKAGE_SECTION devel)
set(CPACK_DEBIAN_MORVIK-DEV_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_MORVIK-DEV_PACKAGE_DEPENDS "morvik (= ${PROJECT_VERSION})")
set(CPACK_COMPONENT_MORVIK-DEV_DESCRIPTION "tool of people who write applications for MorvikVM
Runs applications on a virtual device with a page in the browser, checks,
tests and debugs them, and tells why they ended. Typings for editors, sample
applications and all documents come along.")
include(CPack)
