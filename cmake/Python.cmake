# SPDX-License-Identifier: Apache-2.0
#
# The interpreter, and add_pytest().
find_package(Python3 3.11 COMPONENTS Interpreter Development.Module REQUIRED)

# The environment that a program in Python needs to load the libraries of this build. The interpreter
# is not sanitized, so the runtime of the sanitizers must be loaded before all else, and after it the
# library whose functions it replaces. That runtime opens libraries itself, so the run path of the
# module has no effect. The interpreter leaks on purpose when it ends.
set(POLICYMAPTEST_PYTHON_ENVIRONMENT "PYTHONPATH=${PROJECT_BINARY_DIR}/python")
if(POLICYMAPTEST_SANITIZE)
  set(runtime libasan.so)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    set(runtime libclang_rt.asan-${CMAKE_SYSTEM_PROCESSOR}.so)
  endif()
  foreach(library "${runtime}" libstdc++.so.6)
    execute_process(
      COMMAND "${CMAKE_CXX_COMPILER}" "-print-file-name=${library}"
      OUTPUT_VARIABLE file
      OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    list(APPEND preloaded "${file}")
  endforeach()
  list(JOIN preloaded ":" preloaded)
  list(APPEND POLICYMAPTEST_PYTHON_ENVIRONMENT "LD_PRELOAD=${preloaded}"
       "LD_LIBRARY_PATH=${PROJECT_BINARY_DIR}"
       "ASAN_OPTIONS=detect_leaks=0:strict_string_checks=1:detect_stack_use_after_return=1")
endif()

# add_pytest(<test> <file or folder> [<variable>=<value>...]): a test that runs these tests.
function(add_pytest test path)
  add_test(NAME ${test} COMMAND "${Python3_EXECUTABLE}" -X dev -B -W error -m pytest -q -rs -p
                                no:cacheprovider "${path}")
  set_tests_properties(
    ${test} PROPERTIES TIMEOUT 600 WORKING_DIRECTORY "${CMAKE_CURRENT_BINARY_DIR}"
                       ENVIRONMENT "${POLICYMAPTEST_PYTHON_ENVIRONMENT};${ARGN}")
endfunction()
