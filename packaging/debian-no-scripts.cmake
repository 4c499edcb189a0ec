# SPDX-License-Identifier: MIT
# Takes away the scripts by which cpack has ldconfig run: Debian's trigger does that.
foreach(package IN LISTS CPACK_PACKAGE_FILES)
  set(folder "${package}.unpacked")
  execute_process(COMMAND dpkg-deb --raw-extract "${package}" "${folder}" COMMAND_ERROR_IS_FATAL ANY)
  if(EXISTS "${folder}/DEBIAN/postinst")
    file(REMOVE "${folder}/DEBIAN/postinst" "${folder}/DEBIAN/postrm")
    execute_process(COMMAND dpkg-deb --root-owner-group --build "${folder}" "${package}"
      OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
  endif()
  file(REMOVE_RECURSE "${folder}")
endforeach()
