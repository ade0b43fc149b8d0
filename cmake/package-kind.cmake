# Read by cpack for every generator: which package it builds, from -D ISP_PACKAGE=target or
# workstation (the default).
if(NOT DEFINED ISP_PACKAGE)
    set(ISP_PACKAGE workstation)
endif()
if(ISP_PACKAGE STREQUAL "target")
    set(CPACK_COMPONENTS_ALL runtime development recorder)
    set(CPACK_DEBIAN_PACKAGE_NAME "isp-json-target")
    set(CPACK_PACKAGE_DESCRIPTION_SUMMARY
        "ISP JSON module library for the board: library, recorder, headers")
elseif(ISP_PACKAGE STREQUAL "workstation")
    set(CPACK_COMPONENTS_ALL runtime development recorder simulator tool)
    set(CPACK_DEBIAN_PACKAGE_NAME "isp-json-workstation")
    set(CPACK_PACKAGE_DESCRIPTION_SUMMARY
        "ISP JSON module library for a workstation: isp-case, simulated platform, library")
else()
    message(FATAL_ERROR "ISP_PACKAGE is target or workstation, not '${ISP_PACKAGE}'")
endif()
set(CPACK_PACKAGE_FILE_NAME
    "${CPACK_DEBIAN_PACKAGE_NAME}-${CPACK_PACKAGE_VERSION}-${CPACK_SYSTEM_NAME}")
set(CPACK_ARCHIVE_FILE_NAME "${CPACK_PACKAGE_FILE_NAME}")
set(CPACK_DEBIAN_FILE_NAME "${CPACK_PACKAGE_FILE_NAME}.deb")
