# Installed tree: headers under include/isp_json, libisp_json and libisp_platform_sim with their
# SONAME links, the isp-case tool, a CMake package configuration (find_package(isp_json) gives
# isp_json::isp_json and isp_json::isp_platform_sim) and pkg-config files of both libraries.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(ISP_JSON_INSTALL_INCLUDEDIR "${CMAKE_INSTALL_INCLUDEDIR}/isp_json")
set(ISP_JSON_INSTALL_CMAKEDIR "${CMAKE_INSTALL_LIBDIR}/cmake/isp_json")
set(ISP_JSON_INSTALL_PKGCONFIGDIR "${CMAKE_INSTALL_LIBDIR}/pkgconfig")

install(DIRECTORY "${PROJECT_SOURCE_DIR}/include/"
        DESTINATION "${ISP_JSON_INSTALL_INCLUDEDIR}"
        COMPONENT development
        FILES_MATCHING PATTERN "*.h")
# The simulated platform's control interface, for workstation tools and tests.
install(FILES "${PROJECT_SOURCE_DIR}/platform/sim/isp_sim.h"
        DESTINATION "${ISP_JSON_INSTALL_INCLUDEDIR}"
        COMPONENT development)

target_include_directories(isp_platform_sim INTERFACE
    $<INSTALL_INTERFACE:${ISP_JSON_INSTALL_INCLUDEDIR}>)

install(TARGETS isp_json isp_platform_sim
        EXPORT isp_json_targets
        LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
                COMPONENT runtime
                NAMELINK_COMPONENT development)

if(TARGET isp-case)
    # Finds the two libraries beside it wherever the tree is installed.
    file(RELATIVE_PATH isp_json_bin_to_lib "/${CMAKE_INSTALL_BINDIR}" "/${CMAKE_INSTALL_LIBDIR}")
    set_target_properties(isp-case PROPERTIES INSTALL_RPATH "$ORIGIN/${isp_json_bin_to_lib}")
    install(TARGETS isp-case RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT runtime)
endif()

install(EXPORT isp_json_targets
        NAMESPACE isp_json::
        FILE isp_json-targets.cmake
        DESTINATION "${ISP_JSON_INSTALL_CMAKEDIR}"
        COMPONENT development)

configure_package_config_file(
    "${CMAKE_CURRENT_LIST_DIR}/isp_json-config.cmake.in"
    "${PROJECT_BINARY_DIR}/isp_json-config.cmake"
    INSTALL_DESTINATION "${ISP_JSON_INSTALL_CMAKEDIR}")
write_basic_package_version_file(
    "${PROJECT_BINARY_DIR}/isp_json-config-version.cmake"
    COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/isp_json-config.cmake"
              "${PROJECT_BINARY_DIR}/isp_json-config-version.cmake"
              "${CMAKE_CURRENT_LIST_DIR}/Findpicojson.cmake"
        DESTINATION "${ISP_JSON_INSTALL_CMAKEDIR}"
        COMPONENT development)

# The .pc files locate the prefix from their own directory, so the tree can be installed under
# any prefix (cmake --install --prefix) or moved.
file(RELATIVE_PATH ISP_JSON_PC_TO_PREFIX "/${ISP_JSON_INSTALL_PKGCONFIGDIR}" "/")
string(REGEX REPLACE "/$" "" ISP_JSON_PC_TO_PREFIX "${ISP_JSON_PC_TO_PREFIX}")
foreach(pc IN ITEMS isp_json isp_platform_sim)
    configure_file("${CMAKE_CURRENT_LIST_DIR}/${pc}.pc.in" "${PROJECT_BINARY_DIR}/${pc}.pc" @ONLY)
    install(FILES "${PROJECT_BINARY_DIR}/${pc}.pc"
            DESTINATION "${ISP_JSON_INSTALL_PKGCONFIGDIR}"
            COMPONENT development)
endforeach()
