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

# snmp_driver_conform(NAME [PROFILE FILE] [LEVEL basic|full] [STRICT]): a test, NAME_conform, in which devhost judges the driver
# by its contract; with STRICT, warnings fail, too. The report for JUnit is NAME_conform.xml in the folder of the build.
# "devhost conform --help" describes all of it. A driver for another processor is judged by a devhost for that processor, under
# CMAKE_CROSSCOMPILING_EMULATOR where that is set.
function(snmp_driver_conform name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "STRICT" "PROFILE;LEVEL" "")
  if(arg_UNPARSED_ARGUMENTS OR arg_KEYWORDS_MISSING_VALUES OR NOT TARGET ${name})
    message(FATAL_ERROR "snmp_driver_conform(${name} ${ARGN}) is wrong; allowed: snmp_driver_conform(NAME [PROFILE FILE] "
                        "[LEVEL basic|full] [STRICT]) with the name of a driver")
  endif()
  if(NOT TARGET snmp-driver-kit::devhost)
    message(FATAL_ERROR "snmp_driver_conform(${name}) needs the program devhost; write find_package(snmp-driver-kit 1.0 "
                        "REQUIRED COMPONENTS devhost)")
  endif()
  set(options "")
  if(arg_PROFILE)
    cmake_path(ABSOLUTE_PATH arg_PROFILE BASE_DIRECTORY "${CMAKE_CURRENT_SOURCE_DIR}")
    set(options --profile "${arg_PROFILE}")
  endif()
  if(arg_LEVEL)
    list(APPEND options --level ${arg_LEVEL})
  endif()
  if(arg_STRICT)
    list(APPEND options --strict)
  endif()
  # ctest starts devhost by the emulator, and devhost itself for each check.
  if(CMAKE_CROSSCOMPILING AND CMAKE_CROSSCOMPILING_EMULATOR)
    list(JOIN CMAKE_CROSSCOMPILING_EMULATOR " " runner)
    list(APPEND options --runner "${runner}")
  endif()
  add_test(NAME ${name}_conform COMMAND snmp-driver-kit::devhost conform ${options} --format junit
                                        --output "${CMAKE_CURRENT_BINARY_DIR}/${name}_conform.xml" $<TARGET_FILE:${name}>)
  set_tests_properties(${name}_conform PROPERTIES LABELS conform TIMEOUT 600)
endfunction()
