# Tests of what hosts get: installations, scripts, packages, services, the firewall, the arenas.

add_test(NAME Install.InstalledServerFindsItsArena
         COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/install/server.sh ${PROJECT_BINARY_DIR})
add_test(NAME Install.RefusesPrefixesThatUnitsCannotName
         COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/install/prefix.sh ${PROJECT_BINARY_DIR})
add_test(NAME Docs.LinksLeadSomewhereInTheTreeAndInstalled
         COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/docs/links.sh ${PROJECT_BINARY_DIR} ${PROJECT_SOURCE_DIR})
add_test(NAME Docs.ListsOfWhatToChangeAreComplete
         COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/docs/extending.sh ${PROJECT_SOURCE_DIR})
add_test(NAME Scripts.BuildWhereTheyAreWithTheCompilerAskedFor
         COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/scripts/building.sh ${PROJECT_BINARY_DIR})
add_test(NAME Scripts.LongStepsAreSeenOnATerminalAlone
         COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/scripts/progress.sh ${PROJECT_BINARY_DIR})
set_tests_properties(Scripts.LongStepsAreSeenOnATerminalAlone PROPERTIES SKIP_RETURN_CODE 77)
add_test(NAME Build.LeavesOutFuzzProgramsAndRestoresTheArena
         COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/plain-build.sh ${PROJECT_BINARY_DIR})
add_test(NAME Install.StrangersBuildOnTheLibraries
         COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/install/library.sh ${PROJECT_BINARY_DIR}
                 ${PROJECT_SOURCE_DIR} ${CMAKE_CXX_COMPILER})

if(DRENCH_TOOLS)
  find_path(SECCOMP_INCLUDE_DIR seccomp.h)
  find_library(SECCOMP_LIBRARY seccomp)
  if(SECCOMP_INCLUDE_DIR AND SECCOMP_LIBRARY)
    add_executable(drench-confined deploy/Confined.cpp)
    target_include_directories(drench-confined PRIVATE ${SECCOMP_INCLUDE_DIR})
    target_link_libraries(drench-confined PRIVATE ${SECCOMP_LIBRARY})
  endif()
  add_test(NAME Scripts.RunStartsTheRoomAskedFor
           COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/scripts/run.sh ${PROJECT_BINARY_DIR})
  set_tests_properties(Scripts.RunStartsTheRoomAskedFor PROPERTIES TIMEOUT 300)
  if(DRENCH_WINDOW)
    add_test(NAME Scripts.PlayOpensTheWindowInTheRoomAskedFor
             COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/scripts/play.sh ${PROJECT_BINARY_DIR})
    set_tests_properties(Scripts.PlayOpensTheWindowInTheRoomAskedFor PROPERTIES TIMEOUT 300)
  endif()
  add_test(NAME Deploy.RoomLivesUnderItsServiceUnit
           COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/deploy/service.sh ${PROJECT_BINARY_DIR}
                   ${PROJECT_BINARY_DIR}/drench-confined)
  add_test(NAME Deploy.PackageHoldsWhatItShould
           COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/deploy/package.sh ${PROJECT_BINARY_DIR}
                   ${PROJECT_VERSION})
  add_test(NAME Deploy.DesktopsTakeTheWindow
           COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/deploy/desktop.sh ${PROJECT_SOURCE_DIR}/deploy/desktop)
  add_test(NAME Deploy.MaintainerScriptsKeepRoomsAndHostsFiles
           COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/deploy/maintainer-scripts.sh
                   ${PROJECT_SOURCE_DIR}/deploy/debian)
  add_test(NAME Deploy.LintianAcceptsThePackages
           COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/deploy/lintian.sh ${PROJECT_BINARY_DIR})
  add_test(NAME Deploy.GameIsTheSameOnArm64
           COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/deploy/arm64.sh ${PROJECT_BINARY_DIR}
                   $<TARGET_FILE:drench-bots>)
  add_test(NAME Deploy.PackagesForArm64HoldTheSame
           COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/deploy/arm64-packages.sh ${PROJECT_BINARY_DIR})
  set(keeper "")
  if(DRENCH_KEEPER)
    set(keeper $<TARGET_FILE:drench-keeper>)
  endif()
  add_test(NAME Deploy.FleetSaysWhatItShould
           COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/deploy/fleet.sh $<TARGET_FILE:drench-map> "${keeper}")
  add_test(NAME Deploy.RoomRunsFromItsImage
           COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/deploy/container.sh $<TARGET_FILE:drench-bots>)
  # They build with all cores.
  set_tests_properties(Deploy.GameIsTheSameOnArm64 Deploy.PackagesForArm64HoldTheSame
                       Deploy.RoomRunsFromItsImage
                       PROPERTIES SKIP_RETURN_CODE 77 TIMEOUT 900 RESOURCE_LOCK cross-build)
  add_test(NAME Deploy.DissectorNamesEveryByte
           COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/deploy/dissector.sh ${PROJECT_BINARY_DIR})
  add_executable(drench-hostile deploy/Hostile.cpp)
  add_executable(drench-send-buffer deploy/SendBuffer.cpp)
  function(add_attack name script)
    add_test(NAME Deploy.${name}
             COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/deploy/${script} ${PROJECT_BINARY_DIR}
                     $<TARGET_FILE:drench-hostile>)
    set_tests_properties(Deploy.${name} PROPERTIES SKIP_RETURN_CODE 77 TIMEOUT 400 RUN_SERIAL TRUE)
  endfunction()
  add_attack(RoomSurvivesBehindTheFirewall firewall.sh)
  add_attack(FirewallAndNeighboursWhoDoNotExist neighbours.sh)
  add_attack(FirewallEndsRoomsAnsweringEachOther echoes.sh)
  add_attack(PodKeepsItsRoomUnderAttack pod.sh)
  set_tests_properties(Deploy.DissectorNamesEveryByte
                       PROPERTIES SKIP_RETURN_CODE 77 TIMEOUT 400 RUN_SERIAL TRUE)
  set_tests_properties(Deploy.RoomLivesUnderItsServiceUnit Deploy.PackageHoldsWhatItShould
                       Deploy.DesktopsTakeTheWindow Deploy.LintianAcceptsThePackages
                       Deploy.MaintainerScriptsKeepRoomsAndHostsFiles
                       Deploy.FleetSaysWhatItShould
                       PROPERTIES SKIP_RETURN_CODE 77 TIMEOUT 300)
endif()

if(DRENCH_KEEPER)
  add_test(NAME Deploy.PrometheusFindsAllRoomsAndTheirAlertsFire
           COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/deploy/metrics.sh ${PROJECT_BINARY_DIR} ${PROJECT_SOURCE_DIR})
  add_test(NAME Deploy.KeeperCountsPlayersByTheNetworkToo
           COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/deploy/keeper-network.sh ${PROJECT_BINARY_DIR})
  # The executable of the real SDK server, where there is one.
  set(AGONES_SDK_SERVER "$ENV{AGONES_SDK_SERVER}" CACHE FILEPATH "SDK server of Agones, for its conformance run")
  add_test(NAME Deploy.KeeperConformsToTheSdkServer
           COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/deploy/agones.sh ${PROJECT_BINARY_DIR} ${AGONES_SDK_SERVER})
  set_tests_properties(Deploy.PrometheusFindsAllRoomsAndTheirAlertsFire
                       Deploy.KeeperCountsPlayersByTheNetworkToo Deploy.KeeperConformsToTheSdkServer
                       PROPERTIES SKIP_RETURN_CODE 77 TIMEOUT 300)
endif()

if(DRENCH_TOOLS)
  file(GLOB plans CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/arenas/*.plan)
  foreach(plan IN LISTS plans)
    cmake_path(GET plan STEM name)
    add_test(NAME Arena.CanBePlayedWithoutAWarning.${name} COMMAND drench-map check ${plan})
    set_tests_properties(Arena.CanBePlayedWithoutAWarning.${name}
                         PROPERTIES FAIL_REGULAR_EXPRESSION ": warning:" TIMEOUT 300)
  endforeach()
endif()
