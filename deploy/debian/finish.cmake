# Run by cpack between staging and packing: what Debian wants of every package and nobody else needs.
# Each folder of the staging area is one package and has its name.
file(GLOB packages ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/*)
foreach(package IN LISTS packages)
  cmake_path(GET package FILENAME name)
  set(share ${package}/usr/share)
  set(for_all_to_read FILE_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
  file(COPY ${CMAKE_CURRENT_LIST_DIR}/copyright ${CMAKE_CURRENT_LIST_DIR}/changelog
       DESTINATION ${share}/doc/${name} ${for_all_to_read})
  # Each of them with its reason.
  set(overrides ${CMAKE_CURRENT_LIST_DIR}/${name}.lintian-overrides)
  if(EXISTS ${overrides})
    file(COPY ${overrides} DESTINATION ${share}/lintian/overrides ${for_all_to_read})
    file(RENAME ${share}/lintian/overrides/${name}.lintian-overrides ${share}/lintian/overrides/${name})
  endif()
  # Without the time of packing, so that the same sources give the same package.
  file(GLOB pages ${share}/man/man*/*)
  execute_process(COMMAND gzip -9n ${share}/doc/${name}/changelog ${pages} COMMAND_ERROR_IS_FATAL ANY)
  # Whatever mask the builder has.
  file(CHMOD_RECURSE ${package} DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE
       GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
endforeach()
