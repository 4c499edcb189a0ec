# SPDX-License-Identifier: MIT
# The manual page and the completion files, made by the program from the declaration of its own
# command line.
if(CMAKE_CROSSCOMPILING AND NOT CMAKE_CROSSCOMPILING_EMULATOR)
  return()
endif()

# passport_text(file destination argument...): what the program prints, installed.
function(passport_text file destination)
  set(output "${CMAKE_CURRENT_BINARY_DIR}/${file}")
  # Here nothing is to be learned from leaks, nor about libraries that were built without the thread sanitizer.
  add_custom_command(OUTPUT "${output}"
    COMMAND ${CMAKE_COMMAND} -E env ASAN_OPTIONS=detect_leaks=0 TSAN_OPTIONS=ignore_noninstrumented_modules=1
      $<TARGET_FILE:passportctl> ${ARGN} > "${output}"
    DEPENDS passportctl)
  set_property(DIRECTORY APPEND PROPERTY PASSPORT_TEXTS "${output}")
  if(PASSPORT_INSTALL)
    install(FILES "${output}" DESTINATION "${destination}" COMPONENT Tools)
  endif()
endfunction()

passport_text(passportctl.1 "${CMAKE_INSTALL_MANDIR}/man1" manual)
passport_text(passportctl "${CMAKE_INSTALL_DATADIR}/bash-completion/completions" completion bash)
passport_text(_passportctl "${CMAKE_INSTALL_DATADIR}/zsh/site-functions" completion zsh)
passport_text(passportctl.fish "${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d" completion fish)
get_property(texts DIRECTORY PROPERTY PASSPORT_TEXTS)
add_custom_target(passportctl_texts ALL DEPENDS ${texts})
