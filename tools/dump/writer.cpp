/* Writing the pushed groups of a replay, their decoded members and the manifest. */
#include "tools/dump/writer.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <stdexcept>

#include <fmt/core.h>

#include "tools/core/converter_run.h"
#include "tools/dump/decode.h"
#include "tools/dump/reader.h"
#include "tools/output/files.h"

namespace isp_case {
namespace {

namespace fs = std::filesystem;

const char k_banner_prefix[] = "[SDK version]: ";

bool loads(op_kind kind) {
    return kind == op_kind::init || kind == op_kind::process;
}

/* The register files a push was converted from: every partition of the file its load read,
 * for the push's channel. */
std::vector<manifest_source> sources_of(const module_info &module, const op_outcome &op,
                                        const pushed_group &push, int partitions, int &frame) {
    std::vector<manifest_source> sources;
    if (!loads(op.kind) || !op.ran) return sources;
    if (file_kind_of(module) != file_kind::pattern) {
        const size_t pass = file_kind_of(module) == file_kind::per_channel ? push.channel : 0;
        if (pass >= op.frames_read.size()) return sources;
        frame = op.frames_read[pass];
    }
    return sources_read(module, frame, push.channel, partitions);
}

bool holds_containers(const picojson::value &v) {
    auto container = [](const picojson::value &x) {
        return x.is<picojson::array>() || x.is<picojson::object>();
    };
    if (v.is<picojson::array>())
        return std::any_of(v.get<picojson::array>().begin(), v.get<picojson::array>().end(),
                           container);
    if (v.is<picojson::object>())
        for (const auto &[key, x] : v.get<picojson::object>())
            if (container(x)) return true;
    return false;
}

/* One member, or one push, per line: the two outer levels are broken into lines when they hold
 * objects or arrays, everything deeper stays on one line, so that a line-wise comparison of two
 * dumps shows whole members. */
void layout(const picojson::value &v, int depth, std::string &out) {
    if (depth >= 2 || !holds_containers(v)) {
        out += v.serialize();
        return;
    }
    const std::string indent(2 * (depth + 1), ' ');
    bool first = true;
    if (v.is<picojson::array>()) {
        out += "[";
        for (const picojson::value &x : v.get<picojson::array>()) {
            out += (first ? "\n" : ",\n") + indent;
            layout(x, depth + 1, out);
            first = false;
        }
        out += "\n" + std::string(2 * depth, ' ') + "]";
        return;
    }
    out += "{";
    for (const auto &[key, x] : v.get<picojson::object>()) {
        out += (first ? "\n" : ",\n") + indent + picojson::value(key).serialize() + ": ";
        layout(x, depth + 1, out);
        first = false;
    }
    out += "\n" + std::string(2 * depth, ' ') + "}";
}

std::string laid_out(const picojson::value &v) {
    std::string out;
    layout(v, 0, out);
    return out + "\n";
}

}  // namespace

dump_writer::dump_writer(const std::string &dir, const replay_settings &settings,
                         const dump_options &options)
    : dir_(dir),
      options_(options),
      partitions_(std::min(settings.run.part_h * settings.run.part_v, 256)) {
    manifest_.tool          = "isp-case " ISP_JSON_VERSION;
    manifest_.library       = "libisp_json " ISP_JSON_VERSION;
    manifest_.case_path     = settings.run.case_path;
    manifest_.part_h        = settings.run.part_h;
    manifest_.part_v        = settings.run.part_v;
    manifest_.channels      = settings.run.channels;
    manifest_.frames        = settings.run.frames;
    manifest_.pointer_bytes = sizeof(void *);
    for (const module_info *m : settings.run.modules) manifest_.modules.push_back(m->name);
    for (const module_info *m : settings.bypass) manifest_.bypass.push_back(m->name);
    pushes_ = std::tmpfile();
    /* the store named relative to the dump, so that a baseline can be moved as a whole */
    const std::string store = options.shared_store.empty() ? dir : options.shared_store;
    std::error_code error;
    fs::create_directories(store, error);
    manifest_.store = fs::absolute(store, error)
                          .lexically_normal()
                          .lexically_relative(fs::absolute(dir, error).lexically_normal())
                          .generic_string();
    if (manifest_.store.empty()) manifest_.store = fs::absolute(store, error).generic_string();
    if (manifest_.store.size() > 1 && manifest_.store.back() == '/') manifest_.store.pop_back();
    store_ = std::make_unique<store_writer>(store);
    if (!options.raw_only) {
        const std::string index = dir + "/index.txt";
        index_                  = std::fopen(index.c_str(), "wb");
        if (!index_) summary_.problems.push_back(index + ": cannot be written");
    }
}

dump_writer::~dump_writer() {
    if (pushes_) std::fclose(pushes_);
    if (index_) std::fclose(index_);
}

void dump_writer::entry(const std::string &line) {
    if (pushes_) std::fprintf(pushes_, "%s%s", entries_ > 0 ? ",\n    " : "", line.c_str());
    ++entries_;
}

/* The step's entries; for a frame, a reference to the earlier frame whose entries (steps aside)
 * are the same, or to the frame before with the entries that differ: a long replay keeps a
 * manifest of about its first frames, and a frame that changes a few values costs those. */
void dump_writer::write_step(const replay_step &step) {
    std::vector<picojson::value> rows;
    std::vector<std::string> lines; /* of index.txt */
    for (const module_step &m : step.modules)
        for (const op_outcome &op : m.ops) {
            for (const isp_sim::log_line &line : op.log)
                if (const size_t at = line.text.find(k_banner_prefix); at != std::string::npos) {
                    manifest_.library =
                        without_line_end(line.text.substr(at + sizeof k_banner_prefix - 1));
                }
            for (const pushed_group &push : op.pushes) {
                const manifest_push entry = write_push(step.id, m, op, push);
                rows.push_back(push_json(entry, partitions_));
                lines.push_back(
                    fmt::format("  {:<40} {}\n",
                                dump_name(step.id, *m.module, push).substr(entry.step.size() + 1),
                                entry.json.empty() ? "object " + entry.object : entry.json));
            }
        }
    if (rows.empty()) return;
    const std::string label = step_label(step.id);
    if (step.id.kind == phase::frame) {
        std::vector<std::string> plain;
        std::string content;
        for (const picojson::value &row : rows) {
            plain.push_back(row.serialize());
            content += plain.back() + "\n";
        }
        const auto [first, fresh] =
            frames_.emplace(sha256_hex(content.data(), content.size()), step.id.number);
        std::vector<std::pair<size_t, picojson::value>> except;
        std::string changed;
        const bool like_last = fresh && plain.size() == last_frame_.size();
        for (size_t i = 0; like_last && i < plain.size(); ++i)
            if (plain[i] != last_frame_[i]) {
                except.emplace_back(i, rows[i]);
                changed += lines[i];
            }
        const int same_as = fresh ? last_frame_number_ : first->second;
        if (fresh) last_frame_ = std::move(plain), last_frame_number_ = step.id.number;
        if (!fresh || (like_last && 2 * except.size() < rows.size())) {
            entry(repeated_step_json(step.id, same_as, except).serialize());
            if (index_)
                std::fprintf(index_, "%s: the pushes of frame %d%s\n%s", label.c_str(), same_as,
                             except.empty() ? "" : ", but", changed.c_str());
            return;
        }
    }
    entry(step_entry_json(step.id, rows).serialize());
    if (index_) {
        std::fprintf(index_, "%s:\n", label.c_str());
        for (const std::string &line : lines) std::fputs(line.c_str(), index_);
    }
}

/* The manifest laid out as laid_out() would, its pushes (one line each at the second level)
 * copied in from the file they were kept in, without holding them all at once. */
bool dump_writer::finish(const run_record &record, const verdict &judged) {
    manifest_.judged              = true;
    manifest_.run                 = judged;
    manifest_.findings            = record.findings().kept();
    manifest_.findings_not_listed = record.findings().not_kept();
    const std::string path        = dir_ + "/manifest.json";
    const std::string text        = laid_out(manifest_json(manifest_));
    const std::string none        = "\"steps\": []";
    const size_t at               = text.find(none);
    errno                         = 0;
    std::FILE *out                = std::fopen(path.c_str(), "wb");
    bool ok = out && pushes_ && at != std::string::npos && std::fflush(pushes_) == 0;
    if (ok) {
        const bool any = entries_ > 0;
        std::fwrite(text.data(), 1, at, out);
        std::fputs(any ? "\"steps\": [\n    " : "\"steps\": [", out);
        std::rewind(pushes_);
        char buffer[1 << 16];
        for (size_t n; (n = std::fread(buffer, 1, sizeof buffer, pushes_)) > 0;)
            std::fwrite(buffer, 1, n, out);
        std::fputs(any ? "\n  ]" : "]", out);
        std::fwrite(text.data() + at + none.size(), 1, text.size() - at - none.size(), out);
        ok = !std::ferror(pushes_) && !std::ferror(out);
    }
    const int reason = errno;
    if (out && std::fclose(out) != 0) ok = false;
    if (index_ && (std::fclose(index_) != 0)) {
        summary_.problems.push_back(dir_ + "/index.txt: cannot be written");
        ok = false;
    }
    index_ = nullptr;
    if (!ok)
        summary_.problems.push_back(path + ": cannot be written: " +
                                    std::strerror(reason  ? reason
                                                  : errno ? errno
                                                          : EIO));
    return ok;
}

manifest_push dump_writer::write_push(const step_id &step, const module_step &m,
                                      const op_outcome &op, const pushed_group &push) {
    const module_info &module = *m.module;
    ++summary_.pushes;

    manifest_push entry;
    entry.id      = step;
    entry.step    = step_dir(step);
    entry.module  = module.name;
    entry.block   = module.block;
    entry.channel = push.channel;
    entry.cmd     = push.cmd;
    entry.group   = push.group ? push.group->name : "";
    entry.type    = push.group && push.group->c_type ? push.group->c_type : "";
    entry.size    = push.bytes.size();
    entry.sources = sources_of(module, op, push, partitions_, entry.read_dir);

    const char *type = push.group ? push.group->c_type : nullptr;
    entry.object     = raw(without_pointers(type, push.bytes));
    decode_input input;
    input.block      = module.block;
    input.type       = type;
    input.bytes      = &push.bytes;
    input.partitions = partitions_;
    std::string keys = entry.object;
    if (!push.part_size_h.empty()) {
        input.pointees["part_size_h"] = {push.part_size_h, 2, true};
        input.pointees["part_size_v"] = {push.part_size_v, 2, true};
        for (const char *member : {"part_size_h", "part_size_v"}) {
            entry.pointees.emplace_back(member, raw(input.pointees[member].bytes));
            keys += " " + entry.pointees.back().second;
        }
    }
    if (options_.raw_only) return entry;

    /* decoded once per distinct structure (and arrays behind it) of a module's command */
    const std::string key =
        entry.pointees.empty() ? entry.object : sha256_hex(keys.data(), keys.size());
    const std::string base =
        dump_name(step, module, push).replace(0, entry.step.size(), "decoded") + "-" +
        key.substr(0, 16);
    entry.json                  = base + ".json";
    const auto [written, fresh] = decoded_.emplace(base, std::vector<std::string>());
    if (fresh) {
        std::error_code error;
        fs::create_directories(fs::path(dir_ + "/" + base).parent_path(), error);
        json(entry.json, decode_structure(input));
        if (push.group && push.group->exporter && push.bytes.size() == push.group->size) {
            if (!push.group->export_per_partition)
                cmodel(base + ".cmodel.json", push, 0, entry);
            else
                for (int p = 0; p < partitions_; ++p)
                    cmodel(fmt::format("{}.p{}.cmodel.json", base, p), push,
                           static_cast<uint8_t>(p), entry);
        }
        written->second = entry.cmodel;
    }
    entry.cmodel = written->second;
    return entry;
}

std::string dump_writer::raw(const std::vector<uint8_t> &bytes) {
    std::string error;
    const size_t before   = store_->added();
    const std::string key = store_->put(bytes, error);
    if (key.empty()) summary_.problems.push_back(error);
    summary_.raw_objects += store_->added() - before;
    return key;
}

void dump_writer::json(const std::string &relative, const picojson::value &value) {
    std::string error;
    if (write_text_file(dir_ + "/" + relative, laid_out(value), error))
        ++summary_.decoded_files;
    else
        summary_.problems.push_back(dir_ + "/" + relative + ": " + error);
}

void dump_writer::cmodel(const std::string &relative, const pushed_group &push, uint8_t partition,
                         manifest_push &entry) {
    const std::string path = dir_ + "/" + relative;
    try {
        std::string error;
        if (!write_json_checked(path,
                                export_structure(push.group->exporter, push.bytes.data(),
                                                 push.group->size, partition),
                                error)) {
            summary_.problems.push_back(path + ": " + error);
            return;
        }
        ++summary_.cmodel_files;
        entry.cmodel.push_back(relative);
    } catch (const std::exception &e) {
        summary_.problems.push_back(path + ": the exporter raised " + e.what());
    }
}

std::string dump_name(const step_id &step, const module_info &module, const pushed_group &push) {
    std::string name = step_dir(step) + "/" + module.name + "/";
    if (file_kind_of(module) == file_kind::per_channel) name += fmt::format("chn{}/", push.channel);
    name += fmt::format("cmd{:02}", push.cmd);
    if (push.group) name += std::string("_") + push.group->name;
    return name;
}

}  // namespace isp_case
