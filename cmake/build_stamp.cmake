# The build stamp of the version banner: YYYYMMDDhhmmss of the build, honouring
# SOURCE_DATE_EPOCH for reproducible builds.
string(TIMESTAMP ISP_JSON_BUILD_STAMP "%Y%m%d%H%M%S" UTC)
string(TIMESTAMP ISP_JSON_BUILD_DATE "%b %d %Y" UTC)
string(TIMESTAMP ISP_JSON_BUILD_TIME "%H:%M:%S" UTC)
