# SPDX-License-Identifier: MIT
# Adds the folders of Homebrew's formulae to what find_package() searches, since some of them, such as qt@5 and
# curl, are kept out of the usual ones. What the user names in CMAKE_PREFIX_PATH comes before them.
function(passport_search_homebrew)
  file(TO_CMAKE_PATH "$ENV{CMAKE_PREFIX_PATH}" environment)
  set(folders ${CMAKE_PREFIX_PATH} ${environment})
  foreach(formula IN LISTS ARGN)
    foreach(prefix "$ENV{HOMEBREW_PREFIX}" /opt/homebrew /usr/local)
      if(prefix AND IS_DIRECTORY "${prefix}/opt/${formula}")
        list(APPEND folders "${prefix}/opt/${formula}")
      endif()
    endforeach()
  endforeach()
  list(REMOVE_DUPLICATES folders)
  set(CMAKE_PREFIX_PATH ${folders} PARENT_SCOPE)
endfunction()

# passport_require(package [version] [COMPONENTS name...] DEBIAN name... HOMEBREW name...): a package that the
# build cannot do without. Where it is missing or too old, one sentence says what to install.
# A macro, since what find_package() sets belongs to the caller.
macro(passport_require package)
  cmake_parse_arguments(require "" "" "COMPONENTS;DEBIAN;HOMEBREW" ${ARGN})
  if(APPLE)
    passport_search_homebrew(${require_HOMEBREW})
  endif()
  find_package(${package} ${require_UNPARSED_ARGUMENTS} QUIET COMPONENTS ${require_COMPONENTS})
  if(NOT ${package}_FOUND)
    string(JOIN " " require_what ${package} ${require_COMPONENTS})
    if(require_UNPARSED_ARGUMENTS)
      string(APPEND require_what " ${require_UNPARSED_ARGUMENTS} or newer")
    endif()
    string(JOIN " " require_debian ${require_DEBIAN})
    string(JOIN " " require_homebrew ${require_HOMEBREW})
    message(FATAL_ERROR "This build needs the package ${require_what}: "
      "install ${require_debian} (Debian) or ${require_homebrew} (Homebrew).")
  endif()
endmacro()
