# SPDX-License-Identifier: Apache-2.0
#
# How everything in this tree is compiled and linked. Nothing here is seen by those who use an
# installed package.

if(PROJECT_IS_TOP_LEVEL AND NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE RelWithDebInfo CACHE STRING "Kind of build" FORCE)
endif()

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_INSTALL_RPATH "$ORIGIN")
set(CMAKE_INSTALL_RPATH_USE_LINK_PATH ON)  # a platform that is installed elsewhere

add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wconversion)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # At -O3 this version sees overlapping copies inside std::string that are not there.
  add_compile_options(-Wno-restrict)
endif()

# __FILE__ names a file as an #include does: "Kor/HashMap.h", "records/AclPolicyData.cpp". The
# compilers take the last map that fits, so the longer path stands last.
add_compile_options("-fmacro-prefix-map=${PROJECT_SOURCE_DIR}/="
                    "-fmacro-prefix-map=${PROJECT_SOURCE_DIR}/platform/=")

# The same for headers that come from an installed package.
function(hide_source_paths_of target)
  get_target_property(folders ${target} INTERFACE_INCLUDE_DIRECTORIES)
  foreach(folder IN LISTS folders)
    add_compile_options("-fmacro-prefix-map=${folder}/=")
  endforeach()
endfunction()

if(POLICYMAPTEST_SANITIZE)
  # Sanitizers rewrite what the optimiser sees, and g++ then warns about code that is not there:
  # warnings are judged by the other builds.
  add_compile_options(-O1 -g1 -fno-omit-frame-pointer -fsanitize=address,leak,undefined
                      -fno-sanitize-recover=all)
  add_link_options(-fsanitize=address,leak,undefined)
else()
  if(POLICYMAPTEST_WERROR)
    add_compile_options(-Werror)
  endif()
  # Unreferenced sections are dropped, so what is only read through its section must be retained.
  add_compile_options(-ffunction-sections -fdata-sections)
  add_link_options(-Wl,--gc-sections -Wl,--no-undefined)
endif()
