# Warnings, sanitizers and the linker, for everything that is built here.
add_library(ondrel_options INTERFACE)
target_compile_options(ondrel_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual)
if(ONDREL_WERROR)
  target_compile_options(ondrel_options INTERFACE -Werror)
endif()
if(ONDREL_SANITIZE)
  target_compile_options(ondrel_options INTERFACE -fsanitize=${ONDREL_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=undefined
    -fsanitize-ignorelist=${CMAKE_CURRENT_LIST_DIR}/sanitize/ignored.txt)
  target_link_options(ondrel_options INTERFACE -fsanitize=${ONDREL_SANITIZE})
  if(ONDREL_SANITIZE MATCHES "address")
    add_library(ondrel_leaks_of_loading OBJECT ${CMAKE_CURRENT_LIST_DIR}/sanitize/leaksOfLoading.cpp)
    target_link_libraries(ondrel_options INTERFACE $<TARGET_OBJECTS:ondrel_leaks_of_loading>)
  endif()
endif()
if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
  target_link_options(ondrel_options INTERFACE -fuse-ld=lld)
endif()

# What is installed shows mail of strangers: hardened like everything that faces the network.
include(CheckPIESupported)
check_pie_supported()
add_compile_options("$<$<CONFIG:Release>:-fstack-protector-strong;-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>")
add_link_options("$<$<CONFIG:Release>:LINKER:-z,relro;LINKER:-z,now>")

# One static library for one folder of src/, called ondrel_<name>:
#
#   ondrel_library(web USES base async platform LINKS fmt::fmt)
#
# USES names the folders whose headers it may include, LINKS the outside libraries. An include is always
# written "folder/Header.h". The headers of a folder are reachable through a directory of links of its own,
# and only for those that name the folder in USES: an include that the layers forbid does not compile.
function(ondrel_library name)
  cmake_parse_arguments(ARG "" "PATH" "USES;LINKS;SOURCES" ${ARGN})
  if(NOT ARG_PATH)
    set(ARG_PATH ${name})
  endif()
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
  file(GLOB headers CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.h)
  list(APPEND sources ${ARG_SOURCES})

  string(REPLACE "/" "_" target ondrel_${name})
  set(root ${CMAKE_BINARY_DIR}/include/${target})
  file(MAKE_DIRECTORY ${root}/${ARG_PATH})
  foreach(header IN LISTS headers)
    get_filename_component(file ${header} NAME)
    file(CREATE_LINK ${header} ${root}/${ARG_PATH}/${file} SYMBOLIC)
  endforeach()

  if(sources)
    set(scope PUBLIC)
    add_library(${target} STATIC ${sources} ${headers})
  else()
    set(scope INTERFACE)
    add_library(${target} INTERFACE)
  endif()
  target_include_directories(${target} ${scope} ${root})
  target_link_libraries(${target} ${scope} ondrel_options ${ARG_LINKS})
  foreach(used IN LISTS ARG_USES)
    string(REPLACE "/" "_" used_target ondrel_${used})
    target_link_libraries(${target} ${scope} ${used_target})
  endforeach()
endfunction()
