# Warnings, sanitizers and the three kinds of target that the rooms use.

find_package(Boost 1.74 REQUIRED)
include("${PROJECT_SOURCE_DIR}/kit/snmp_driver.cmake")

add_library(project_warnings INTERFACE)
target_compile_options(project_warnings INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wold-style-cast
                       -Wnon-virtual-dtor -Woverloaded-virtual)
# As part of another project, a compiler that warns of more than ours must not stop the build.
if(PROJECT_IS_TOP_LEVEL)
  target_compile_options(project_warnings INTERFACE -Werror)
endif()

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

# driver_module(NAME SOURCES...): a driver, as authors of drivers make it, with the warnings of this project.
function(driver_module name)
  snmp_driver(${name} ${ARGN})
  target_link_libraries(${name} PRIVATE project_warnings)
endfunction()
