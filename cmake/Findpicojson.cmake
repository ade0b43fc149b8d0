# picojson: the header-only JSON library (Debian's picojson-dev), as the imported target
# picojson::picojson. Set picojson_INCLUDE_DIR to use another copy.
find_path(picojson_INCLUDE_DIR picojson.h)
mark_as_advanced(picojson_INCLUDE_DIR)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(picojson
    REQUIRED_VARS picojson_INCLUDE_DIR
    REASON_FAILURE_MESSAGE "install picojson (Debian: picojson-dev) or set picojson_INCLUDE_DIR")

if(picojson_FOUND AND NOT TARGET picojson::picojson)
    add_library(picojson::picojson INTERFACE IMPORTED)
    set_target_properties(picojson::picojson PROPERTIES
        INTERFACE_INCLUDE_DIRECTORIES "${picojson_INCLUDE_DIR}")
endif()
