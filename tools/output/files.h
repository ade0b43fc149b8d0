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
    replace, /* dump --force: a previous dump (it holds the tool's manifest) is emptied first */
};

/* Creates the directory if needed and checks that a file can be created in it. Returns "" when
 * it is ready, else the reason, e.g. "not a directory", "cannot create it: Permission denied",
 * "cannot write into it: Read-only file system", "not empty (--force replaces its contents)".
 * Only a directory that holds a dump's manifest is ever emptied. */
std::string prepare_output_dir(const std::string &dir, existing_contents contents);

/* How an output place lies against an input, both taken by their real paths (symbolic links
 * followed, the parts that do not exist yet as written). */
enum class overlap { apart, same, holds, inside };
overlap overlap_of(const std::string &output, const std::string &input);

/* "" when an output directory (a dump, an export) leaves the case alone; else the reason: it is
 * the case, holds it (--force would delete it), or lies in its cfgs/ (where the library would
 * step into it as a frame directory). */
std::string case_place_problem(const std::string &out_dir, const std::string &case_path);

/* Descriptors 0 to 2 that are closed are opened on /dev/null for reading, so that no file the
 * tool opens later takes their number (a capture of standard error would otherwise receive
 * what is printed to a closed standard output), and a write to them fails as it should. */
void reserve_standard_streams();

/* Flushes standard output: "" when everything printed reached it, else the reason. */
std::string finish_standard_output();

/* Writes text to a file; false with the reason in error when the file is not all there. */
bool write_text_file(const std::string &path, const std::string &text, std::string &error);

/* write_json_file, which reports nothing, then a check that the file holds the whole text. */
bool write_json_checked(const std::string &path, const picojson::value &value, std::string &error);

/* A directory of its own under the system's temporary directory (TMPDIR), removed with what it
 * holds: where a run is dumped only to be compared. path() is empty when none could be made. */
class scratch_dir {
  public:
    explicit scratch_dir(const std::string &prefix);
    ~scratch_dir();
    scratch_dir(const scratch_dir &)            = delete;
    scratch_dir &operator=(const scratch_dir &) = delete;
    const std::string &path() const { return path_; }

  private:
    std::string path_;
};

}  // namespace isp_case

#endif
