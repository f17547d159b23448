# Tests of each room without a process of its own, mirrored by folder.

set(room_on_a_manual_clock support/ManualClock.cpp support/Room.cpp)

file(GLOB game_tests CONFIGURE_DEPENDS src/*.cpp)
list(REMOVE_ITEM game_tests ${CMAKE_CURRENT_SOURCE_DIR}/src/TimingTest.cpp)
add_executable(drench-game-tests ${game_tests} ${room_on_a_manual_clock})
target_link_libraries(drench-game-tests PRIVATE drench-test-support drench-room)
target_compile_definitions(drench-game-tests PRIVATE DRENCH_MAPDATA="${PROJECT_SOURCE_DIR}/Resources/mapdata")
add_dependencies(drench-game-tests resources)

file(GLOB library_tests CONFIGURE_DEPENDS arena/*.cpp arena/picture/*.cpp bench/*.cpp client/*.cpp common/*.cpp)
if(NOT DRENCH_TOOLS)
  # They write files that the tools read, or play over a line that the relay impairs.
  list(REMOVE_ITEM library_tests ${CMAKE_CURRENT_SOURCE_DIR}/arena/picture/PictureTest.cpp
       ${CMAKE_CURRENT_SOURCE_DIR}/arena/picture/PngTest.cpp
       ${CMAKE_CURRENT_SOURCE_DIR}/client/PredictedLine.cpp
       ${CMAKE_CURRENT_SOURCE_DIR}/client/PredictionRulesTest.cpp
       ${CMAKE_CURRENT_SOURCE_DIR}/client/PredictionTest.cpp)
endif()
add_executable(drench-tests ${library_tests} ${room_on_a_manual_clock}
                            ${PROJECT_SOURCE_DIR}/bench/RoomSupply.cpp)
target_link_libraries(drench-tests PRIVATE drench-test-support drench-room drench-picture drench-client
                                           $<TARGET_NAME_IF_EXISTS:drench-png>
                                           $<TARGET_NAME_IF_EXISTS:drench-lag-parts>)
target_compile_definitions(
  drench-tests
  PRIVATE DRENCH_MAPDATA="${PROJECT_SOURCE_DIR}/Resources/mapdata"
          DRENCH_TEST_DATA="${CMAKE_CURRENT_SOURCE_DIR}/data"
          DRENCH_TEST_PICTURES="${CMAKE_CURRENT_SOURCE_DIR}/pictures")
add_dependencies(drench-tests resources)
if(DRENCH_TOOLS)
  file(GLOB tool_tests CONFIGURE_DEPENDS tools/*.cpp)
  target_sources(drench-tests PRIVATE ${tool_tests} ${PROJECT_SOURCE_DIR}/bench/Hands.cpp
                                      ${PROJECT_SOURCE_DIR}/tools/CheckReport.cpp)
  target_link_libraries(drench-tests PRIVATE nlohmann_json::nlohmann_json)
endif()

if(DRENCH_TOOLS)
  file(GLOB bot_tests CONFIGURE_DEPENDS bots/*.cpp)
  add_executable(drench-bot-tests ${bot_tests} ${room_on_a_manual_clock})
  target_link_libraries(drench-bot-tests PRIVATE drench-test-support drench-room drench-bot-parts
                                                 nlohmann_json::nlohmann_json)
  # PlayFloodTest.cpp stands in for it.
  target_link_options(drench-bot-tests PRIVATE -Wl,--wrap=recv)
  target_compile_definitions(drench-bot-tests
                             PRIVATE DRENCH_MAPDATA="${PROJECT_SOURCE_DIR}/Resources/mapdata"
                                     DRENCH_ARENAS="${PROJECT_SOURCE_DIR}/arenas")

  # Figures of how bots play, made on demand: cmake --build build/release --target drench-bot-figures
  add_executable(drench-bot-figures EXCLUDE_FROM_ALL figures/BotFigures.cpp bots/BotMatch.cpp
                                                     ${room_on_a_manual_clock})
  target_link_libraries(drench-bot-figures PRIVATE drench-test-support drench-room drench-bot-parts)

  # Figures of shots at what a window draws: cmake --build build/release --target drench-lead-figures
  add_executable(drench-lead-figures EXCLUDE_FROM_ALL figures/LeadFigures.cpp bots/BotMatch.cpp
                                                      ${room_on_a_manual_clock})
  target_link_libraries(drench-lead-figures PRIVATE drench-test-support drench-room drench-bot-parts)

  file(GLOB recording_tests CONFIGURE_DEPENDS client/recording/*.cpp)
  add_executable(drench-recording-tests ${recording_tests})
  target_link_libraries(drench-recording-tests PRIVATE drench-test-support drench-recording)

  file(GLOB replay_tests CONFIGURE_DEPENDS replay/*.cpp)
  add_executable(drench-replay-tests ${replay_tests})
  target_link_libraries(drench-replay-tests PRIVATE drench-test-support drench-replay-parts)
  target_compile_definitions(drench-replay-tests
                             PRIVATE DRENCH_TEST_DATA="${CMAKE_CURRENT_SOURCE_DIR}/data")

  file(GLOB lag_tests CONFIGURE_DEPENDS lag/*.cpp)
  add_executable(drench-lag-tests ${lag_tests})
  target_link_libraries(drench-lag-tests PRIVATE drench-test-support drench-lag-parts
                                                 nlohmann_json::nlohmann_json)
endif()

if(DRENCH_KEEPER)
  file(GLOB keeper_tests CONFIGURE_DEPENDS keeper/*.cpp)
  add_executable(drench-keeper-tests ${keeper_tests} support/SdkStandIn.cpp)
  target_link_libraries(drench-keeper-tests PRIVATE drench-test-support drench-keeper-parts
                                                    nlohmann_json::nlohmann_json PkgConfig::httplib)
endif()

if(DRENCH_WINDOW)
  file(GLOB window_tests CONFIGURE_DEPENDS game/*.cpp)
  add_executable(drench-play-tests ${window_tests} client/SessionLine.cpp
                                   ${PROJECT_SOURCE_DIR}/game/Autopilot.cpp)
  target_link_libraries(drench-play-tests PRIVATE drench-test-support drench-display drench-play
                                                  drench-bot-parts)
  target_compile_definitions(drench-play-tests
                             PRIVATE DRENCH_ARENAS="${PROJECT_SOURCE_DIR}/arenas"
                                     DRENCH_MAPDATA="${PROJECT_SOURCE_DIR}/Resources/mapdata")
endif()

add_executable(drench-timing-tests src/TimingTest.cpp)
target_link_libraries(drench-timing-tests PRIVATE drench-test-support)

gtest_discover_tests(drench-game-tests DISCOVERY_MODE PRE_TEST PROPERTIES TIMEOUT 120)
gtest_discover_tests(drench-tests DISCOVERY_MODE PRE_TEST PROPERTIES TIMEOUT 120)
if(DRENCH_TOOLS)
  gtest_discover_tests(drench-bot-tests DISCOVERY_MODE PRE_TEST PROPERTIES TIMEOUT 120)
  gtest_discover_tests(drench-recording-tests DISCOVERY_MODE PRE_TEST PROPERTIES TIMEOUT 120)
  gtest_discover_tests(drench-replay-tests DISCOVERY_MODE PRE_TEST PROPERTIES TIMEOUT 120)
  gtest_discover_tests(drench-lag-tests DISCOVERY_MODE PRE_TEST PROPERTIES TIMEOUT 120)
endif()
if(DRENCH_KEEPER)
  gtest_discover_tests(drench-keeper-tests DISCOVERY_MODE PRE_TEST PROPERTIES TIMEOUT 120)
endif()
if(DRENCH_WINDOW)
  gtest_discover_tests(drench-play-tests DISCOVERY_MODE PRE_TEST PROPERTIES TIMEOUT 120)
endif()
gtest_discover_tests(drench-timing-tests DISCOVERY_MODE PRE_TEST PROPERTIES TIMEOUT 120)

if(DRENCH_TOOLS)
  add_test(NAME VoxelEditor.ReadsAndWritesOurArenas
           COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/voxel-editor.sh $<TARGET_FILE:drench-map>)
  set_tests_properties(VoxelEditor.ReadsAndWritesOurArenas PROPERTIES SKIP_RETURN_CODE 77
                                                                      TIMEOUT 300)
endif()
