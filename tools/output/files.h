/* Output directories and files that are checked: the dump and the export refuse a place they
 * cannot write before any work, and every file they write is verified on disk. */
#ifndef ISP_CASE_OUTPUT_DIR_H
#define ISP_CASE_OUTPUT_DIR_H

#include <string>

#include <picojson.h>

namespace isp_case {

enum class existing_contents {
    keep,    /* export: files of the same name are replaced, others stay */
    refuse,  /* dump: a directory that is not empty is refused */
    replace, /* dump --force: a directory that is not empty is emptied first */
};

/* Creates the directory if needed and checks that a file can be created in it. Returns "" when
 * it is ready, else the reason, e.g. "not a directory", "cannot create it: Permission denied",
 * "cannot write into it: Read-only file system", "not empty (--force replaces its contents)". */
std::string prepare_output_dir(const std::string &dir, existing_contents contents);

/* Writes text to a file; false with the reason in error when the file is not all there. */
bool write_text_file(const std::string &path, const std::string &text, std::string &error);

/* write_json_file, which reports nothing, then a check that the file holds the whole text. */
bool write_json_checked(const std::string &path, const picojson::value &value, std::string &error);

}  // namespace isp_case

#endif
