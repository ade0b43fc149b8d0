# Installs a built tree under a scratch prefix, checks what is in place, and builds and runs a
# small consumer against it twice: through find_package(isp_json) and through pkg-config. With
# PACKAGES=ON the tree is the one the packages put in a scratch root instead (check_packages.cmake).
# Run by ctest (tests/CMakeLists.txt) with the build's directories, compilers, toolchain file,
# emulator (a |-list), pkg-config, WITH_TOOL and EXTRA_FLAGS (sanitizer flags) as -D variables.
cmake_minimum_required(VERSION 3.16)
string(REPLACE "|" ";" EMULATOR "${EMULATOR}")

function(run what)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
    if(NOT rc EQUAL 0)
        message(FATAL_ERROR "${what} failed (${rc}):\n${out}\n${err}")
    endif()
    set(run_output "${out}" PARENT_SCOPE)
endfunction()

if(PACKAGES)
    include("${CMAKE_CURRENT_LIST_DIR}/check_packages.cmake")
else()
    set(prefix "${WORK_DIR}/prefix")
    file(REMOVE_RECURSE "${WORK_DIR}")
    run("cmake --install" "${CMAKE_COMMAND}" --install "${BUILD_DIR}" --prefix "${prefix}")
endif()

# What the tree holds beyond what the consumers below use (headers, libraries, the CMake package
# with its version file and picojson finder, the pkg-config files).
set(lib "${prefix}/${LIBDIR}")
if(NOT EXISTS "${prefix}/${INCLUDEDIR}/isp_json/isp_sim.h")
    message(FATAL_ERROR "not installed: ${INCLUDEDIR}/isp_json/isp_sim.h")
endif()
# The SONAME links: <lib>.so -> <lib>.so.2 -> <lib>.so.2.0.0.
if(NOT EXISTS "${lib}/libisp_record.so")
    message(FATAL_ERROR "not installed: ${LIBDIR}/libisp_record.so")
endif()
foreach(link IN ITEMS libisp_json.so libisp_json.so.2
        libisp_platform_sim.so libisp_platform_sim.so.2)
    string(REGEX REPLACE "\\.so\\.2$" ".so.2.0.0" target "${link}")
    string(REGEX REPLACE "\\.so$" ".so.2" target "${target}")
    file(READ_SYMLINK "${lib}/${link}" points_to)  # fails on anything but a link
    if(NOT points_to STREQUAL target)
        message(FATAL_ERROR "${link} points to ${points_to}, not ${target}")
    endif()
endforeach()
file(GLOB stray_headers "${prefix}/${INCLUDEDIR}/isp_json/*.cpp" "${prefix}/${INCLUDEDIR}/*.h")
if(stray_headers)
    message(FATAL_ERROR "unexpected files installed: ${stray_headers}")
endif()

if(WITH_TOOL)
    # Runs from the installed tree: it finds both libraries next to it.
    run("installed isp-case" ${EMULATOR} "${prefix}/${BINDIR}/isp-case" --help)
endif()

# The consumer through the CMake package.
set(toolchain_args "")
if(TOOLCHAIN_FILE)
    set(toolchain_args "-DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN_FILE}")
endif()
run("configuring the CMake consumer" "${CMAKE_COMMAND}" -S "${CONSUMER_DIR}"
    -B "${WORK_DIR}/cmake-consumer" -G "${GENERATOR}" "-DCMAKE_PREFIX_PATH=${prefix}"
    "-DCMAKE_C_COMPILER=${C_COMPILER}" "-DCMAKE_CXX_COMPILER=${CXX_COMPILER}" ${toolchain_args}
    -DCMAKE_BUILD_TYPE=Release -DCMAKE_COMPILE_WARNING_AS_ERROR=ON
    "-DCMAKE_C_FLAGS=${EXTRA_FLAGS}" "-DCMAKE_CXX_FLAGS=${EXTRA_FLAGS}"
    "-DCMAKE_EXE_LINKER_FLAGS=${EXTRA_FLAGS}")
run("building the CMake consumer" "${CMAKE_COMMAND}" --build "${WORK_DIR}/cmake-consumer")
run("the CMake consumer" ${EMULATOR} "${WORK_DIR}/cmake-consumer/consumer")
if(NOT run_output STREQUAL "consumer ok\n")
    message(FATAL_ERROR "the CMake consumer printed '${run_output}'")
endif()

# The consumer through pkg-config, compiled and linked by hand.
set(ENV{PKG_CONFIG_LIBDIR} "${lib}/pkgconfig")
unset(ENV{PKG_CONFIG_PATH})
run("pkg-config --modversion" "${PKG_CONFIG}" --modversion isp_json)
if(NOT run_output STREQUAL "2.0.0\n")
    message(FATAL_ERROR "pkg-config reports version '${run_output}'")
endif()
run("pkg-config --cflags" "${PKG_CONFIG}" --cflags isp_json isp_platform_sim)
separate_arguments(cflags UNIX_COMMAND "${run_output}")
run("pkg-config --libs" "${PKG_CONFIG}" --libs isp_json isp_platform_sim)
separate_arguments(libs UNIX_COMMAND "${run_output}")
set(out "${WORK_DIR}/pkg-consumer")
file(MAKE_DIRECTORY "${out}")
separate_arguments(extra UNIX_COMMAND "${EXTRA_FLAGS}")
run("compiling probe.c" "${C_COMPILER}" -Wall -Wextra -Werror ${extra} ${cflags}
    -c "${CONSUMER_DIR}/probe.c" -o "${out}/probe.o")
run("building the pkg-config consumer" "${CXX_COMPILER}" -std=c++17 -Wall -Wextra -Werror
    ${extra} ${cflags} "${CONSUMER_DIR}/consumer.cpp" "${out}/probe.o" ${libs} "-Wl,-rpath,${lib}"
    -o "${out}/consumer")
run("the pkg-config consumer" ${EMULATOR} "${out}/consumer")
if(NOT run_output STREQUAL "consumer ok\n")
    message(FATAL_ERROR "the pkg-config consumer printed '${run_output}'")
endif()
message(STATUS "installed tree and both consumers are fine")
