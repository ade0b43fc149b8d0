# GoogleTest for the test suite, as the targets GTest::gtest and GTest::gtest_main.
#
# A native build uses the installed libraries. A cross build cannot link the workstation's
# libraries, so it compiles Debian's GoogleTest sources (package googletest, /usr/src/googletest)
# with the target compiler instead.
if(NOT CMAKE_CROSSCOMPILING)
    find_package(GTest REQUIRED)
    return()
endif()

set(ISP_GTEST_SOURCE_DIR "/usr/src/googletest/googletest" CACHE PATH
    "GoogleTest sources compiled with the target compiler")
if(NOT EXISTS "${ISP_GTEST_SOURCE_DIR}/CMakeLists.txt")
    message(FATAL_ERROR "GoogleTest sources not found in ${ISP_GTEST_SOURCE_DIR}: install "
                        "Debian's googletest package or set ISP_GTEST_SOURCE_DIR")
endif()

set(INSTALL_GTEST OFF CACHE BOOL "The test framework is not part of the installed tree" FORCE)
set(gtest_force_shared_crt OFF CACHE BOOL "" FORCE)

# Third-party code is built with its own warning settings, not with the project's -Werror.
get_directory_property(isp_saved_compile_options COMPILE_OPTIONS)
set_directory_properties(PROPERTIES COMPILE_OPTIONS "")
set(isp_saved_warning_as_error ${CMAKE_COMPILE_WARNING_AS_ERROR})
set(CMAKE_COMPILE_WARNING_AS_ERROR OFF)
add_subdirectory("${ISP_GTEST_SOURCE_DIR}" "${CMAKE_BINARY_DIR}/googletest" EXCLUDE_FROM_ALL)
set(CMAKE_COMPILE_WARNING_AS_ERROR ${isp_saved_warning_as_error})
set_directory_properties(PROPERTIES COMPILE_OPTIONS "${isp_saved_compile_options}")

if(NOT TARGET GTest::gtest)
    add_library(GTest::gtest ALIAS gtest)
    add_library(GTest::gtest_main ALIAS gtest_main)
endif()
