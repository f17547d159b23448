# The Debian packages, one for each group of components: cpack --config BUILD/CPackConfig.cmake
#
# One more package is one more group: its components, its name, section and description here, and in
# tests/deploy/package.sh what it holds.

set(CPACK_GENERATOR DEB)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_PACKAGE_NAME drench)
set(CPACK_PACKAGE_CONTACT "The Drench maintainers <maintainers@drench.invalid>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/finish.cmake)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
if(CMAKE_CROSSCOMPILING)
  set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE arm64)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_SYSROOT}/lib/${CMAKE_LIBRARY_ARCHITECTURE}
                                                  ${CMAKE_SYSROOT}/usr/lib/${CMAKE_LIBRARY_ARCHITECTURE})
endif()
# Each package has a first line of its own.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")

set(CPACK_COMPONENT_SERVER_GROUP drench)
set(CPACK_COMPONENT_TOOLS_GROUP drench)
set(CPACK_DEBIAN_DRENCH_PACKAGE_NAME drench)
# Not games: Debian expects those in /usr/games.
set(CPACK_DEBIAN_DRENCH_PACKAGE_SECTION net)
set(CPACK_DEBIAN_DRENCH_DESCRIPTION "${PROJECT_DESCRIPTION}
A program that is a room, and a hardened service with one unit for each
room; bots to play against; a tool that makes, checks and draws arenas; a
relay that makes any line bad and records matches; and a tool that looks into
recordings.")
# Its nft loads the firewall.
set(CPACK_DEBIAN_DRENCH_PACKAGE_RECOMMENDS nftables)
set(CPACK_DEBIAN_DRENCH_PACKAGE_CONTROL_EXTRA
    ${CMAKE_CURRENT_LIST_DIR}/postinst ${CMAKE_CURRENT_LIST_DIR}/prerm ${CMAKE_CURRENT_LIST_DIR}/postrm)

set(CPACK_COMPONENT_DEV_GROUP libdrench-dev)
set(CPACK_DEBIAN_LIBDRENCH-DEV_PACKAGE_NAME libdrench-dev)
set(CPACK_DEBIAN_LIBDRENCH-DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_LIBDRENCH-DEV_DESCRIPTION "Libraries for clients of the Drench water fight
Static libraries with their headers, CMake files and two examples: the
player's side of the protocol, and the game itself, to predict with.")
set(CPACK_DEBIAN_LIBDRENCH-DEV_PACKAGE_SUGGESTS drench)

# For hosts of many rooms, who bring its libraries along.
if(DRENCH_KEEPER)
  set(CPACK_COMPONENT_KEEPER_GROUP drench-keeper)
  set(CPACK_DEBIAN_DRENCH-KEEPER_PACKAGE_NAME drench-keeper)
  set(CPACK_DEBIAN_DRENCH-KEEPER_PACKAGE_SECTION net)
  set(CPACK_DEBIAN_DRENCH-KEEPER_DESCRIPTION "Keeper of rooms of the Drench water fight
Stands before the server of each room: waits for its players before it ends
the room, recycles it when it is empty, publishes metrics for Prometheus, and
speaks to Agones. With alerts and a dashboard.")
  # The server that it starts, and the unit that it changes.
  set(CPACK_DEBIAN_DRENCH-KEEPER_PACKAGE_DEPENDS "drench (= ${PROJECT_VERSION})")
  set(CPACK_DEBIAN_DRENCH-KEEPER_PACKAGE_SUGGESTS "prometheus")
  set(CPACK_DEBIAN_DRENCH-KEEPER_PACKAGE_CONTROL_EXTRA
      ${CMAKE_CURRENT_LIST_DIR}/keeper/postinst ${CMAKE_CURRENT_LIST_DIR}/keeper/postrm)
endif()

# A host without a screen neither needs nor builds it.
if(DRENCH_WINDOW)
  set(CPACK_COMPONENT_WINDOW_GROUP drench-window)
  set(CPACK_DEBIAN_DRENCH-WINDOW_PACKAGE_NAME drench-window)
  set(CPACK_DEBIAN_DRENCH-WINDOW_PACKAGE_SECTION net)
  set(CPACK_DEBIAN_DRENCH-WINDOW_DESCRIPTION "Window of the Drench water fight, to play it
Shows the water fight and lets one play it, in rooms of others or against
bots in a room on this machine. Needs OpenGL 3.3.")
  # The arenas, and the rooms and bots that it starts.
  set(CPACK_DEBIAN_DRENCH-WINDOW_PACKAGE_DEPENDS "drench (= ${PROJECT_VERSION}), fonts-inter")
  set(CPACK_DEBIAN_DRENCH-WINDOW_PACKAGE_SUGGESTS ffmpeg)
endif()

include(CPack)
