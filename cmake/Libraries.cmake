# The libraries: each is compiled once and made from the same objects as an archive and as a shared library. In this
# build vantorium::<component> is the archive unless BUILD_SHARED_LIBS asks for the other; an installed package has both.
include(GNUInstallDirs)
configure_file(${CMAKE_CURRENT_LIST_DIR}/version.h.in ${PROJECT_BINARY_DIR}/include/vantorium/version.h @ONLY)
configure_file(${CMAKE_CURRENT_LIST_DIR}/exports.map.in ${PROJECT_BINARY_DIR}/exports.map @ONLY)

# vantorium_library(<component> OUTPUT <file name> SOURCES <files> [INCLUDES <folders>]
#                   [PUBLIC <libraries>] [PRIVATE <libraries>] [HEADERS <libraries>])
# Makes vantorium_<component> (archive), vantorium_<component>_shared and vantorium::<component>. PUBLIC names the
# components of ours and the libraries that our headers show, PRIVATE what else is linked, HEADERS what is only
# compiled in: an archive's user needs the first two.
function(vantorium_library component)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "OUTPUT" "SOURCES;INCLUDES;PUBLIC;PRIVATE;HEADERS")
  set(name vantorium_${component})

  add_library(${name}_objects OBJECT ${arg_SOURCES})
  vantorium_target(${name}_objects)
  vantorium_public_headers(${name}_objects)
  set_target_properties(${name}_objects PROPERTIES POSITION_INDEPENDENT_CODE ON CXX_VISIBILITY_PRESET hidden
                        C_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
  target_include_directories(${name}_objects PRIVATE ${arg_INCLUDES})
  # What ships is for size: it halves the library, whose time goes into the network, the disk and ISA-L. Without LTO,
  # for an archive of it would only be read by the compiler that made it.
  target_compile_options(${name}_objects PRIVATE -ffunction-sections -fdata-sections $<$<CONFIG:Release>:-Os>)
  target_link_libraries(${name}_objects PRIVATE ${arg_PUBLIC} ${arg_PRIVATE} ${arg_HEADERS})

  add_library(${name} STATIC $<TARGET_OBJECTS:${name}_objects>)
  add_library(${name}_shared SHARED $<TARGET_OBJECTS:${name}_objects>)
  vantorium_link_shared(${name}_shared)
  foreach(library IN ITEMS ${name} ${name}_shared)
    vantorium_public_headers(${library})
    set_target_properties(${library} PROPERTIES OUTPUT_NAME ${arg_OUTPUT} EXPORT_NAME ${component} LINKER_LANGUAGE CXX)
    target_link_libraries(${library} PRIVATE ${arg_PRIVATE})
  endforeach()
  target_link_libraries(${name} PUBLIC ${arg_PUBLIC})
  list(TRANSFORM arg_PUBLIC REPLACE "^vantorium_.*" "\\0_shared")
  target_link_libraries(${name}_shared PUBLIC ${arg_PUBLIC})

  if(BUILD_SHARED_LIBS)
    add_library(vantorium::${component} ALIAS ${name}_shared)
    set(other ${name})
  else()
    add_library(vantorium::${component} ALIAS ${name})
    set(other ${name}_shared)
  endif()
  if(NOT PROJECT_IS_TOP_LEVEL)
    set_target_properties(${other} PROPERTIES EXCLUDE_FROM_ALL ON)
  endif()
endfunction()

function(vantorium_public_headers target)
  target_compile_features(${target} PUBLIC cxx_std_20)
  target_include_directories(${target} PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
                             $<BUILD_INTERFACE:${PROJECT_BINARY_DIR}/include>
                             $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
endfunction()

# Shows what is marked for it and nothing else, needs what it calls and nothing else, and stays loaded once it is: its
# worker threads would otherwise run in code that a dlclose took away.
function(vantorium_link_shared target)
  set(exports ${PROJECT_BINARY_DIR}/exports.map)
  set_target_properties(${target} PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}
                        LINK_DEPENDS ${exports})
  target_link_options(${target} PRIVATE -Wl,--version-script=${exports} -Wl,--as-needed -Wl,--gc-sections
                      -Wl,-z,nodelete -Wl,-z,relro -Wl,-z,now)
  if(NOT VANTORIUM_SANITIZE)
    target_link_options(${target} PRIVATE -Wl,--no-undefined)  # a sanitizer's runtime comes with the program
  endif()
endfunction()
