/* The manifest of a dump: what was replayed and, for every push, where it came from and which
 * files hold it, and the run's verdict and findings. Written at the dump's root as manifest.json;
 * read back by diff and report. */
#ifndef ISP_CASE_MANIFEST_H
#define ISP_CASE_MANIFEST_H

#include <stddef.h>
#include <stdint.h>

#include <string>
#include <vector>

#include <picojson.h>

#include "tools/core/case_layout.h"
#include "tools/core/findings.h"
#include "tools/core/run_record.h"
#include "tools/core/step.h"

namespace isp_case {

/* 2: steps as values, the run's verdict and findings; version 1 is still read */
constexpr int manifest_version = 2;

/* A register file a push was converted from. */
struct manifest_source {
    int partition = 0;
    int channel   = 0;
    std::string file; /* relative to the case directory: "cfgs/f1/rtl_wbc_p3.json" */
};

struct manifest_push {
    step_id id;
    std::string step;   /* its directory in the dump: "setup", "frame1", ... */
    std::string module; /* "cc" */
    std::string block;  /* "clc" */
    int channel  = 0;
    uint32_t cmd = 0;
    std::string group; /* "" for a command the tool does not know */
    std::string type;  /* C type name, "" when unknown */
    size_t size = 0;   /* bytes pushed */
    std::vector<manifest_source> sources;
    /* dump files, relative to its root */
    std::string bin, json;
    std::vector<std::string> cmodel;  /* .cmodel.json, or one .p<P>.cmodel.json per partition */
    std::vector<std::string> targets; /* raw arrays behind pointer members */
};

struct manifest {
    std::string tool;    /* "isp-case 2.0.0" */
    std::string library; /* the library's version banner, or "libisp_json <version>" */
    std::string case_path;
    int part_h = 0, part_v = 0, channels = 0, frames = 0;
    unsigned pointer_bytes = 0;
    std::vector<std::string> modules, bypass;
    std::vector<applied_override> overrides; /* written only when values were set */
    std::vector<manifest_push> pushes;
    /* the run's verdict and findings (kept up to a limit, the rest counted); none in version 1 */
    bool judged = false;
    verdict run;
    std::vector<finding> findings;
    size_t findings_not_listed = 0;
};

picojson::value manifest_json(const manifest &m);
/* One entry of the manifest's "pushes". */
picojson::value push_json(const manifest_push &p);

/* A file's bytes, and a file's JSON value: false with "<path>: cannot be read" or "<path>: not
 * JSON: <reason>" in error. */
bool read_file_bytes(const std::string &path, std::string &out, std::string &error);
bool read_json_file(const std::string &path, picojson::value &out, std::string &error);

}  // namespace isp_case

#endif
