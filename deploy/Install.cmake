# What `cmake --install` puts where, and cpack into packages. The component "server" is all that a room
# needs, "dev" all that other projects build on.

# Before anything is installed: units name files by their whole paths, in which these signs mean
# something else or end them.
install(CODE [[
  if(NOT IS_ABSOLUTE "${CMAKE_INSTALL_PREFIX}")
    message(FATAL_ERROR "The prefix \"${CMAKE_INSTALL_PREFIX}\" does not begin with /, as the "
                        "paths in service units must. Nothing was installed.")
  endif()
  if(CMAKE_INSTALL_PREFIX MATCHES "[][ \t\r\n\"'\\$%:;{}]")
    message(FATAL_ERROR "The prefix \"${CMAKE_INSTALL_PREFIX}\" has blanks or other signs that "
                        "paths in service units cannot have. Nothing was installed.")
  endif()
]] COMPONENT server)

# Who looks for Resources/ beside the executable lives with it in one private folder; links in bin/
# put them on the PATH.
set(DRENCH_HOME ${CMAKE_INSTALL_LIBDIR}/drench)
install(DIRECTORY Resources DESTINATION ${DRENCH_HOME} COMPONENT server)

function(install_at_home program component)
  file(RELATIVE_PATH link_target ${CMAKE_INSTALL_FULL_BINDIR}
       ${CMAKE_INSTALL_FULL_LIBDIR}/drench/${program})
  set(links ${PROJECT_BINARY_DIR}/bin-link)
  file(MAKE_DIRECTORY ${links})
  file(CREATE_LINK ${link_target} ${links}/${program} SYMBOLIC)
  install(TARGETS ${program} RUNTIME DESTINATION ${DRENCH_HOME} COMPONENT ${component})
  install(FILES ${links}/${program} DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT ${component})
endfunction()

install_at_home(drench-server server)
install(FILES deploy/nftables/drench.nft deploy/wireshark/drench.lua
        DESTINATION ${CMAKE_INSTALL_DATADIR}/drench COMPONENT server)
install(PROGRAMS deploy/nftables/drench-guard DESTINATION ${DRENCH_HOME} COMPONENT server)
# Where systemd looks for it under /usr and /usr/local.
install(FILES deploy/sysctl/60-drench.conf DESTINATION lib/sysctl.d COMPONENT server)
install(DIRECTORY docs/ DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT server)
install(FILES deploy/man/drench-server.6 DESTINATION ${CMAKE_INSTALL_MANDIR}/man6 COMPONENT server)
if(DRENCH_TOOLS)
  install_at_home(drench-bots tools)
  install(TARGETS drench-map drench-lag drench-replay RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
  install(FILES deploy/man/drench-bots.6 DESTINATION ${CMAKE_INSTALL_MANDIR}/man6 COMPONENT tools)
  install(FILES deploy/man/drench-map.1 deploy/man/drench-lag.1 deploy/man/drench-replay.1
          DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools)
  install(DIRECTORY arenas DESTINATION ${CMAKE_INSTALL_DATADIR}/drench COMPONENT tools)
endif()

if(DRENCH_WINDOW)
  install_at_home(drench window)
  set(desktop ${PROJECT_SOURCE_DIR}/deploy/desktop)
  install(FILES ${desktop}/drench.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications COMPONENT window)
  install(FILES ${desktop}/drench.svg DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps
          COMPONENT window)
  install(FILES ${desktop}/invalid.drench.Drench.metainfo.xml
          DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo COMPONENT window)
  install(FILES deploy/man/drench.6 DESTINATION ${CMAKE_INSTALL_MANDIR}/man6 COMPONENT window)
endif()

# These units name files by their whole paths, and the prefix is known for good only now.
set(DRENCH_UNITS lib/systemd/system)
install(FILES deploy/systemd/drench-recycle.service deploy/systemd/drench-recycle.timer
              deploy/systemd/drench.slice
        DESTINATION ${DRENCH_UNITS} COMPONENT server)
install(CODE "
  # A whole path takes the prefix's place, as it does for all that is installed.
  set(home \"\${CMAKE_INSTALL_PREFIX}\")
  cmake_path(APPEND home \"${DRENCH_HOME}\")
  set(share \"\${CMAKE_INSTALL_PREFIX}\")
  cmake_path(APPEND share \"${CMAKE_INSTALL_DATADIR}/drench\")
  foreach(unit drench@ drench-firewall)
    configure_file(\"${PROJECT_SOURCE_DIR}/deploy/systemd/\${unit}.service.in\"
                   \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${DRENCH_UNITS}/\${unit}.service\"
                   @ONLY)
  endforeach()
" COMPONENT server)

# For find_package(drench).
include(CMakePackageConfigHelpers)
set(DRENCH_CMAKE ${CMAKE_INSTALL_LIBDIR}/cmake/drench)
install(TARGETS drench-game drench-client EXPORT drench ARCHIVE COMPONENT dev)
install(EXPORT drench FILE drench-config.cmake NAMESPACE drench:: DESTINATION ${DRENCH_CMAKE}
        COMPONENT dev)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/drench-config-version.cmake
                                 COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/drench-config-version.cmake DESTINATION ${DRENCH_CMAKE}
        COMPONENT dev)
install(DIRECTORY ${PROJECT_BINARY_DIR}/include/drench DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
        COMPONENT dev)
install(DIRECTORY examples DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT dev)
