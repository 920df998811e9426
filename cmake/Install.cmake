# What is installed, by component: module (the plug-in), drivers, ssh_driver (the one that needs libssh), devhost, kit (what
# drivers are built with), docs, and symbols (the debug symbols of a product's build). The installed tree may be moved.
# debian/rules makes a package of each component.

include(CMakePackageConfigHelpers)
set(KIT_CMAKE_DIR "${CMAKE_INSTALL_LIBDIR}/cmake/snmp-driver-kit")
set(KIT_DOC_DIR "${CMAKE_INSTALL_DATADIR}/doc/snmp-configuration-agent")
set(KIT_INCLUDE_DIR "${CMAKE_INSTALL_INCLUDEDIR}/snmp-driver-kit")

install(TARGETS snmp_configuration_agent LIBRARY DESTINATION "${AGENT_MODULE_DIR}" COMPONENT module)
install(FILES README.md CHANGELOG.md DESTINATION "${KIT_DOC_DIR}" COMPONENT docs)
install(DIRECTORY contract DESTINATION "${KIT_DOC_DIR}" COMPONENT docs)
install(DIRECTORY docs DESTINATION "${KIT_DOC_DIR}" COMPONENT docs PATTERN man EXCLUDE)

if(AGENT_PRODUCT)
  install(FILES "$<TARGET_FILE:snmp_configuration_agent>.debug" DESTINATION "${AGENT_MODULE_DIR}" COMPONENT symbols)
  return()
endif()

install(DIRECTORY host DESTINATION "${KIT_INCLUDE_DIR}" COMPONENT kit FILES_MATCHING PATTERN "*.h")
install(DIRECTORY drivers/common DESTINATION "${KIT_INCLUDE_DIR}/drivers" COMPONENT kit FILES_MATCHING PATTERN "*.h")
install(FILES agent/ISNMPConfigurationAgent.h DESTINATION "${KIT_INCLUDE_DIR}/agent" COMPONENT kit)
install(FILES device/TrapTarget.h DESTINATION "${KIT_INCLUDE_DIR}/device" COMPONENT kit)
install(DIRECTORY examples DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/snmp-driver-kit-dev" COMPONENT kit)
install(TARGETS host driver_common EXPORT snmp-driver-kit ARCHIVE COMPONENT kit)
install(EXPORT snmp-driver-kit DESTINATION "${KIT_CMAKE_DIR}" NAMESPACE snmp-driver-kit:: FILE snmp-driver-kit-targets.cmake
        COMPONENT kit)

configure_package_config_file(kit/snmp-driver-kit-config.cmake.in "${PROJECT_BINARY_DIR}/kit/snmp-driver-kit-config.cmake"
                              INSTALL_DESTINATION "${KIT_CMAKE_DIR}" PATH_VARS AGENT_MODULE_DIR
                              NO_CHECK_REQUIRED_COMPONENTS_MACRO NO_SET_AND_CHECK_MACRO)
configure_file(kit/snmp-driver-kit-config-version.cmake.in "${PROJECT_BINARY_DIR}/kit/snmp-driver-kit-config-version.cmake"
               @ONLY)
file(RELATIVE_PATH KIT_PREFIX_FROM_PC "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" /)
string(REGEX REPLACE "/$" "" KIT_PREFIX_FROM_PC "${KIT_PREFIX_FROM_PC}")
configure_file(kit/snmp-driver-kit.pc.in "${PROJECT_BINARY_DIR}/kit/snmp-driver-kit.pc" @ONLY)
install(FILES kit/snmp_driver.cmake kit/driver_module.map kit/ModuleNote.cpp
              "${PROJECT_BINARY_DIR}/kit/snmp-driver-kit-config.cmake"
              "${PROJECT_BINARY_DIR}/kit/snmp-driver-kit-config-version.cmake"
        DESTINATION "${KIT_CMAKE_DIR}" COMPONENT kit)
install(FILES "${PROJECT_BINARY_DIR}/kit/snmp-driver-kit.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig" COMPONENT kit)

if(AGENT_DRIVERS)
  install(TARGETS simulated_device local_snmpd host_probe LIBRARY DESTINATION "${AGENT_MODULE_DIR}" COMPONENT drivers)
  if(AGENT_SSH_DRIVER)
    install(TARGETS ssh_snmpd LIBRARY DESTINATION "${AGENT_MODULE_DIR}" COMPONENT ssh_driver)
  endif()
endif()
if(AGENT_DEVHOST)
  install(TARGETS devhost EXPORT snmp-driver-kit-devhost RUNTIME COMPONENT devhost)
  install(TARGETS devhost_library LIBRARY DESTINATION "${AGENT_MODULE_DIR}" COMPONENT devhost)
  install(EXPORT snmp-driver-kit-devhost DESTINATION "${KIT_CMAKE_DIR}" NAMESPACE snmp-driver-kit:: COMPONENT devhost)
  install(FILES devhost/commands/shells/devhost.bash DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions"
          RENAME devhost COMPONENT devhost)
  install(FILES devhost/commands/shells/devhost.zsh DESTINATION "${CMAKE_INSTALL_DATADIR}/zsh/site-functions"
          RENAME _devhost COMPONENT devhost)
  install(FILES devhost/commands/shells/devhost.fish DESTINATION "${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d"
          COMPONENT devhost)
  install(FILES docs/man/devhost.1 DESTINATION "${CMAKE_INSTALL_MANDIR}/man1" COMPONENT devhost)
endif()
