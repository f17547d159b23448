# The libraries as others build on them: find_package(drench), or add_subdirectory(), gives
# drench::game and drench::client.

# Others include <drench/client/Session.h> and <drench/game/Player.h>. In this tree the same headers
# are named from its root, where a name of somebody else's might be found first: what is published
# are copies that name each other below drench/.
function(publish_headers room folder)
  file(GLOB headers CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/${folder}/*.h)
  # The game's headers name this one; the room's own stays at home.
  list(REMOVE_ITEM headers ${PROJECT_SOURCE_DIR}/src/Server.h)
  foreach(header IN LISTS headers)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${header})
    file(READ ${header} text)
    string(REGEX REPLACE "#include \"client/([^\"]+)\"" "#include \"drench/client/\\1\"" text "${text}")
    string(REGEX REPLACE "#include \"src/([^\"]+)\"" "#include \"drench/game/\\1\"" text "${text}")
    cmake_path(GET header FILENAME name)
    file(GENERATE OUTPUT ${PROJECT_BINARY_DIR}/include/drench/${room}/${name} CONTENT "${text}")
  endforeach()
  set_target_properties(drench-${room} PROPERTIES EXPORT_NAME ${room})
  target_include_directories(drench-${room} INTERFACE $<BUILD_INTERFACE:${PROJECT_BINARY_DIR}/include>
                                                      $<INSTALL_INTERFACE:include>)
  target_compile_features(drench-${room} PUBLIC cxx_std_20)
  add_library(drench::${room} ALIAS drench-${room})
endfunction()

publish_headers(game src)
publish_headers(client client)
# Who predicts must round like the room, in the headers' functions too.
target_compile_options(drench-game INTERFACE -ffp-contract=off)
