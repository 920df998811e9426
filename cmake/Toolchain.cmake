# Warnings, sanitizers and the three kinds of target that the rooms use.

find_package(Boost 1.74 REQUIRED)

add_library(project_warnings INTERFACE)
target_compile_options(project_warnings INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wold-style-cast
                       -Wnon-virtual-dtor -Woverloaded-virtual -Werror)

# Needed for files of more than 2 GB and for large inode numbers on systems where long has 32 bits.
add_compile_definitions(_FILE_OFFSET_BITS=64)

if(AGENT_SANITIZE)
  add_compile_options(-fsanitize=${AGENT_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${AGENT_SANITIZE})
endif()
if(AGENT_HARDENED_STL)
  add_compile_definitions(_GLIBCXX_DEBUG _GLIBCXX_DEBUG_PEDANTIC)
endif()
if(AGENT_COVERAGE)
  add_compile_options(--coverage)
  add_link_options(--coverage)
endif()

# plugin_room(NAME SOURCES...): one room of the plug-in. C++14 is the last standard with std::auto_ptr.
function(plugin_room name)
  add_library(${name} OBJECT ${ARGN})
  target_link_libraries(${name} PRIVATE project_warnings PUBLIC host)
  set_target_properties(${name} PROPERTIES CXX_STANDARD 14 CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
endfunction()

# driver_module(NAME SOURCES...): a module that a driver host loads. It exports its factory and nothing else. The symbols of
# the host are resolved when it is loaded.
function(driver_module name)
  add_library(${name} MODULE ${ARGN})
  set_target_properties(${name} PROPERTIES PREFIX "" SUFFIX ".so" CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON
                        LINK_DEPENDS "${CMAKE_SOURCE_DIR}/cmake/driver_module.map")
  target_link_libraries(${name} PRIVATE project_warnings host)
  target_link_options(${name} PRIVATE "-Wl,--version-script=${CMAKE_SOURCE_DIR}/cmake/driver_module.map" -Wl,-z,now)
endfunction()
