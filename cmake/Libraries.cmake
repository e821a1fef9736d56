# SPDX-License-Identifier: Apache-2.0
#
# Functions for shared libraries and for the CMake packages that contain them.
include(CMakePackageConfigHelpers)

# link_if_there(<target> <kind> <library>...): links those of the libraries that are being built.
function(link_if_there target kind)
  foreach(library IN LISTS ARGN)
    if(TARGET ${library})
      target_link_libraries(${target} ${kind} ${library})
    endif()
  endforeach()
endfunction()

# add_project_library(<name> PACKAGE <package> FOLDERS <folder>... HEADERS_TO <folder>
#                     [DEPENDS <target>...])
#
# Builds lib<name> from all sources below FOLDERS, except those in folders named main, with the alias
# <package>::<name>, and installs it and its headers (below include/HEADERS_TO) as part of the package.
function(add_project_library name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "PACKAGE;HEADERS_TO" "FOLDERS;DEPENDS")
  list(TRANSFORM arg_FOLDERS APPEND "/*.cpp" OUTPUT_VARIABLE patterns)
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${patterns})
  list(FILTER sources EXCLUDE REGEX "^${CMAKE_CURRENT_SOURCE_DIR}/[^/]+/main/")
  if(NOT sources)
    message(STATUS "${name}: no source file yet, not built")
    return()
  endif()

  add_library(${name} SHARED ${sources})
  add_library(${arg_PACKAGE}::${name} ALIAS ${name})
  # As in the package's version file: before 1.0, minor versions are incompatible.
  set(compatible ${PROJECT_VERSION_MAJOR})
  if(PROJECT_VERSION_MAJOR EQUAL 0)
    set(compatible ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
  endif()
  set_target_properties(${name} PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${compatible})
  target_compile_features(${name} PUBLIC cxx_std_20)
  target_include_directories(
    ${name} PUBLIC "$<BUILD_INTERFACE:${CMAKE_CURRENT_SOURCE_DIR}>"
                   "$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/${arg_HEADERS_TO}>")
  link_if_there(${name} PUBLIC ${arg_DEPENDS})

  install(
    TARGETS ${name}
    EXPORT ${arg_PACKAGE}
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT ${arg_PACKAGE}
            NAMELINK_COMPONENT ${arg_PACKAGE})
  foreach(folder IN LISTS arg_FOLDERS)
    if(NOT IS_DIRECTORY "${CMAKE_CURRENT_SOURCE_DIR}/${folder}")
      continue()
    endif()
    install(
      DIRECTORY ${folder}
      DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/${arg_HEADERS_TO}"
      COMPONENT ${arg_PACKAGE}
      FILES_MATCHING
      PATTERN "*.h")
  endforeach()
endfunction()

# add_main(<library> PACKAGE <package> SOURCE <file> HEADERS_TO <folder> DEPENDS <target>...)
#
# The target <package>::Main: programs that link it compile SOURCE, which defines main().
function(add_main library)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "PACKAGE;SOURCE;HEADERS_TO" "DEPENDS")
  set(name ${library}Main)
  set(installed "${CMAKE_INSTALL_INCLUDEDIR}/${arg_HEADERS_TO}")
  add_library(${name} INTERFACE)
  add_library(${arg_PACKAGE}::Main ALIAS ${name})
  set_target_properties(${name} PROPERTIES EXPORT_NAME Main)
  target_sources(
    ${name} INTERFACE "$<BUILD_INTERFACE:${CMAKE_CURRENT_SOURCE_DIR}/${arg_SOURCE}>"
                      "$<INSTALL_INTERFACE:${installed}/${arg_SOURCE}>")
  target_link_libraries(${name} INTERFACE ${library} ${arg_DEPENDS})
  install(TARGETS ${name} EXPORT ${arg_PACKAGE})
  get_filename_component(folder "${arg_SOURCE}" DIRECTORY)
  install(
    FILES ${arg_SOURCE}
    DESTINATION "${installed}/${folder}"
    COMPONENT ${arg_PACKAGE})
endfunction()

# add_text_source(<library> <file> <source>.in): compiles <source> with the content of the file in place
# of @TEXT@.
function(add_text_source library file source)
  set(inputs "${CMAKE_CURRENT_SOURCE_DIR}/${file}" "${CMAKE_CURRENT_SOURCE_DIR}/${source}")
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${inputs})
  list(GET inputs 0 text)
  list(GET inputs 1 code)
  file(READ "${text}" text)
  file(READ "${code}" code)
  string(REPLACE "@TEXT@" "${text}" code "${code}")
  string(REGEX REPLACE "\\.in$" "" output "${CMAKE_CURRENT_BINARY_DIR}/${source}")
  set(before "")
  if(EXISTS "${output}")
    file(READ "${output}" before)
  endif()
  if(NOT code STREQUAL before)
    file(WRITE "${output}" "${code}")
  endif()
  target_sources(${library} PRIVATE "${output}")
endfunction()

# install_license(<component>): installs the licence as share/doc/<component>/LICENSE.
function(install_license component)
  install(
    FILES "${PROJECT_SOURCE_DIR}/LICENSE"
    DESTINATION "${CMAKE_INSTALL_DATAROOTDIR}/doc/${component}"
    COMPONENT ${component})
endfunction()

# install_project_package(<package> LIBRARIES <name>... [DEPENDS <package>...])
#
# Installs the files for find_package(<package>), which first finds the packages in DEPENDS.
function(install_project_package package)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "LIBRARIES;DEPENDS")
  foreach(library IN LISTS arg_LIBRARIES)
    if(NOT TARGET ${library})
      message(STATUS "${package}: ${library} is missing, no package to install")
      return()
    endif()
  endforeach()

  set(PACKAGE_DEPENDENCIES "")
  foreach(dependency IN LISTS arg_DEPENDS)
    string(APPEND PACKAGE_DEPENDENCIES
           "find_dependency(${dependency} ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR} CONFIG)\n")
  endforeach()
  set(destination "${CMAKE_INSTALL_LIBDIR}/cmake/${package}")
  configure_package_config_file(
    "${PROJECT_SOURCE_DIR}/cmake/PackageConfig.cmake.in"
    "${CMAKE_CURRENT_BINARY_DIR}/${package}Config.cmake"
    INSTALL_DESTINATION "${destination}"
    NO_SET_AND_CHECK_MACRO)
  set(compatibility SameMajorVersion)
  if(PROJECT_VERSION_MAJOR EQUAL 0)
    set(compatibility SameMinorVersion)
  endif()
  write_basic_package_version_file("${CMAKE_CURRENT_BINARY_DIR}/${package}ConfigVersion.cmake"
                                   COMPATIBILITY ${compatibility})
  install(
    EXPORT ${package}
    FILE ${package}Targets.cmake
    NAMESPACE ${package}::
    DESTINATION "${destination}"
    COMPONENT ${package})
  install(
    FILES "${CMAKE_CURRENT_BINARY_DIR}/${package}Config.cmake"
          "${CMAKE_CURRENT_BINARY_DIR}/${package}ConfigVersion.cmake"
    DESTINATION "${destination}"
    COMPONENT ${package})
  install_license(${package})
endfunction()
