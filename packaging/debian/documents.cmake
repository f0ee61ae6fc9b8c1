# Run by CPack before it makes the packages: what Debian wants in each of them and a plain installation does not need.
cmake_minimum_required(VERSION 3.25)
find_program(GZIP gzip REQUIRED)

foreach(package IN LISTS CPACK_COMPONENTS_ALL)
  set(root ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/${package})
  set(documents ${root}/usr/share/doc/${package})
  configure_file(${CMAKE_CURRENT_LIST_DIR}/copyright ${documents}/copyright COPYONLY)
  configure_file(${CPACK_VANTORIUM_BUILD}/packaging/debian-changelog ${documents}/changelog.Debian COPYONLY)
  execute_process(COMMAND ${GZIP} -9n -f ${documents}/changelog.Debian COMMAND_ERROR_IS_FATAL ANY)
  file(CHMOD ${documents}/changelog.Debian.gz ${documents}/copyright
    PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)

  file(GLOB manuals ${root}/usr/share/man/man1/*.1)
  if(manuals)
    execute_process(COMMAND ${GZIP} -9n -f ${manuals} COMMAND_ERROR_IS_FATAL ANY)
  endif()

  # The system's folder is where libraries are looked for anyway.
  file(GLOB_RECURSE libraries ${root}/usr/lib/*.so.*)
  foreach(library IN LISTS libraries)
    if(NOT IS_SYMLINK ${library})
      file(RPATH_REMOVE FILE ${library})
    endif()
  endforeach()
endforeach()
