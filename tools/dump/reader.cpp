/* Reading a dump: the manifest, checked against its files, and the decoded members of a push,
 * checked against its raw bytes. */
#include "tools/dump/reader.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <map>
#include <set>

#include <fmt/core.h>

#include "convert/common/register_map.h"
#include "modules/tables.h"
#include "tools/dump/decode.h"
#include "tools/dump/manifest.h"

namespace isp_case {
namespace {

namespace fs = std::filesystem;
using picojson::value;

/* ---- manifest fields: every accessor throws with the key it missed ------------------------ */

struct bad_field : std::runtime_error {
    using std::runtime_error::runtime_error;
};

const value &at(const picojson::object &o, const char *key) {
    auto it = o.find(key);
    if (it == o.end()) throw bad_field(std::string("no \"") + key + "\"");
    return it->second;
}

const picojson::object &object_of(const value &v, const char *key) {
    if (!v.is<picojson::object>()) throw bad_field(std::string(key) + ": not an object");
    return v.get<picojson::object>();
}

const picojson::array &array_at(const picojson::object &o, const char *key) {
    const value &v = at(o, key);
    if (!v.is<picojson::array>()) throw bad_field(std::string(key) + ": not an array");
    return v.get<picojson::array>();
}

std::string string_at(const picojson::object &o, const char *key) {
    const value &v = at(o, key);
    if (v.is<picojson::null>()) return "";
    if (!v.is<std::string>()) throw bad_field(std::string(key) + ": not a string");
    return v.get<std::string>();
}

/* A whole number from min to max (64 bits wide: a command number's range does not fit the
 * target's 32-bit long). */
int64_t number_at(const picojson::object &o, const char *key, int64_t min, int64_t max) {
    const value &v = at(o, key);
    if (!v.is<double>()) throw bad_field(std::string(key) + ": not a number");
    const double d = v.get<double>();
    if (!(d >= double(min) && d <= double(max)) || d != std::floor(d))
        throw bad_field(fmt::format("{}: {} is not a whole number from {} to {}", key,
                                    v.serialize(), min, max));
    return int64_t(d);
}

std::vector<std::string> strings_at(const picojson::object &o, const char *key) {
    std::vector<std::string> out;
    for (const value &v : array_at(o, key)) {
        if (!v.is<std::string>()) throw bad_field(std::string(key) + ": not a string");
        out.push_back(v.get<std::string>());
    }
    return out;
}

constexpr int64_t k_most = int64_t{1} << 30;

/* Version 2: {"phase": "frame", "frame": 3, "dir": 3}. Version 1 named the step "init" or
 * "frameK", K counted from 0 for the cycle that read f(K+1); its directory comes from the
 * sources afterwards (dir -1 until then). */
step_id step_of(const value &v, int version) {
    step_id step;
    if (version == 1) {
        const std::string name = v.is<std::string>() ? v.get<std::string>() : "";
        if (name == "init") return step;
        const std::string digits = name.rfind("frame", 0) == 0 ? name.substr(5) : "";
        if (digits.empty() || digits.size() > 9 ||
            digits.find_first_not_of("0123456789") != std::string::npos)
            throw bad_field("step: \"" + name + "\" is not init or frameN");
        step.kind   = phase::frame;
        step.number = std::stoi(digits) + 1;
        step.dir    = -1;
        return step;
    }
    const picojson::object &o = object_of(v, "step");
    const std::string kind    = string_at(o, "phase");
    if (kind == "setup" || kind == "teardown") {
        step.kind = kind == "setup" ? phase::setup : phase::teardown;
        return step;
    }
    if (kind != "frame")
        throw bad_field("step: phase \"" + kind + "\" is not setup, frame or teardown");
    step.kind   = phase::frame;
    step.number = int(number_at(o, "frame", 1, k_most));
    step.dir    = int(number_at(o, "dir", 0, step.number));
    return step;
}

/* "cfgs/f3/rtl_wbc_p0.json": 3; -1 for a file outside the frame directories */
int frame_dir_of(const std::string &file) {
    if (file.rfind("cfgs/f", 0) != 0) return -1;
    const size_t end         = file.find('/', 6);
    const std::string digits = file.substr(6, end == std::string::npos ? end : end - 6);
    if (digits.empty() || digits.size() > 9 ||
        digits.find_first_not_of("0123456789") != std::string::npos)
        return -1;
    return std::stoi(digits);
}

bool same_step(const step_id &x, const step_id &y) {
    return x.kind == y.kind && x.number == y.number;
}

/* A push of the manifest; in version 3, of the step's entry. */
dump_push push_of(const picojson::object &o, int version, int partitions, const step_id *step) {
    dump_push p;
    p.step                         = step ? *step : step_of(at(o, "step"), version);
    p.module                       = string_at(o, "module");
    p.block                        = string_at(o, "block");
    p.channel                      = int(number_at(o, "channel", 0, k_most));
    p.command                      = uint32_t(number_at(o, "cmd", 0, 0xFFFFFFFF));
    p.group                        = string_at(o, "group");
    p.type                         = string_at(o, "type");
    p.size                         = size_t(number_at(o, "size", 0, k_most));
    const isp::module_desc *module = isp::find_module(p.module);
    if (version >= 3 && !o.count("sources")) {
        /* the files the step's directory holds for the module */
        if (!module) throw bad_field("sources: none for module \"" + p.module + "\"");
        const int dir =
            p.step.dir + int(o.count("read") ? number_at(o, "read", -p.step.dir, k_most) : 0);
        for (const manifest_source &s : sources_read(*module, dir, p.channel, partitions))
            p.sources.push_back({s.partition, s.channel, s.file});
    } else
        for (const value &s : array_at(o, "sources")) {
            const picojson::object &so = object_of(s, "sources");
            p.sources.push_back({int(number_at(so, "partition", 0, k_most)),
                                 int(number_at(so, "channel", 0, k_most)), string_at(so, "file")});
        }
    if (version < 3 || o.count("files")) {
        const picojson::object &files = object_of(at(o, "files"), "files");
        p.json                        = string_at(files, "json");
        p.cmodel                      = strings_at(files, "cmodel");
    }
    if (version < 3) {
        const picojson::object &files = object_of(at(o, "files"), "files");
        p.bin                         = string_at(files, "bin");
        p.targets                     = strings_at(files, "targets");
        return p;
    }
    p.object = string_at(o, "object");
    const picojson::object none;
    for (const auto &[member, key] :
         o.count("pointees") ? object_of(at(o, "pointees"), "pointees") : none) {
        if (!key.is<std::string>()) throw bad_field("pointees: " + member + ": not a string");
        p.pointees.emplace_back(member, key.get<std::string>());
    }
    return p;
}

dump_verdict verdict_of(const picojson::object &o) {
    dump_verdict v;
    v.recorded          = true;
    v.result            = string_at(o, "result");
    v.text              = string_at(o, "text");
    v.errors            = int(number_at(o, "errors", 0, k_most));
    v.warnings          = int(number_at(o, "warnings", 0, k_most));
    const value &strict = at(o, "strict");
    if (!strict.is<bool>()) throw bad_field("strict: not true or false");
    v.strict = strict.get<bool>();
    return v;
}

void read_manifest(const value &root, dump &d) {
    const picojson::object &o = object_of(root, "the manifest");
    /* "manifest_version" since the first layout; a writer may also spell it "version" */
    const char *version_key =
        o.count("version") && !o.count("manifest_version") ? "version" : "manifest_version";
    d.version = int(number_at(o, version_key, 0, k_most));
    if (d.version < 1 || d.version > 3)
        throw bad_field(fmt::format("manifest_version {} is not 1, 2 or 3", d.version));
    if (o.count("recording")) {
        const value &recording = at(o, "recording");
        if (!recording.is<bool>()) throw bad_field("recording: not true or false");
        d.recording = recording.get<bool>();
    }
    d.tool                       = string_at(o, "tool");
    d.library                    = string_at(o, "library");
    d.case_path                  = string_at(o, "case");
    const picojson::object &grid = object_of(at(o, "grid"), "grid");
    d.part_h                     = int(number_at(grid, "h", 0, 255));
    d.part_v                     = int(number_at(grid, "v", 0, 255));
    d.channels                   = int(number_at(o, "channels", 0, 6));
    d.frames                     = int(number_at(o, "frames", 0, k_most));
    d.pointer_bytes              = unsigned(number_at(o, "pointer_bytes", 0, 16));
    d.modules                    = strings_at(o, "modules");
    d.bypass                     = strings_at(o, "bypass");
    if (o.count("overrides"))
        for (const value &v : array_at(o, "overrides")) {
            const picojson::object &set = object_of(v, "overrides");
            const value &real           = at(set, "value");
            if (!real.is<double>()) throw bad_field("overrides: value: not a number");
            d.overrides.push_back({string_at(set, "set"), real.get<double>(),
                                   number_at(set, "raw", INT32_MIN, UINT32_MAX),
                                   int(number_at(set, "files", 0, k_most))});
        }
    /* the run's verdict and findings, where the writer recorded them */
    if (o.count("verdict")) d.verdict = verdict_of(object_of(at(o, "verdict"), "verdict"));
    if (o.count("findings")) d.findings = array_at(o, "findings");
    if (o.count("findings_not_listed"))
        d.findings_not_listed = size_t(number_at(o, "findings_not_listed", 0, k_most));
    if (d.version >= 3) d.store_dir = string_at(o, "store");
    const int partitions = std::min(d.part_h * d.part_v, 256);
    if (d.version < 3) {
        for (const value &p : array_at(o, "pushes"))
            d.pushes.add(push_of(object_of(p, "pushes"), d.version, partitions, nullptr));
        return;
    }
    std::map<int, std::pair<size_t, size_t>> frame_pushes; /* first push and count of a frame */
    for (const value &e : array_at(o, "steps")) {
        const picojson::object &entry = object_of(e, "steps");
        const step_id step            = step_of(at(entry, "step"), d.version);
        const size_t start            = d.pushes.size();
        if (!entry.count("same_as")) {
            for (const value &p : array_at(entry, "pushes"))
                d.pushes.add(push_of(object_of(p, "pushes"), d.version, partitions, &step));
        } else {
            /* a frame that pushed what an earlier frame pushed, but for the pushes listed */
            const int same_as  = int(number_at(entry, "same_as", 1, k_most));
            const auto earlier = frame_pushes.find(same_as);
            if (earlier == frame_pushes.end() || step.kind != phase::frame ||
                same_as >= step.number)
                throw bad_field(fmt::format("steps: {}: same_as {} names no earlier frame",
                                            step_name(step), same_as));
            const auto [first, count] = earlier->second;
            for (size_t i = first; i < first + count; ++i) d.pushes.repeat(i, step);
            if (entry.count("except"))
                for (const auto &[index, changed] : object_of(at(entry, "except"), "except")) {
                    const bool number = !index.empty() && index.size() < 10 &&
                                        index.find_first_not_of("0123456789") == std::string::npos;
                    const size_t i = number ? std::stoul(index) : count;
                    if (i >= count)
                        throw bad_field(fmt::format("except: {}: frame {} has {} pushes", index,
                                                    same_as, count));
                    d.pushes.replace(start + i, push_of(object_of(changed, "except"), d.version,
                                                        partitions, &step));
                }
        }
        if (step.kind != phase::frame) continue;
        if (!frame_pushes.emplace(step.number, std::make_pair(start, d.pushes.size() - start))
                 .second)
            throw bad_field(fmt::format("steps: {} twice", step_name(step)));
    }
}

/* Version 1 gave no directory: a frame step read the one its sources name, f(N) where none
 * does. */
void dirs_from_sources(dump &d) {
    std::map<int, int> dir_of;
    for (const dump_push &p : d.pushes.all_listed())
        if (p.step.kind == phase::frame)
            for (const dump_source &s : p.sources)
                if (const int dir = frame_dir_of(s.file); dir >= 0)
                    dir_of.emplace(p.step.number, dir);
    d.pushes.each_step([&](step_id &step) {
        if (step.dir >= 0) return;
        const auto it = dir_of.find(step.number);
        step.dir      = it == dir_of.end() ? step.number : it->second;
    });
}

/* ---- wholeness ----------------------------------------------------------------------------- */

/* A push against the grid, channels, frames and modules of its manifest. */
void check_push(const dump &d, const dump_push &p, const step_id &step,
                const std::string &manifest) {
    const std::string where        = manifest + ": push " + (p.bin.empty() ? p.module : p.bin);
    const isp::module_desc *module = isp::find_module(p.module);
    if (!module) throw dump_error(where + ": no module is called \"" + p.module + "\"");
    if (std::find(d.modules.begin(), d.modules.end(), p.module) == d.modules.end())
        throw dump_error(where + ": module " + p.module + " is not among the manifest's modules");
    if (step.kind == phase::frame && step.number > d.frames)
        throw dump_error(fmt::format("{}: {} but the manifest says {} frame(s)", where,
                                     step_name(step), d.frames));
    const int channels = std::max(d.channels, 1);
    if (p.channel >= channels)
        throw dump_error(fmt::format("{}: channel {} but the manifest says {} channel(s)", where,
                                     p.channel, d.channels));
    if (p.sources.empty()) return;
    if (int(p.sources.size()) != std::min(d.partitions(), 256))
        throw dump_error(fmt::format(
            "{}: converted from {} partition file(s) but the manifest's grid {}x{} has {} "
            "partition(s)",
            where, p.sources.size(), d.part_h, d.part_v, d.partitions()));
    for (const dump_source &s : p.sources)
        if (s.partition >= d.partitions() || s.channel >= channels)
            throw dump_error(fmt::format(
                "{}: source {} (partition {}, channel {}) outside the manifest's grid {}x{} and "
                "{} channel(s)",
                where, s.file, s.partition, s.channel, d.part_h, d.part_v, d.channels));
}

/* Every object a push names is in the store, with the push's size. */
void check_objects(const dump &d, const dump_push &p, const std::string &manifest) {
    const std::string index = d.store.dir() + "/" + k_index_file;
    const auto lacks        = [&](const std::string &key) {
        return dump_error(fmt::format("{}: push {}/{}: object {} is not in the store {}", manifest,
                                             step_dir(p.step), p.module, key.empty() ? "\"\"" : key,
                                             index));
    };
    const object_place *object = d.store.find(p.object);
    if (!object) throw lacks(p.object);
    if (object->size != p.size)
        throw dump_error(fmt::format("{}: object {} has {} bytes, but {} says push {}/{} has {}",
                                     index, p.object, object->size, manifest, step_dir(p.step),
                                     p.module, p.size));
    for (const auto &[member, key] : p.pointees)
        if (!d.store.find(key)) throw lacks(key);
}

/* Every file the manifest lists is a regular file, and every .bin holds its push's bytes. */
void check_files(const dump &d) {
    /* each listed push once, in the order pushes first name them: a repeated one has the
     * files, and the faults, of the push it repeats */
    std::vector<bool> lacks(d.pushes.all_listed().size(), false);
    std::string first;
    for (size_t k = 0; k < d.pushes.all_listed().size(); ++k) {
        const dump_push &p = d.pushes.all_listed()[k];
        if (d.version >= 3) check_objects(d, p, d.dir + "/manifest.json");
        std::vector<const std::string *> files;
        if (d.version < 3) files.push_back(&p.bin);
        if (d.version < 3 ? !d.recording || !p.json.empty() : !p.json.empty())
            files.push_back(&p.json);
        for (const std::string &f : p.cmodel) files.push_back(&f);
        for (const std::string &f : p.targets) files.push_back(&f);
        bool whole = true;
        for (const std::string *f : files) {
            std::error_code error;
            if (!f->empty() && fs::is_regular_file(d.dir + "/" + *f, error)) continue;
            if (first.empty()) first = d.dir + "/" + *f;
            whole = false;
        }
        if (!whole) {
            lacks[k] = true;
            continue;
        }
        std::error_code error;
        const uintmax_t size = p.bin.empty() ? p.size : fs::file_size(d.dir + "/" + p.bin, error);
        if (!error && size != p.size)
            throw dump_error(fmt::format("{}/{}: {} bytes, but the manifest says the push has {}",
                                         d.dir, p.bin, size, p.size));
    }
    size_t lacking = 0;
    for (size_t i = 0; i < d.pushes.size(); ++i) lacking += lacks[d.pushes.listed_index(i)];
    if (lacking)
        throw dump_error(fmt::format(
            "{}: not a whole dump: {} of the manifest's {} pushes lack files, the first {}", d.dir,
            lacking, d.pushes.size(), first));
}

/* ---- decoded members ------------------------------------------------------------------------ */

const value &field(const value &o, const char *key) {
    static const value null;
    return o.is<picojson::object>() && o.contains(key) ? o.get(key) : null;
}

std::string text_of(const value &v) {
    return v.is<std::string>() ? v.get<std::string>() : std::string();
}

std::vector<double> numbers(const value &v) {
    std::vector<double> out;
    if (v.is<double>()) out.push_back(v.get<double>());
    if (v.is<picojson::array>())
        for (const value &e : v.get<picojson::array>())
            out.push_back(e.is<double>() ? e.get<double>() : NAN);
    return out;
}

dump_member member_of(const value &m) {
    dump_member v;
    v.name     = text_of(field(m, "name"));
    v.format   = text_of(field(m, "format"));
    v.location = text_of(field(m, "register"));
    v.count    = unsigned(field(m, "count").is<double>() ? field(m, "count").get<double>() : 1);
    v.pointer  = field(m, "pointer").is<bool>() && field(m, "pointer").get<bool>();
    /* a pointer is read as the array it leads to, where that was recorded */
    const value &holder = field(m, "target").is<picojson::object>() ? field(m, "target") : m;
    v.per_partition =
        field(holder, "per_partition").is<bool>() && field(holder, "per_partition").get<bool>();
    v.scalar = holder.contains("code");
    v.codes  = numbers(field(holder, v.scalar ? "code" : "codes"));
    v.values = numbers(field(holder, v.scalar ? "value" : "values"));
    if (field(m, "registers").is<picojson::array>())
        for (const value &e : field(m, "registers").get<picojson::array>())
            v.locations.push_back(text_of(e));
    return v;
}

std::string read_bytes(const std::string &path) {
    std::string bytes, error;
    if (!read_file_bytes(path, bytes, error)) throw dump_error(error);
    return bytes;
}

/* The first member whose codes the raw bytes do not give; empty when they all agree. */
std::string disagreeing_member(const std::vector<dump_member> &from_bytes,
                               const std::vector<dump_member> &written) {
    for (size_t i = 0; i < std::max(from_bytes.size(), written.size()); ++i) {
        if (i >= from_bytes.size() || i >= written.size())
            return i < written.size() ? written[i].name : from_bytes[i].name;
        const dump_member &x = from_bytes[i], &y = written[i];
        if (x.name != y.name || x.codes != y.codes) return y.name;
    }
    return "";
}

/* The element size of the array behind a pointer member: the one its register rows store. */
unsigned pointee_size(const isp::struct_desc *layout, const isp::block_map *map,
                      const std::string &member) {
    for (uint32_t i = 0; layout && map && i < layout->member_count; ++i)
        if (member == layout->members[i].name)
            if (const isp::field_row *row = isp::member_row(*map, *layout, layout->members[i]))
                return row->member.elem_size;
    return pointee().elem_size;
}

}  // namespace

const dump_member *decoded_push::member(const std::string &name) const {
    for (const dump_member &m : members)
        if (m.name == name) return &m;
    return nullptr;
}

dump open_dump(const std::string &dir) {
    const std::string path = dir + "/manifest.json";
    value root;
    std::string error;
    if (!read_json_file(path, root, error)) throw dump_error(error);
    dump d;
    d.dir = dir;
    try {
        read_manifest(root, d);
    } catch (const bad_field &e) {
        throw dump_error(path + ": " + e.what());
    }
    if (d.version == 1) dirs_from_sources(d);
    if (d.version >= 3) {
        /* "dir/.." for a shared store: its files named without the detour */
        std::string store = (fs::path(d.dir) / d.store_dir).lexically_normal().generic_string();
        if (store.size() > 1 && store.back() == '/') store.pop_back();
        d.store = store_reader(store);
    }
    for (dump_push &p : d.pushes.all_listed())
        p.channelled =
            isp::find_module(p.module) &&
            isp::file_kind_of(*isp::find_module(p.module)) == isp::file_kind::per_channel;
    /* a listed push once; again only in a step past the frames the manifest states */
    std::vector<bool> checked(d.pushes.all_listed().size(), false);
    for (size_t s = 0; s < d.pushes.spans().size(); ++s) {
        const step_id &step = d.pushes.spans()[s].step;
        const bool beyond   = step.kind == phase::frame && step.number > d.frames;
        for (size_t i = d.pushes.spans()[s].first; i < d.pushes.span_end(s); ++i) {
            const size_t k = d.pushes.listed_index(i);
            if (checked[k] && !beyond) continue;
            checked[k] = true;
            check_push(d, d.pushes.listed(i), step, path);
        }
        d.steps.push_back(step);
    }
    check_files(d);
    return d;
}

decoded_push read_push(const dump &d, const dump_push &push) {
    const std::string json_path = d.dir + "/" + push.json, bin_path = d.dir + "/" + push.bin;
    const bool decoded_file = !push.json.empty();
    value written;
    std::string error;
    decoded_push out;
    if (decoded_file) {
        if (!read_json_file(json_path, written, error)) throw dump_error(error);
        if (!field(written, "members").is<picojson::array>())
            throw dump_error(json_path + ": not a decoded structure");
        out.problem = text_of(field(written, "problem"));
        for (const value &m : field(written, "members").get<picojson::array>()) {
            if (!m.is<picojson::object>() || !field(m, "name").is<std::string>())
                throw dump_error(json_path + ": a member without a name");
            out.members.push_back(member_of(m));
        }
    }
    /* its size checked when the dump was opened */
    out.bytes = push.object.empty() ? read_bytes(bin_path) : d.store.read(push.object);
    if (decoded_file &&
        (!field(written, "size").is<double>() || field(written, "size").get<double>() != push.size))
        throw dump_error(fmt::format("{}: size {}, but the manifest says the push has {}",
                                     json_path, field(written, "size").serialize(), push.size));

    /* the members again, from the raw bytes and the arrays behind the pointers; a recording's
     * bytes as this build lays the structure out, where the recorder's pointers were narrower */
    std::vector<uint8_t> bytes(out.bytes.begin(), out.bytes.end());
    if (!decoded_file) {
        const std::vector<uint8_t> host = with_host_pointers(
            push.type.empty() ? nullptr : push.type.c_str(), bytes, d.pointer_bytes);
        if (!host.empty()) bytes = host;
    }
    decode_input input;
    input.block                    = push.block.c_str();
    input.type                     = push.type.empty() ? nullptr : push.type.c_str();
    input.bytes                    = &bytes;
    input.partitions               = std::min(d.partitions(), 256);
    const isp::struct_desc *layout = input.type ? isp::find_struct(input.type) : nullptr;
    const isp::block_map *map      = isp::find_block_map(push.block.c_str());
    /* a structure this build does not lay out, or lays out otherwise (a dump of a target whose
     * pointers have another width): its decoded file is taken as written; without one, the
     * decoder says what it cannot lay out */
    if (decoded_file && (!layout || layout->size != bytes.size())) return out;
    for (const auto &[member, key] : push.pointees) {
        const std::string raw = d.store.read(key);
        input.pointees[member].bytes.assign(raw.begin(), raw.end());
        input.pointees[member].elem_size = pointee_size(layout, map, member);
    }
    for (const std::string &target : push.targets) {
        /* "<push>.<member>.bin": the element size is the one its register rows store */
        const std::string stem   = target.substr(0, target.size() - 4);
        const std::string member = stem.substr(stem.rfind('.') + 1);
        pointee p;
        const std::string raw = read_bytes(d.dir + "/" + target);
        p.bytes.assign(raw.begin(), raw.end());
        p.elem_size            = pointee_size(layout, map, member);
        input.pointees[member] = std::move(p);
    }
    std::vector<dump_member> from_bytes;
    const value decoded = decode_structure(input);
    for (const value &m : field(decoded, "members").get<picojson::array>())
        from_bytes.push_back(member_of(m));
    if (!decoded_file) {
        out.problem = text_of(field(decoded, "problem"));
        out.members = std::move(from_bytes);
        return out;
    }
    if (const std::string member = disagreeing_member(from_bytes, out.members); !member.empty())
        throw dump_error((push.object.empty()
                              ? bin_path
                              : d.store.dir() + "/" + k_pack_file + ": object " + push.object) +
                         ": its bytes disagree with " + json_path + " (member " + member + ")");
    return out;
}

void push_list::at_step(const step_id &step) {
    if (spans_.empty() || !same_step(spans_.back().step, step)) spans_.push_back({size(), step});
}

void push_list::add(dump_push push) {
    at_step(push.step);
    refs_.push_back(uint32_t(listed_.size()));
    listed_.push_back(std::move(push));
}

void push_list::repeat(size_t i, const step_id &step) {
    at_step(step);
    refs_.push_back(refs_[i]);
}

void push_list::replace(size_t i, dump_push push) {
    refs_[i] = uint32_t(listed_.size());
    listed_.push_back(std::move(push));
}

const step_id &push_list::step(size_t i) const {
    const auto after = std::upper_bound(spans_.begin(), spans_.end(), i,
                                        [](size_t n, const span &s) { return n < s.first; });
    return std::prev(after)->step;
}

size_t push_list::span_end(size_t s) const {
    return s + 1 < spans_.size() ? spans_[s + 1].first : size();
}

dump_push push_list::operator[](size_t i) const {
    dump_push p = listed(i);
    p.step      = step(i);
    return p;
}

std::string push_file(const dump_push &push) {
    return push.bin.empty() ? push.json : push.bin;
}

std::string step_label(const step_id &step) {
    if (step.kind == phase::setup) return "setup (f0)";
    if (step.kind == phase::teardown || step.dir != step.number) return step_name(step);
    return fmt::format("{} (f{})", step_name(step), step.dir);
}

bool is_frame_step(const step_id &step, int frame) {
    if (frame == 0) return step.kind == phase::setup;
    return step.kind == phase::frame && step.number == frame;
}

const step_id *find_frame(const dump &d, int frame) {
    for (const step_id &s : d.steps)
        if (is_frame_step(s, frame)) return &s;
    return nullptr;
}

}  // namespace isp_case
