# SPDX-License-Identifier: MIT
# Puts into each Debian package the copyright and the changelogs that every one of them has, and compresses its manual
# pages. A version that CHANGELOG.md has no date for is packed as of today.
file(READ "${CPACK_RESOURCE_FILE_LICENSE}" licence)
string(REGEX MATCH "Copyright[^\n]*" holder "${licence}")
string(REGEX REPLACE "^.*\n\nPermission" "Permission" licence "${licence}")
string(REGEX REPLACE "\n+$" "" licence "${licence}")
string(REPLACE "\n\n" "\n.\n" licence "${licence}")
string(REPLACE "\n" "\n " licence "${licence}")
string(REGEX REPLACE "Copyright \\(c\\) " "" holder "${holder}")
set(copyright "Format: https://www.debian.org/doc/packaging-manuals/copyright-format/1.0/
Upstream-Name: libpassport

Files: *
Copyright: ${holder}
License: Expat

License: Expat
 ${licence}
")

file(STRINGS "${CPACK_PASSPORT_CHANGELOG}" dated REGEX "^## \\[${CPACK_PACKAGE_VERSION}\\] - ")
string(REGEX MATCH "[0-9]+-[0-9]+-[0-9]+$" date "${dated}")
execute_process(COMMAND date -u -R -d "${date}" OUTPUT_VARIABLE date COMMAND_ERROR_IS_FATAL ANY)
set(changelog "${CPACK_TEMPORARY_DIRECTORY}/changelog.Debian")
file(WRITE "${changelog}" "libpassport (${CPACK_PACKAGE_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}) stable; urgency=medium

  * Release ${CPACK_PACKAGE_VERSION}: changelog.gz says what is new.

 -- ${CPACK_DEBIAN_PACKAGE_MAINTAINER}  ${date}")

foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER "${component}" key)
  set(package "${CPACK_DEBIAN_${key}_PACKAGE_NAME}")
  set(share "${CPACK_TEMPORARY_DIRECTORY}/${component}/usr/share")
  # There is no bug of Debian's to close.
  file(MAKE_DIRECTORY "${share}/lintian/overrides")
  file(WRITE "${share}/lintian/overrides/${package}" "${package}: initial-upload-closes-no-bugs\n")
  set(folder "${share}/doc/${package}")
  file(MAKE_DIRECTORY "${folder}")
  file(WRITE "${folder}/copyright" "${copyright}")
  execute_process(COMMAND gzip -9nc "${CPACK_PASSPORT_CHANGELOG}" OUTPUT_FILE "${folder}/changelog.gz"
    COMMAND_ERROR_IS_FATAL ANY)
  file(GLOB manuals "${share}/man/man1/*.1")
  foreach(manual IN LISTS manuals)
    execute_process(COMMAND gzip -9nf "${manual}" COMMAND_ERROR_IS_FATAL ANY)
  endforeach()
  execute_process(COMMAND gzip -9nc "${changelog}" OUTPUT_FILE "${folder}/changelog.Debian.gz"
    COMMAND_ERROR_IS_FATAL ANY)
endforeach()
file(REMOVE "${changelog}")
