# SPDX-License-Identifier: Apache-2.0
#
# Finds the installed platform. Fails during configuration if part of it is missing.
set(platformVersion ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
find_package(PolicyMapPlatform ${platformVersion} QUIET CONFIG)
if(NOT PolicyMapPlatform_FOUND)
  set(seen "")
  foreach(config found IN ZIP_LISTS PolicyMapPlatform_CONSIDERED_CONFIGS
                                    PolicyMapPlatform_CONSIDERED_VERSIONS)
    string(APPEND seen "\n  version ${found} in ${config}")
  endforeach()
  message(
    FATAL_ERROR
      "POLICYMAPTEST_PLATFORM is 'package', and the package PolicyMapPlatform ${platformVersion} is not "
      "found in CMAKE_PREFIX_PATH ('${CMAKE_PREFIX_PATH}') or PolicyMapPlatform_DIR.${seen}")
endif()

# Without this check, a package without headers would fail only at the first #include.
get_target_property(folders PolicyMapPlatform::Kor INTERFACE_INCLUDE_DIRECTORIES)
foreach(header Kor/Ptr.h PolicyMap/ServicePolicySm.h Acl/Config.h)
  list(TRANSFORM folders APPEND "/${header}" OUTPUT_VARIABLE places)
  foreach(place IN LISTS places)
    if(EXISTS "${place}")
      set(places "")
    endif()
  endforeach()
  if(places)
    message(FATAL_ERROR "The package PolicyMapPlatform in ${PolicyMapPlatform_DIR} is incomplete: "
                        "there is no ${places}")
  endif()
endforeach()
