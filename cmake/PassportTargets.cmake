# SPDX-License-Identifier: MIT
# What every target of the project has in common, and one small function for each kind of target.

include(CheckCXXCompilerFlag)
check_cxx_compiler_flag(-Wvariadic-macro-arguments-omitted PASSPORT_KNOWS_OMITTED_ARGUMENTS)

# passport_target_defaults(name [TEST]): tests may write their many texts as plain literals.
function(passport_target_defaults target)
  cmake_parse_arguments(PARSE_ARGV 1 ARG "TEST" "" "")
  set_target_properties(${target} PROPERTIES
    AUTOMOC ON
    CXX_STANDARD 17
    CXX_STANDARD_REQUIRED ON
    CXX_EXTENSIONS OFF
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON
    POSITION_INDEPENDENT_CODE ON)
  target_compile_definitions(${target} PRIVATE QT_NO_KEYWORDS QT_DEPRECATED_WARNINGS QT_MESSAGELOGCONTEXT)
  if(NOT ARG_TEST)
    target_compile_definitions(${target} PRIVATE
      QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_URL_CAST_FROM_STRING)
    # What is handed out does not tell where it was built. In a debug build the debugger needs the paths, and
    # tests find their data by them.
    target_compile_options(${target} PRIVATE $<$<NOT:$<CONFIG:Debug>>:
      -ffile-prefix-map=${PROJECT_SOURCE_DIR}=. -ffile-prefix-map=${PROJECT_BINARY_DIR}=./build>)
    # Apple's linker names the object files, for the debugger.
    target_link_options(${target} PRIVATE $<$<AND:$<PLATFORM_ID:Darwin>,$<NOT:$<CONFIG:Debug>>>:
      LINKER:-oso_prefix,${PROJECT_BINARY_DIR}/>)
  endif()
  target_compile_options(${target} PRIVATE
    -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wundef
    # Qt's logging macros, which Clang blames under one name or, since 19, the other.
    $<$<CXX_COMPILER_ID:Clang,AppleClang>:-Wno-gnu-zero-variadic-macro-arguments>
    $<$<BOOL:${PASSPORT_KNOWS_OMITTED_ARGUMENTS}>:-Wno-variadic-macro-arguments-omitted>)
endfunction()

# passport_add_library(name SOURCES file...): a shared library that finds its neighbours beside itself. Until
# 1.0 each minor version may break hosts, for the loader as for find_package().
function(passport_add_library target)
  cmake_parse_arguments(PARSE_ARGV 1 ARG "" "" "SOURCES")
  add_library(${target} SHARED ${ARG_SOURCES})
  add_library(Passport::${target} ALIAS ${target})
  passport_target_defaults(${target})
  target_compile_features(${target} PUBLIC cxx_std_17)
  passport_set_install_rpath(${target} "")
  set(compatible ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
  if(APPLE)
    # Within a bundle hosts expect the plain name; the file itself holds both versions.
    set(versions MACHO_CURRENT_VERSION ${PROJECT_VERSION} MACHO_COMPATIBILITY_VERSION ${compatible})
  else()
    set(versions VERSION ${PROJECT_VERSION} SOVERSION ${compatible})
  endif()
  set_target_properties(${target} PROPERTIES
    ${versions}
    LIBRARY_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/lib"
    MACOSX_RPATH ON)
endfunction()

# passport_add_tool(name SOURCES file... [COMPONENT name]): a program that is installed in bin/, with the component
# Tools unless another is named.
function(passport_add_tool target)
  cmake_parse_arguments(PARSE_ARGV 1 ARG "" "COMPONENT" "SOURCES")
  if(NOT ARG_COMPONENT)
    set(ARG_COMPONENT Tools)
  endif()
  add_executable(${target} ${ARG_SOURCES})
  passport_target_defaults(${target})
  passport_set_install_rpath(${target} "/../${CMAKE_INSTALL_LIBDIR}")
  set_target_properties(${target} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/bin")
  if(PASSPORT_INSTALL)
    install(TARGETS ${target} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT ${ARG_COMPONENT})
  endif()
endfunction()

# passport_add_test(name SOURCES file... LIBRARIES target... [TIMEOUT seconds]): one Qt Test program.
function(passport_add_test target)
  cmake_parse_arguments(PARSE_ARGV 1 ARG "" "TIMEOUT" "SOURCES;LIBRARIES")
  add_executable(${target} ${ARG_SOURCES})
  passport_target_defaults(${target} TEST)
  target_link_libraries(${target} PRIVATE ${ARG_LIBRARIES} Qt5::Test)
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 60)
  endif()
  add_test(NAME ${target} COMMAND ${target})
  set_tests_properties(${target} PROPERTIES
    TIMEOUT ${ARG_TIMEOUT}
    ENVIRONMENT "${PASSPORT_TEST_ENVIRONMENT}")
endfunction()

function(passport_set_install_rpath target suffix)
  if(APPLE)
    set_target_properties(${target} PROPERTIES INSTALL_RPATH "@loader_path${suffix}")
  else()
    set_target_properties(${target} PROPERTIES INSTALL_RPATH "$ORIGIN${suffix}")
  endif()
endfunction()
