# What cmake --install installs, in two parts that are packages as well: the component morvik is what runs
# on a device, morvik-dev what authors of applications have.
include(GNUInstallDirs)
set(UNITS_FOLDER lib/systemd/system)
set(PACKAGING ${CMAKE_SOURCE_DIR}/packaging)
set(MADE ${CMAKE_BINARY_DIR}/packaging)

# The units of one launcher, and of each of many.
function(configure_units name)
  cmake_parse_arguments(PARSE_ARGV 1 "" "" "TITLE;UNIT;FIFO;SERVER;APPLICATIONS;OWN_SETTINGS" "")
  foreach(value TITLE UNIT FIFO SERVER APPLICATIONS OWN_SETTINGS)
    set(${value} "${_${value}}")
  endforeach()
  foreach(kind service socket)
    configure_file(${PACKAGING}/systemd/${kind}.in ${MADE}/${name}.${kind} @ONLY)
    install(FILES ${MADE}/${name}.${kind} DESTINATION ${UNITS_FOLDER} COMPONENT morvik)
  endforeach()
endfunction()

string(CONCAT ON_THE_DEVICE
  "# A script may write into its application's folder, where that belongs to the user below.\n"
  "ReadWritePaths=-/usr/morvik/apps\n"
  "# The device server writes photos and recordings there, so it cannot be a folder of the service's own.\n"
  "PrivateTmp=no\n")
string(CONCAT AWAY_FROM_THE_DEVICE
  "# Each launcher has a folder of applications of its own.\n"
  "StateDirectory=morvik/%i\n"
  "# Photos and recordings are on the device, which is another machine.\n"
  "PrivateTmp=yes\n")
configure_units(morvik TITLE "" UNIT morvik FIFO /run/morvik/launch SERVER morvik-server
                APPLICATIONS /usr/morvik/apps OWN_SETTINGS "${ON_THE_DEVICE}")
configure_units(morvik@ TITLE " (%i)" UNIT morvik@%i FIFO /run/morvik/%i/launch
                SERVER morvik-server@%i APPLICATIONS /var/lib/morvik/%i OWN_SETTINGS "${AWAY_FROM_THE_DEVICE}")

install_program(morvikvm ${CMAKE_INSTALL_BINDIR} morvik)
install(FILES ${CMAKE_BINARY_DIR}/man/morvikvm.1.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT morvik)
install(FILES ${CMAKE_BINARY_DIR}/man/morvik.service.8.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man8
        COMPONENT morvik)
install(FILES ${PACKAGING}/systemd/sysusers.conf DESTINATION lib/sysusers.d RENAME morvik.conf
        COMPONENT morvik)
install(FILES ${PACKAGING}/systemd/tmpfiles.conf DESTINATION lib/tmpfiles.d RENAME morvik.conf
        COMPONENT morvik)
# What an integrator reads. Authors get all documents.
foreach(document operations processes ends log-lines wire security)
  if(EXISTS ${CMAKE_SOURCE_DIR}/docs/${document}.md)
    install(FILES docs/${document}.md DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/morvik COMPONENT morvik)
  endif()
endforeach()
install(DIRECTORY packaging/examples DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/morvik COMPONENT morvik)

# The tool looks for its companions beside itself, so they lie in a folder of their own and the PATH has a
# link to it.
set(TOOL_FOLDER ${CMAKE_INSTALL_LIBEXECDIR}/morvik-dev)
install_program(morvik-dev ${TOOL_FOLDER} morvik-dev)
install_program(morvikvm-debug ${TOOL_FOLDER} morvik-dev)
install(TARGETS virtual-clock LIBRARY DESTINATION ${TOOL_FOLDER} COMPONENT morvik-dev)
file(MAKE_DIRECTORY ${MADE})
file(CREATE_LINK ../${TOOL_FOLDER}/morvik-dev ${MADE}/morvik-dev SYMBOLIC)
install(FILES ${MADE}/morvik-dev DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT morvik-dev)
install(FILES ${CMAKE_BINARY_DIR}/man/morvik-dev.1.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1
        COMPONENT morvik-dev)
install(FILES devkit/completion/morvik-dev.bash DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
        RENAME morvik-dev COMPONENT morvik-dev)
# What applications wrote into their folders stays here.
install(DIRECTORY types apps DESTINATION ${CMAKE_INSTALL_DATADIR}/morvik-dev COMPONENT morvik-dev
        FILES_MATCHING REGEX "[.](ts|js|json|xml|svg|md)$")
install(DIRECTORY docs/ DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/morvik-dev COMPONENT morvik-dev)
