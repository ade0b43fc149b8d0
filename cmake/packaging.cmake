# Installed tree: headers under include/isp_json, libisp_json and libisp_platform_sim with their
# SONAME links, the recorder libisp_record, the isp-case tool, a CMake package configuration
# (find_package(isp_json) gives isp_json::isp_json, and isp_json::isp_platform_sim where the
# simulated platform is installed) and pkg-config files of both libraries.
#
# Components, so that the packages below take what their machine needs:
#   runtime      libisp_json.so.2
#   development  the public headers, the library's link, CMake and pkg-config files
#   recorder     libisp_record.so, preloaded in front of the platform
#   simulator    the simulated platform with its header, link, CMake and pkg-config files
#   tool         isp-case
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
        COMPONENT simulator)

target_include_directories(isp_platform_sim INTERFACE
    $<INSTALL_INTERFACE:${ISP_JSON_INSTALL_INCLUDEDIR}>)

install(TARGETS isp_json
        EXPORT isp_json_targets
        LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
                COMPONENT runtime
                NAMELINK_COMPONENT development)
install(TARGETS isp_platform_sim
        EXPORT isp_platform_sim_targets
        LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
                COMPONENT simulator
                NAMELINK_COMPONENT simulator)
# Loaded by LD_PRELOAD only, never linked: no SONAME links.
install(TARGETS isp_record
        LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
                COMPONENT recorder
                NAMELINK_SKIP)

if(TARGET isp-case)
    # Finds the two libraries beside it wherever the tree is installed.
    file(RELATIVE_PATH isp_json_bin_to_lib "/${CMAKE_INSTALL_BINDIR}" "/${CMAKE_INSTALL_LIBDIR}")
    set_target_properties(isp-case PROPERTIES INSTALL_RPATH "$ORIGIN/${isp_json_bin_to_lib}")
    install(TARGETS isp-case RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT tool)
endif()

install(EXPORT isp_json_targets
        NAMESPACE isp_json::
        FILE isp_json-targets.cmake
        DESTINATION "${ISP_JSON_INSTALL_CMAKEDIR}"
        COMPONENT development)
install(EXPORT isp_platform_sim_targets
        NAMESPACE isp_json::
        FILE isp_platform_sim-targets.cmake
        DESTINATION "${ISP_JSON_INSTALL_CMAKEDIR}"
        COMPONENT simulator)

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
foreach(pc IN ITEMS isp_json:development isp_platform_sim:simulator)
    string(REPLACE ":" ";" pc "${pc}")
    list(GET pc 0 name)
    list(GET pc 1 component)
    configure_file("${CMAKE_CURRENT_LIST_DIR}/${name}.pc.in" "${PROJECT_BINARY_DIR}/${name}.pc" @ONLY)
    install(FILES "${PROJECT_BINARY_DIR}/${name}.pc"
            DESTINATION "${ISP_JSON_INSTALL_PKGCONFIGDIR}"
            COMPONENT ${component})
endforeach()

# ---- Packages (cpack, see scripts/package.sh) ----
# Two packages from the same components, chosen when cpack runs (cmake/package-kind.cmake):
#   target       (cpack -D ISP_PACKAGE=target)       library, recorder, headers, CMake and
#                pkg-config files: what the board's root file system needs, a .deb and a .tar.gz
#   workstation  (cpack -D ISP_PACKAGE=workstation)  all of it: the tool, the simulated platform,
#                the library and the recorder
set(CPACK_PACKAGE_NAME "isp-json")
set(CPACK_PACKAGE_VENDOR "isp_json")
set(CPACK_PACKAGE_CONTACT "isp_json maintainers <isp-json@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "ISP JSON module library: register-file replay on the ISP")
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
set(CPACK_GENERATOR "TGZ;DEB")
set(CPACK_PACKAGING_INSTALL_PREFIX "/usr")
set(CPACK_ARCHIVE_COMPONENT_INSTALL ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING ALL_COMPONENTS_IN_ONE)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_STRIP_FILES ON)
# cross builds cannot run dpkg-shlibdeps on the target's libraries: the dependencies are named
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libc6, libstdc++6")
if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(arm|armv7.*)$")
    set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE armhf)
elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "^(aarch64|arm64)$")
    set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE arm64)
elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64)$")
    set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE amd64)
endif()
set(CPACK_SYSTEM_NAME "${CPACK_DEBIAN_PACKAGE_ARCHITECTURE}")
set(CPACK_PROJECT_CONFIG_FILE "${CMAKE_CURRENT_LIST_DIR}/package-kind.cmake")
include(CPack)
