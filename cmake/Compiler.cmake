# One place for language level, warnings and sanitizers: `vantorium_target(name)` applies them.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

if(PROJECT_IS_TOP_LEVEL)  # an application that adds this folder has its own mind
  find_program(VANTORIUM_CCACHE ccache)
  if(VANTORIUM_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${VANTORIUM_CCACHE})
    set(CMAKE_C_COMPILER_LAUNCHER ${VANTORIUM_CCACHE})
  endif()
endif()

if(VANTORIUM_SANITIZE)
  add_compile_options(-fsanitize=${VANTORIUM_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${VANTORIUM_SANITIZE})
endif()

# The libraries tell the fuzzer which lines an input reached; only its targets get its main function.
if(VANTORIUM_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()

function(vantorium_target name)
  # What ships reads what strangers send.
  target_compile_options(${name} PRIVATE
    "$<$<CONFIG:Release>:-fstack-protector-strong;-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>")
  target_link_options(${name} PRIVATE "$<$<CONFIG:Release>:-Wl,-z,relro,-z,now>")
  target_compile_options(${name} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual)
  if(CMAKE_CXX_COMPILER_ID MATCHES Clang)
    target_compile_options(${name} PRIVATE -Wthread-safety)
  elseif(CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    # Optimising, g++ 12 sees copies that overlap in std::string where there are none: its bug 105329.
    target_compile_options(${name} PRIVATE -Wno-restrict)
  endif()
  if(VANTORIUM_WERROR)
    target_compile_options(${name} PRIVATE -Werror)
  endif()
endfunction()
