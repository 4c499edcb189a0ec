# SPDX-License-Identifier: MIT
# What cpack makes of an installation: a tar.gz with all components, and a Debian package for each.
set(CPACK_PACKAGE_NAME libpassport)
set(CPACK_PACKAGE_VENDOR "The libpassport developers")
set(PASSPORT_PACKAGE_CONTACT "The libpassport developers <libpassport@example.com>"
  CACHE STRING "Who answers for the packages, with a mail address")
set(CPACK_PACKAGE_CONTACT "${PASSPORT_PACKAGE_CONTACT}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_RESOURCE_FILE_LICENSE "${PROJECT_SOURCE_DIR}/LICENSE")
set(CPACK_PACKAGE_DIRECTORY "${PROJECT_BINARY_DIR}/packages")
set(CPACK_GENERATOR TGZ)
if(NOT APPLE)
  list(APPEND CPACK_GENERATOR DEB)
endif()
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_VERBATIM_VARIABLES ON)

set(CPACK_ARCHIVE_FILE_NAME "libpassport-${PROJECT_VERSION}-${CMAKE_SYSTEM_NAME}-${CMAKE_SYSTEM_PROCESSOR}")
set(CPACK_PACKAGE_FILE_NAME "${CPACK_ARCHIVE_FILE_NAME}")

set(CPACK_COMPONENTS_ALL Library Development)
if(PASSPORT_BUILD_TOOLS OR PASSPORT_BUILD_EMULATOR)
  list(APPEND CPACK_COMPONENTS_ALL Tools)
endif()
if(PASSPORT_BUILD_WEBTOOL)
  list(APPEND CPACK_COMPONENTS_ALL WebTool)
endif()
# Made by scripts/docs, perhaps after this was read.
set(CPACK_PROJECT_CONFIG_FILE "${PROJECT_SOURCE_DIR}/packaging/cpack.cmake")
set(CPACK_PASSPORT_DOCUMENTATION "${PROJECT_BINARY_DIR}/docs/html")
set(CPACK_PASSPORT_CHANGELOG "${PROJECT_SOURCE_DIR}/CHANGELOG.md")

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${CPACK_PACKAGE_CONTACT}")
set(CPACK_DEBIAN_PACKAGE_SOURCE libpassport)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${PROJECT_BINARY_DIR}/lib")
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)

# passport_debian(component name section description dependencies suggestions)
function(passport_debian component name section description)
  cmake_parse_arguments(PARSE_ARGV 4 ARG "" "DEPENDS;RECOMMENDS;SUGGESTS;SUMMARY" "")
  string(TOUPPER "${component}" key)
  set(CPACK_DEBIAN_${key}_PACKAGE_NAME "${name}" PARENT_SCOPE)
  set(CPACK_DEBIAN_${key}_PACKAGE_SECTION "${section}" PARENT_SCOPE)
  set(CPACK_DEBIAN_${key}_DESCRIPTION "${ARG_SUMMARY}\n${description}" PARENT_SCOPE)
  foreach(relation DEPENDS RECOMMENDS SUGGESTS)
    set(CPACK_DEBIAN_${key}_PACKAGE_${relation} "${ARG_${relation}}" PARENT_SCOPE)
  endforeach()
endfunction()

set(minor "${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR}")
set(library "libpassport${minor}")
set(same "${library} (= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})")
# What cpack would write itself runs ldconfig by scripts, which Debian leaves to a trigger.
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA "${PROJECT_BINARY_DIR}/debian/shlibs" "${PROJECT_BINARY_DIR}/debian/triggers")
file(WRITE "${PROJECT_BINARY_DIR}/debian/triggers" "activate-noawait ldconfig\n")
file(WRITE "${PROJECT_BINARY_DIR}/debian/shlibs" "libpassport ${minor} ${library} (>= ${PROJECT_VERSION})\n")
if(PASSPORT_BUNDLED_NUBELO)
  file(APPEND "${PROJECT_BINARY_DIR}/debian/shlibs" "libnubelo ${minor} ${library} (>= ${PROJECT_VERSION})\n")
endif()
passport_debian(Library ${library} libs
  "libpassport signs users in and reaches their account cloud from a Qt 5\napplication, through the request library libnubelo that comes with it."
  SUMMARY "client library of a user-account service"
  RECOMMENDS "ca-certificates, procps, psmisc")
passport_debian(Development libpassport-dev libdevel
  "Headers, a CMake package, a pkg-config file, the library for the tests of\nhosts, the table of errors and an example of a passport directory."
  SUMMARY "client library of a user-account service (development files)"
  DEPENDS "${same}, qtbase5-dev"
  SUGGESTS "libpassport-tools, libpassport-doc, libpassport-webtool")
# Not found by the libraries that they name: the driver is a plug-in.
passport_debian(Tools libpassport-tools utils
  "passport-emulator, an account cloud for one machine with faults on demand,\nand passportctl, every account operation from a terminal."
  SUMMARY "account cloud for one machine and command line for libpassport"
  DEPENDS "${same}, libqt5sql5-sqlite"
  RECOMMENDS "tzdata"
  SUGGESTS "libpassport-webtool")
passport_debian(WebTool libpassport-webtool utils
  "openweburl shows the account service's pages for the web flows of\nlibpassport; drive-page fills in such pages for tests."
  SUMMARY "web tool of libpassport, on Qt WebEngine")
passport_debian(Documentation libpassport-doc doc
  "Quick start, guides, and the reference of all public headers, as web pages."
  SUMMARY "client library of a user-account service (documentation)")
set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_SHLIBDEPS OFF)

include(CPack)
