# Tests of the house itself: which room may include and link which.

add_test(NAME House.ArrowsBetweenRoomsAreThoseOfTheTable
         COMMAND ${PROJECT_SOURCE_DIR}/.ci/check-arrows.sh)
add_test(NAME House.CheckOfArrowsRefusesEachWayToBreakThem
         COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/house/arrows.sh ${PROJECT_SOURCE_DIR})
set_tests_properties(House.CheckOfArrowsRefusesEachWayToBreakThem PROPERTIES SKIP_RETURN_CODE 77)

# What only the server does is linked with no other room: a program that calls it fails to link there,
# for want of that very function, and links with the server's own library.
foreach(call ServerCall SocketCall)
  set(function_of_ServerCall "Server::update")
  set(function_of_SocketCall "SocketInfo::init")
  foreach(room room game client recording arena picture replay-parts bot-parts lag-parts play render ui)
    if(NOT TARGET drench-${room})
      continue()
    endif()
    set(target drench-${call}-from-${room})
    add_executable(${target} EXCLUDE_FROM_ALL house/${call}.cpp)
    target_link_libraries(${target} PRIVATE drench-${room})
    set(test House.${call}.LinksOnlyWithTheRoom.${room})
    add_test(NAME ${test} COMMAND ${CMAKE_COMMAND} -E env LC_ALL=C ${CMAKE_COMMAND} --build
                                  ${PROJECT_BINARY_DIR} --target ${target})
    # One at a time, since they share a build tree.
    set_tests_properties(${test} PROPERTIES RESOURCE_LOCK build-tree TIMEOUT 300)
    if(NOT room STREQUAL "room")
      set_tests_properties(${test} PROPERTIES PASS_REGULAR_EXPRESSION
                                              "undefined (reference to|symbol:) .?${function_of_${call}}")
    endif()
  endforeach()
endforeach()
