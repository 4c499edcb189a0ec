# The package Passport: libraries, public headers, a CMake package and a pkg-config file.
include(CMakePackageConfigHelpers)

set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/Passport")
set(header_dir "${CMAKE_INSTALL_INCLUDEDIR}/libpassport")

set(libraries passport)
if(PASSPORT_BUNDLED_NUBELO)
  list(APPEND libraries nubelo)
endif()
if(TARGET passport_testing)
  list(APPEND libraries passport_testing)
  install(FILES "${PROJECT_SOURCE_DIR}/testing/passport/testing/Emulator.h"
    DESTINATION ${header_dir}/passport/testing)
endif()
install(TARGETS ${libraries} EXPORT PassportTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  INCLUDES DESTINATION ${header_dir})

# What a host may not include ends in _p.h or lies in a folder of its own.
foreach(folder common config crypto hub passport)
  install(DIRECTORY "${PROJECT_SOURCE_DIR}/libpassport/${folder}" DESTINATION ${header_dir}
    FILES_MATCHING PATTERN "*.h"
    PATTERN "*_p.h" EXCLUDE
    PATTERN "cloud" EXCLUDE
    PATTERN "facade" EXCLUDE
    PATTERN "kernels" EXCLUDE)
endforeach()
if(PASSPORT_BUNDLED_NUBELO)
  install(DIRECTORY "${PROJECT_SOURCE_DIR}/libnubelo/nubelo" DESTINATION ${header_dir}
    FILES_MATCHING PATTERN "*.h" PATTERN "*_p.h" EXCLUDE)
endif()

install(FILES "${PROJECT_SOURCE_DIR}/libpassport/errors.tsv" DESTINATION "${CMAKE_INSTALL_DATADIR}/libpassport")

install(EXPORT PassportTargets NAMESPACE Passport:: DESTINATION ${package_dir})
configure_package_config_file(cmake/PassportConfig.cmake.in "${PROJECT_BINARY_DIR}/PassportConfig.cmake"
  INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file("${PROJECT_BINARY_DIR}/PassportConfigVersion.cmake"
  COMPATIBILITY SameMinorVersion)
install(FILES "${PROJECT_BINARY_DIR}/PassportConfig.cmake" "${PROJECT_BINARY_DIR}/PassportConfigVersion.cmake"
  DESTINATION ${package_dir})

set(PASSPORT_PC_LIBS "-lpassport")
if(PASSPORT_BUNDLED_NUBELO)
  string(APPEND PASSPORT_PC_LIBS " -lnubelo")
endif()
# Relative, so that an installation can be moved.
file(RELATIVE_PATH PASSPORT_PC_PREFIX "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
configure_file(cmake/passport.pc.in "${PROJECT_BINARY_DIR}/passport.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/passport.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
