# snmp_driver(NAME SOURCES...): a device driver, a module that a driver host loads. It exports its factory and nothing else;
# the symbols of the host are resolved when it is loaded. It holds a note with its version, which is the version of the
# project around it, and with the contract number. Its sources see the version as SNMP_DRIVER_VERSION.
function(snmp_driver name)
  if("${ARGN}" STREQUAL "")
    message(FATAL_ERROR "snmp_driver(${name}) has no sources; allowed: snmp_driver(NAME SOURCES...)")
  endif()
  if("${PROJECT_VERSION}" STREQUAL "")
    message(FATAL_ERROR "snmp_driver(${name}): the project \"${PROJECT_NAME}\" has no version, and a driver needs one; write "
                        "project(${PROJECT_NAME} VERSION 1.0.0 LANGUAGES CXX)")
  endif()
  set(map "${CMAKE_CURRENT_FUNCTION_LIST_DIR}/driver_module.map")
  add_library(${name} MODULE ${ARGN} "${CMAKE_CURRENT_FUNCTION_LIST_DIR}/ModuleNote.cpp")
  target_compile_definitions(${name} PRIVATE SNMP_DRIVER_VERSION="${PROJECT_VERSION}")
  target_link_libraries(${name} PRIVATE snmp-driver-kit::host)
  target_link_options(${name} PRIVATE "-Wl,--version-script=${map}" -Wl,-z,now)
  set_target_properties(${name} PROPERTIES PREFIX "" SUFFIX ".so" CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON
                        LINK_DEPENDS "${map}")
endfunction()
