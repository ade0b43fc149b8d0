/* The manifest of a dump: what was replayed and, for every push, where it came from and which
 * files hold it. Written at the dump's root as manifest.json; read back by diff. */
#ifndef ISP_CASE_MANIFEST_H
#define ISP_CASE_MANIFEST_H

#include <stddef.h>
#include <stdint.h>

#include <string>
#include <vector>

#include <picojson.h>

namespace isp_case {

constexpr int manifest_version = 1;

/* A register file a push was converted from. */
struct manifest_source {
    int partition = 0;
    int channel   = 0;
    std::string file; /* relative to the case directory: "cfgs/f1/rtl_wbc_p3.json" */
};

struct manifest_push {
    std::string step;   /* "init", "frame0", ... */
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
    std::vector<manifest_push> pushes;
};

picojson::value manifest_json(const manifest &m);
/* One entry of the manifest's "pushes". */
picojson::value push_json(const manifest_push &p);
/* False with the reason in error when the value is not a manifest this tool writes. */
bool manifest_from_json(const picojson::value &value, manifest &out, std::string &error);

/* A file's bytes, and a file's JSON value: false with "<path>: cannot be read" or "<path>: not
 * JSON: <reason>" in error. */
bool read_file_bytes(const std::string &path, std::string &out, std::string &error);
bool read_json_file(const std::string &path, picojson::value &out, std::string &error);

}  // namespace isp_case

#endif
