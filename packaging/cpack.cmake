# SPDX-License-Identifier: MIT
# Read by cpack for each kind of package.
set(CPACK_PRE_BUILD_SCRIPTS)
if(IS_DIRECTORY "${CPACK_PASSPORT_DOCUMENTATION}")
  list(APPEND CPACK_COMPONENTS_ALL Documentation)
endif()
if(CPACK_GENERATOR STREQUAL "DEB")
  set(CPACK_PACKAGING_INSTALL_PREFIX "/usr")
  # Each package's description has its own first line, and cpack would put this one before it.
  set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
  set(CPACK_PRE_BUILD_SCRIPTS "${CMAKE_CURRENT_LIST_DIR}/debian-documents.cmake")
  set(CPACK_POST_BUILD_SCRIPTS "${CMAKE_CURRENT_LIST_DIR}/debian-no-scripts.cmake")
else()
  set(CPACK_PACKAGING_INSTALL_PREFIX "")
endif()
