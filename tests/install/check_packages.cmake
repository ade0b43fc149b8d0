# The two packages, built by cpack in the build tree, unpacked into scratch roots as a system's
# package manager would put them: the target's .deb (dpkg-deb -x) holds the library, the
# recorder, the headers and the CMake and pkg-config files, and neither the tool nor the
# simulated platform; the workstation's .tar.gz holds everything, and is the tree the consumers
# of check_install.cmake then build against. Sets prefix.
file(REMOVE_RECURSE "${WORK_DIR}")
foreach(kind IN ITEMS target workstation)
    run("cpack ${kind}" "${CPACK_COMMAND}" --config "${BUILD_DIR}/CPackConfig.cmake"
        -D ISP_PACKAGE=${kind} -B "${WORK_DIR}/packages")
endforeach()
file(GLOB deb "${WORK_DIR}/packages/isp-json-target-*.deb")
file(GLOB tgz "${WORK_DIR}/packages/isp-json-workstation-*.tar.gz")
if(NOT deb OR NOT tgz)
    message(FATAL_ERROR "cpack made no target .deb or workstation .tar.gz in ${WORK_DIR}/packages")
endif()

run("dpkg-deb -x" dpkg-deb -x "${deb}" "${WORK_DIR}/target-root")
set(target_lib "${WORK_DIR}/target-root/usr/${LIBDIR}")
foreach(file IN ITEMS "${LIBDIR}/libisp_json.so.2" "${LIBDIR}/libisp_record.so"
        "${INCLUDEDIR}/isp_json/isp_json.h" "${LIBDIR}/cmake/isp_json/isp_json-config.cmake"
        "${LIBDIR}/pkgconfig/isp_json.pc")
    if(NOT EXISTS "${WORK_DIR}/target-root/usr/${file}")
        message(FATAL_ERROR "the target package lacks /usr/${file}")
    endif()
endforeach()
foreach(file IN ITEMS "${BINDIR}/isp-case" "${LIBDIR}/libisp_platform_sim.so.2"
        "${INCLUDEDIR}/isp_json/isp_sim.h")
    if(EXISTS "${WORK_DIR}/target-root/usr/${file}")
        message(FATAL_ERROR "the target package holds the workstation's /usr/${file}")
    endif()
endforeach()

file(MAKE_DIRECTORY "${WORK_DIR}/workstation-root")
run("unpacking the workstation package" "${CMAKE_COMMAND}" -E chdir "${WORK_DIR}/workstation-root"
    "${CMAKE_COMMAND}" -E tar xf "${tgz}")
set(prefix "${WORK_DIR}/workstation-root/usr")
