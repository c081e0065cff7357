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

if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # In KiB. A tenth of GCC's time goes into looking for memory to free, of which a compilation needs less.
  add_compile_options(--param=ggc-min-heapsize=1048576)
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

# Off, each source is compiled by itself: that compiles less again after a change, and finds what a source fails to
# include.
option(QUILLMAR_TOGETHER "Compile several sources of a target at once, where no program leaves any of them out" ON)

add_library(quillmar_options INTERFACE)
target_compile_options(quillmar_options INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Werror)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # GCC 12 reports false positives: the first two in libstdc++ after inlining std::variant and std::string, the last
  # where it takes a source that is compiled with others for a header.
  target_compile_options(quillmar_options INTERFACE -Wno-maybe-uninitialized -Wno-restrict -Wno-subobject-linkage)
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

# Most of the time goes into headers, which the sources of a target share.
function(quillmar_compile_together name)
  if(QUILLMAR_TOGETHER)
    set_target_properties(${name} PROPERTIES UNITY_BUILD ON)
  endif()
endfunction()

# Tests take longer to compile than to run. The code under test is compiled as it ships.
function(quillmar_compile_as_test name)
  if(CMAKE_BUILD_TYPE STREQUAL "RelWithDebInfo" AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # -Og inlines most of what headers define, which costs less than to compile it. The passes that are left out cost
    # more than they save. The debug preset and the sanitizers have the line numbers.
    target_compile_options(${name} PRIVATE -Og -g0 -fno-forward-propagate -fno-cprop-registers -fno-tree-ccp -fno-tree-fre)
  else()
    target_compile_options(${name} PRIVATE -O0 -g1)
  endif()
  if(QUILLMAR_IS_HARDENED)
    # Nobody attacks a test. SHELL, because CMake drops an option that it has seen before.
    target_compile_options(${name} PRIVATE -fno-stack-protector -fno-stack-clash-protection -fcf-protection=none SHELL:-U_FORTIFY_SOURCE)
  endif()
endfunction()

# Optimised less, because what is not shipped takes longer to compile than to run. Not where it is measured or fuzzed.
function(quillmar_compile_as_tool name)
  if(NOT QUILLMAR_BENCH AND NOT QUILLMAR_FUZZ)
    target_compile_options(${name} PRIVATE $<$<CONFIG:RelWithDebInfo>:-O1>)
  endif()
endfunction()

# A static library from one folder: quillmar_library(NAME [TOGETHER] SOURCES … WINDOW_SOURCES … LINK … PRIVATE_LINK …).
# Of sources that are compiled together the linker takes all or none, and a program then loads every library that any of
# them needs. So WINDOW_SOURCES, which the agent does without, are kept apart from the others.
function(quillmar_library name)
  cmake_parse_arguments(arg "TOGETHER" "" "SOURCES;WINDOW_SOURCES;LINK;PRIVATE_LINK" ${ARGN})
  add_library(${name} STATIC ${arg_SOURCES} ${arg_WINDOW_SOURCES})
  target_include_directories(${name} PUBLIC ${CMAKE_SOURCE_DIR})
  target_link_libraries(${name} PUBLIC ${arg_LINK} PRIVATE ${arg_PRIVATE_LINK} quillmar_options)
  if(arg_TOGETHER)
    quillmar_compile_together(${name})
    if(arg_WINDOW_SOURCES)
      set_source_files_properties(${arg_SOURCES} PROPERTIES UNITY_GROUP all)
      set_source_files_properties(${arg_WINDOW_SOURCES} PROPERTIES UNITY_GROUP window)
      set_target_properties(${name} PROPERTIES UNITY_BUILD_MODE GROUP)
    endif()
  endif()
endfunction()
