/* The manifest of a dump: what was replayed and, for every push, where it came from and which
 * files hold it, and the run's verdict and findings. Written at the dump's root as manifest.json;
 * read back by diff and report. */
#ifndef ISP_CASE_MANIFEST_H
#define ISP_CASE_MANIFEST_H

#include <stddef.h>
#include <stdint.h>

#include <string>
#include <utility>
#include <vector>

#include <picojson.h>

#include "tools/core/findings.h"
#include "tools/core/run_record.h"
#include "modules/tables.h"
#include "tools/core/step.h"

namespace isp_case {

/* 3: raw structures in a store of distinct objects, a repeated step as a reference to the step
 * it repeats; 2: steps as values, the run's verdict and findings, one .bin per push. Versions 1
 * and 2 are still read. */
constexpr int manifest_version = 3;

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
    int read_dir = 0; /* the frame directory its load read (sources_read) */
    /* the store's keys of its bytes (pointer members cleared) and of the arrays behind its
     * pointer members, by member name */
    std::string object;
    std::vector<std::pair<std::string, std::string>> pointees;
    /* decoded files, relative to the dump's root; none in a raw-only dump */
    std::string json;
    std::vector<std::string> cmodel; /* .cmodel.json, or one .p<P>.cmodel.json per partition */
};

struct manifest {
    std::string tool;    /* "isp-case 2.0.0" */
    std::string library; /* the library's version banner, or "libisp_json <version>" */
    std::string case_path;
    std::string store; /* the store directory, relative to the dump's: "." for its own */
    int part_h = 0, part_v = 0, channels = 0, frames = 0;
    unsigned pointer_bytes = 0;
    std::vector<std::string> modules, bypass;
    /* the run's verdict and findings (kept up to a limit, the rest counted); none in version 1 */
    bool judged = false;
    verdict run;
    std::vector<finding> findings;
    size_t findings_not_listed = 0;
};

/* The register files a load of a module's channel reads from a frame directory, one per
 * partition: a push's sources as the manifest leaves them out (version 3). */
std::vector<manifest_source> sources_read(const isp::module_desc &module, int dir, int channel,
                                          int partitions);

/* The manifest, its "steps" empty: the writer streams them in. */
picojson::value manifest_json(const manifest &m);

/* One push of a step entry: "sources" left out when they are sources_read() of the
 * step's directory, or of read_dir, given as "read": read_dir less the step's directory (every
 * partition, partitions as the grid has, at most 256): the entries of two frames that read
 * their own directories alike are the same. */
picojson::value push_json(const manifest_push &p, int partitions);
/* The entry of a step with its pushes. */
picojson::value step_entry_json(const step_id &step, const std::vector<picojson::value> &pushes);
/* The entry of a frame step whose pushes are those of the earlier frame same_as, but for the
 * pushes of the given indexes in except. */
picojson::value repeated_step_json(const step_id &step, int same_as,
                                   const std::vector<std::pair<size_t, picojson::value>> &except);

/* A file's bytes, and a file's JSON value: false with "<path>: cannot be read" or "<path>: not
 * JSON: <reason>" in error. */
bool read_file_bytes(const std::string &path, std::string &out, std::string &error);
bool read_json_file(const std::string &path, picojson::value &out, std::string &error);

}  // namespace isp_case

#endif
