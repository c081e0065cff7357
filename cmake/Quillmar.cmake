# Language, warnings and sanitizers, for every target of the tree.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

find_program(CCACHE ccache)
if(CCACHE)
  # Paths below the source folder count as relative, so that a second checkout finds what the first one compiled. As a
  # rule's launcher it stays out of compile_commands.json, whose readers would take it for the compiler.
  set_property(GLOBAL PROPERTY RULE_LAUNCH_COMPILE
               "${CMAKE_COMMAND} -E env CCACHE_BASEDIR=${CMAKE_SOURCE_DIR} CCACHE_NOHASHDIR=1 ${CCACHE}")
endif()
find_program(MOLD mold)
if(MOLD)
  add_link_options(-fuse-ld=mold)
endif()

# A program holds only the functions and loads only the libraries that it uses.
add_compile_options(-ffunction-sections -fdata-sections)
add_link_options(-Wl,--gc-sections,--as-needed)

add_library(quillmar_options INTERFACE)
target_compile_options(quillmar_options INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Werror)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # GCC 12 reports false positives of these two inside libstdc++ when it inlines std::variant and std::string.
  target_compile_options(quillmar_options INTERFACE -Wno-maybe-uninitialized -Wno-restrict)
  if(CMAKE_UNITY_BUILD)
    # A source that another one includes looks like a header to it.
    target_compile_options(quillmar_options INTERFACE -Wno-subobject-linkage)
  endif()
endif()
if(QUILLMAR_SANITIZE)
  add_compile_options(-fsanitize=${QUILLMAR_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${QUILLMAR_SANITIZE})
endif()
if(QUILLMAR_SANITIZE MATCHES "thread")
  # ThreadSanitizer knows no fences, and Asio needs none: its queues are guarded by mutexes.
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

# A static library of one folder: quillmar_library(NAME SOURCES … LINK … PRIVATE_LINK …).
function(quillmar_library name)
  cmake_parse_arguments(arg "" "" "SOURCES;LINK;PRIVATE_LINK" ${ARGN})
  add_library(${name} STATIC ${arg_SOURCES})
  target_include_directories(${name} PUBLIC ${CMAKE_SOURCE_DIR})
  target_link_libraries(${name} PUBLIC ${arg_LINK} PRIVATE ${arg_PRIVATE_LINK} quillmar_options)
endfunction()
