# fmt for a cross build: the host has fmt's headers (arch-independent) but its compiled library
# only for the host, so the target uses fmt header-only, compiled into each user with the target
# compiler. Gives the same fmt::fmt target as fmt's own package configuration.
include(FindPackageHandleStandardArgs)

find_path(fmt_INCLUDE_DIR fmt/core.h)
if(fmt_INCLUDE_DIR AND EXISTS "${fmt_INCLUDE_DIR}/fmt/core.h")
    file(STRINGS "${fmt_INCLUDE_DIR}/fmt/core.h" fmt_version_line
         REGEX "^#define FMT_VERSION [0-9]+")
    string(REGEX REPLACE "^#define FMT_VERSION ([0-9]+).*" "\\1" fmt_version_number
           "${fmt_version_line}")
    math(EXPR fmt_major "${fmt_version_number} / 10000")
    math(EXPR fmt_minor "${fmt_version_number} / 100 % 100")
    math(EXPR fmt_patch "${fmt_version_number} % 100")
    set(fmt_VERSION "${fmt_major}.${fmt_minor}.${fmt_patch}")
endif()

find_package_handle_standard_args(fmt REQUIRED_VARS fmt_INCLUDE_DIR VERSION_VAR fmt_VERSION)

if(fmt_FOUND AND NOT TARGET fmt::fmt)
    add_library(fmt::fmt-header-only INTERFACE IMPORTED)
    set_target_properties(fmt::fmt-header-only PROPERTIES
        INTERFACE_INCLUDE_DIRECTORIES "${fmt_INCLUDE_DIR}"
        INTERFACE_COMPILE_DEFINITIONS FMT_HEADER_ONLY=1)
    add_library(fmt::fmt INTERFACE IMPORTED)
    set_target_properties(fmt::fmt PROPERTIES INTERFACE_LINK_LIBRARIES fmt::fmt-header-only)
endif()
mark_as_advanced(fmt_INCLUDE_DIR)
