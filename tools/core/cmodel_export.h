/* Register files to C-model parameter files: every exporter of every block, on one frame,
 * partition and channel of a case. */
#ifndef ISP_CASE_EXPORT_CASE_H
#define ISP_CASE_EXPORT_CASE_H

#include <cstdio>
#include <string>
#include <vector>

namespace isp_case {

struct export_settings {
    std::string case_path;
    int frame     = 0;
    int partition = 0;
    int channel   = 0; /* for the channelled blocks' files */
    std::string out_dir;
};

struct export_result {
    /* Set when nothing could be exported, with no file created: "no frame directory cfgs/f5",
     * or the output directory and why it cannot be written. */
    std::string refused;
    bool no_frame = false;             /* refused for want of the frame directory */
    std::vector<std::string> written;  /* C-model files, in writing order */
    std::vector<std::string> warnings; /* fields the converters could not read */
    std::vector<std::string> errors;   /* register files that cannot be converted */
};

/* Writes <out_dir>/<block>_<group>.json for every group that has an exporter; a register file
 * that is missing or malformed is reported and its block skipped, and so is a file that cannot
 * be written. A missing frame directory or an output directory that cannot be written refuses
 * the export before anything is created. */
export_result export_case(const export_settings &settings);
void print_export(std::FILE *out, const export_settings &settings, const export_result &result);

/* The register file of a block, relative to the case directory: the per-channel file for the
 * channelled blocks. */
std::string block_file(const std::string &block, int frame, int partition, int channel);

}  // namespace isp_case

#endif
