# SPDX-License-Identifier: Apache-2.0
#
# Compiler and linker settings of this tree. They do not affect users of the installed packages.

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
set(CMAKE_INSTALL_RPATH_USE_LINK_PATH ON)  # finds a platform installed elsewhere

add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wconversion)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  add_compile_options(-Wunused-const-variable=1)  # as in clang++'s -Wall
endif()
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # At -O3 this version warns about overlapping copies in std::string, which do not occur.
  add_compile_options(-Wno-restrict)
endif()

if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
  add_compile_options(-Wreserved-identifier)  # the same check of clang-tidy takes a third of its time
endif()

if(CMAKE_UNITY_BUILD)
  # A local name may be that of another source, compiled with this one. The builds that compile each
  # source alone check shadowing.
  add_compile_options(-Wno-shadow)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # With more to inline, g++ 12 warns about members of empty std::optional, which are not read.
    add_compile_options(-Wno-maybe-uninitialized)
  endif()
endif()

# __FILE__ is the path used in #include: "Kor/HashMap.h", "records/AclPolicyData.cpp". The compilers
# use the last matching map, so the longer path comes last.
add_compile_options("-fmacro-prefix-map=${PROJECT_SOURCE_DIR}/="
                    "-fmacro-prefix-map=${PROJECT_SOURCE_DIR}/platform/=")

# The same for headers that come from an installed package.
function(hide_source_paths_of target)
  get_target_property(folders ${target} INTERFACE_INCLUDE_DIRECTORIES)
  foreach(folder IN LISTS folders)
    add_compile_options("-fmacro-prefix-map=${folder}/=")
  endforeach()
endfunction()

# Sanitizers change the code that the optimiser sees, which causes false warnings of g++.
if(POLICYMAPTEST_WERROR AND NOT (POLICYMAPTEST_SANITIZE AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU"))
  add_compile_options(-Werror)
endif()

if(POLICYMAPTEST_SANITIZE)
  add_compile_options(-O1 -g1 -fno-omit-frame-pointer -fsanitize=address,leak,undefined
                      -fno-sanitize-recover=all)
  add_link_options(-fsanitize=address,leak,undefined)
else()
  # A function that crosses one more cache line runs up to a third slower. With a fixed alignment, a
  # benchmark compares code and not the addresses that the linker gives it.
  add_compile_options(-falign-functions=64)
  # Drops unreferenced sections. Data that is only read through its section must be retained.
  add_compile_options(-ffunction-sections -fdata-sections)
  add_link_options(-Wl,--gc-sections -Wl,--no-undefined)
  # Nothing replaces a function of a library, so the linker binds references within one, which the
  # loader would otherwise look up by name: two thirds of the time in which the libraries are opened.
  add_link_options(-Wl,-Bsymbolic-functions)
endif()

# For the code of tests in the current folder, which runs once, so what counts is how soon it is
# compiled: this halves the time of a build. What is tested keeps its optimisation.
macro(compile_quickly)
  add_compile_options("$<$<CONFIG:RelWithDebInfo>:-Og;-g1>")
  if(POLICYMAPTEST_SANITIZE)
    add_compile_options(-O0)  # with sanitizers -O1 takes twice as long
  endif()
endmacro()
