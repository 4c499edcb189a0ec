# SPDX-License-Identifier: MIT
# The package Passport: libraries, public headers, a CMake package, a pkg-config file, and what lies under share/.
# Each file belongs to a component, which is what somebody installs together: Library (what a host's program
# needs), Development, Tools, WebTool, Documentation.
include(CMakePackageConfigHelpers)

set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/Passport")
set(header_dir "${CMAKE_INSTALL_INCLUDEDIR}/libpassport")
set(data_dir "${CMAKE_INSTALL_DATADIR}/libpassport")

set(libraries passport)
if(PASSPORT_BUNDLED_NUBELO)
  list(APPEND libraries nubelo)
endif()
install(TARGETS ${libraries} EXPORT PassportTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT Library NAMELINK_COMPONENT Development
  INCLUDES DESTINATION ${header_dir})
install(EXPORT PassportTargets NAMESPACE Passport:: DESTINATION ${package_dir} COMPONENT Development)
if(TARGET passport_testing)
  install(TARGETS passport_testing EXPORT PassportTestingTargets
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT Development
    INCLUDES DESTINATION ${header_dir})
  install(EXPORT PassportTestingTargets NAMESPACE Passport:: DESTINATION ${package_dir} COMPONENT Development)
  install(FILES "${PROJECT_SOURCE_DIR}/testing/passport/testing/Emulator.h"
    DESTINATION ${header_dir}/passport/testing COMPONENT Development)
endif()

# What a host may not include ends in _p.h or lies in a folder of its own.
foreach(folder common config crypto hub passport)
  install(DIRECTORY "${PROJECT_SOURCE_DIR}/libpassport/${folder}" DESTINATION ${header_dir} COMPONENT Development
    FILES_MATCHING PATTERN "*.h"
    PATTERN "*_p.h" EXCLUDE
    PATTERN "cloud" EXCLUDE
    PATTERN "facade" EXCLUDE
    PATTERN "kernels" EXCLUDE)
endforeach()
if(PASSPORT_BUNDLED_NUBELO)
  install(DIRECTORY "${PROJECT_SOURCE_DIR}/libnubelo/nubelo" DESTINATION ${header_dir} COMPONENT Development
    FILES_MATCHING PATTERN "*.h" PATTERN "*_p.h" EXCLUDE)
endif()

install(FILES LICENSE THIRD-PARTY.md DESTINATION ${data_dir} COMPONENT Library)
install(FILES libpassport/errors.tsv DESTINATION ${data_dir} COMPONENT Development)
install(DIRECTORY examples/passport-dir DESTINATION ${data_dir} COMPONENT Development)
if(TARGET passport-emulator)
  install(FILES emulator/console/openapi.json DESTINATION ${data_dir} COMPONENT Tools OPTIONAL)
endif()

# The parts that PassportConfig.cmake and passport.pc lead to, relative to the prefix.
set(PASSPORT_EMULATOR_PATH "${CMAKE_INSTALL_BINDIR}/passport-emulator")
set(PASSPORT_CTL_PATH "${CMAKE_INSTALL_BINDIR}/passportctl")
set(PASSPORT_WEBTOOL_PATH "${CMAKE_INSTALL_BINDIR}/openweburl")
set(PASSPORT_WEBTOOL_TREE "${CMAKE_INSTALL_LIBEXECDIR}/libpassport/openweburl")
set(PASSPORT_DATA_PATH "${data_dir}")
configure_package_config_file(cmake/PassportConfig.cmake.in "${PROJECT_BINARY_DIR}/PassportConfig.cmake"
  INSTALL_DESTINATION ${package_dir}
  PATH_VARS PASSPORT_EMULATOR_PATH PASSPORT_CTL_PATH PASSPORT_WEBTOOL_PATH PASSPORT_WEBTOOL_TREE PASSPORT_DATA_PATH)
write_basic_package_version_file("${PROJECT_BINARY_DIR}/PassportConfigVersion.cmake"
  COMPATIBILITY SameMinorVersion)
install(FILES "${PROJECT_BINARY_DIR}/PassportConfig.cmake" "${PROJECT_BINARY_DIR}/PassportConfigVersion.cmake"
  DESTINATION ${package_dir} COMPONENT Development)

set(PASSPORT_PC_LIBS "-lpassport")
if(PASSPORT_BUNDLED_NUBELO)
  string(APPEND PASSPORT_PC_LIBS " -lnubelo")
endif()
# Relative, so that an installation can be moved.
file(RELATIVE_PATH PASSPORT_PC_PREFIX "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
string(REGEX REPLACE "/$" "" PASSPORT_PC_PREFIX "${PASSPORT_PC_PREFIX}")
configure_file(cmake/passport.pc.in "${PROJECT_BINARY_DIR}/passport.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/passport.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig"
  COMPONENT Development)

# Made by scripts/docs.
install(DIRECTORY "${PROJECT_BINARY_DIR}/docs/html" DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/libpassport"
  COMPONENT Documentation OPTIONAL)

if(PROJECT_IS_TOP_LEVEL)
  add_custom_target(uninstall
    COMMAND ${CMAKE_COMMAND} -D "MANIFEST=${PROJECT_BINARY_DIR}/install_manifest.txt"
      -P "${PROJECT_SOURCE_DIR}/cmake/PassportUninstall.cmake"
    COMMENT "Removing what was installed from here" VERBATIM)
  include(PassportPackages)
endif()
