# The language, the warnings and the sanitizers of all targets.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

find_program(CCACHE ccache)
if(CCACHE)
  # Paths in the source folder are cached as relative, so that a second checkout gets cache hits. A rule
  # launcher, unlike a compiler launcher, stays out of compile_commands.json, whose readers would take it for
  # the compiler.
  set_property(GLOBAL PROPERTY RULE_LAUNCH_COMPILE
               "${CMAKE_COMMAND} -E env CCACHE_BASEDIR=${CMAKE_SOURCE_DIR} CCACHE_NOHASHDIR=1 ${CCACHE}")
endif()
find_program(MOLD mold)
if(MOLD)
  add_link_options(-fuse-ld=mold)
endif()

# Drops unused functions and libraries.
add_compile_options(-ffunction-sections -fdata-sections)
add_link_options(-Wl,--gc-sections,--as-needed)

# Only for shipped builds: the sanitizers and the fuzzer have their own checks.
option(QUILLMAR_HARDEN "Have the compiler and the linker guard a build that is optimized" ON)
set(QUILLMAR_IS_HARDENED OFF)
if(QUILLMAR_HARDEN AND CMAKE_BUILD_TYPE MATCHES "^(Release|RelWithDebInfo|MinSizeRel)$" AND NOT QUILLMAR_SANITIZE AND NOT QUILLMAR_FUZZ)
  set(QUILLMAR_IS_HARDENED ON)
endif()
if(QUILLMAR_IS_HARDENED)
  include(CheckCXXCompilerFlag)
  include(CheckPIESupported)
  check_pie_supported()
  foreach(flag -fstack-protector-strong -fstack-clash-protection -fcf-protection)
    string(MAKE_C_IDENTIFIER "QUILLMAR_HAS${flag}" known)
    check_cxx_compiler_flag(${flag} ${known})
    if(${known})
      add_compile_options(${flag})
    endif()
  endforeach()
  set(fortification 3)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 12)
    set(fortification 2)
  endif()
  add_compile_options(-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=${fortification})
  add_link_options(-Wl,-z,relro,-z,now)
endif()

add_library(quillmar_options INTERFACE)
target_compile_options(quillmar_options INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Werror)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # GCC 12 reports false positives of these two in libstdc++ after inlining std::variant and std::string.
  target_compile_options(quillmar_options INTERFACE -Wno-maybe-uninitialized -Wno-restrict)
  if(CMAKE_UNITY_BUILD)
    # GCC takes an included source for a header.
    target_compile_options(quillmar_options INTERFACE -Wno-subobject-linkage)
  endif()
endif()
if(QUILLMAR_SANITIZE)
  add_compile_options(-fsanitize=${QUILLMAR_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${QUILLMAR_SANITIZE})
endif()
if(QUILLMAR_SANITIZE MATCHES "thread")
  # ThreadSanitizer doesn't support fences. Asio doesn't need them: its queues are guarded by mutexes.
  add_compile_definitions(BOOST_ASIO_DISABLE_FENCED_BLOCK)
endif()
if(QUILLMAR_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link,address,undefined -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=address,undefined)
endif()
if(QUILLMAR_COVERAGE)
  add_compile_options(--coverage)
  add_link_options(--coverage)
endif()

# A static library from one folder: quillmar_library(NAME SOURCES … LINK … PRIVATE_LINK …).
function(quillmar_library name)
  cmake_parse_arguments(arg "" "" "SOURCES;LINK;PRIVATE_LINK" ${ARGN})
  add_library(${name} STATIC ${arg_SOURCES})
  target_include_directories(${name} PUBLIC ${CMAKE_SOURCE_DIR})
  target_link_libraries(${name} PUBLIC ${arg_LINK} PRIVATE ${arg_PRIVATE_LINK} quillmar_options)
endfunction()
