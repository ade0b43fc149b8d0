/* The recording: each push's bytes as a .bin file the moment the wrapper accepts it, and a
 * manifest (the dump manifest, version 2, marked as a recording, without decoded files: the
 * workstation decodes the .bin files) whenever the last wrapper is destroyed and when the process
 * ends. Calls from several threads take one lock; nothing here fails a call of the pipeline: a
 * file that cannot be written stops the recording with one line on the standard error the
 * process started with. */
#include "platform/record/recorder.h"

#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include <picojson.h>

#include "tools/core/step.h"
#include "tools/dump/decode.h"

namespace isp_record {
namespace {

using isp_case::phase;
using isp_case::step_id;

/* What the wrapped operation running on this thread is. */
thread_local const attribution *t_current = nullptr;

struct wrapper {
    std::string block;
    int channel                     = 0;
    const isp::module_desc *creator = nullptr;
    /* without wrapped operations: a command pushed again starts the next cycle */
    std::set<uint32_t> pushed;
    int cycle = 0;
};

struct recording {
    std::mutex lock;
    std::string dir;
    std::atomic<bool> stopped{true};
    int log_fd = -1; /* the standard error the process started with */

    std::string library;
    bool pipe_seen = false;
    std::string case_path;
    int part_h = 0, part_v = 0, channels = 0, frames = 0;
    std::vector<std::string> modules, bypass;
    std::vector<int> processes = std::vector<int>(isp::modules().size(), 0);
    std::map<int, int> dir_of_frame; /* cycle: the frame directory its loads read */

    std::map<uint32_t, wrapper> wrappers;
    size_t live_wrappers = 0;
    /* the manifest's pushes, one JSON object per line, made as they come: the manifest is the
     * settings above and these */
    std::string push_lines;
    size_t pushes  = 0;
    bool unwritten = false; /* pushes came since the manifest was last written */
    std::set<std::string> made_dirs;

    recording() {
        log_fd           = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 3);
        const char *root = std::getenv("ISP_RECORD_DIR");
        if (!root || !*root) return;
        dir     = root;
        stopped = !make_dirs(dir);
    }
    ~recording() {
        std::lock_guard<std::mutex> hold(lock);
        write_manifest();
    }

    void stop(const std::string &path) {
        const std::string line = "isp-record: " + path + ": " + std::strerror(errno) +
                                 "; recording stopped, the pipeline goes on\n";
        stopped = true;
        if (log_fd >= 0) (void)!write(log_fd, line.data(), line.size());
    }

    /* dir and its parents; false (after the log line) when one cannot be made */
    bool make_dirs(const std::string &path) {
        if (made_dirs.count(path)) return true;
        const size_t slash = path.rfind('/');
        if (slash != std::string::npos && slash > 0 && !make_dirs(path.substr(0, slash)))
            return false;
        if (mkdir(path.c_str(), 0777) != 0 && errno != EEXIST) {
            stop(path);
            return false;
        }
        made_dirs.insert(path);
        return true;
    }

    bool write_file(const std::string &relative, const void *bytes, size_t size) {
        const std::string path = dir + "/" + relative;
        const size_t slash     = path.rfind('/');
        if (!make_dirs(path.substr(0, slash))) return false;
        const int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
        if (fd < 0) {
            stop(path);
            return false;
        }
        const char *at = static_cast<const char *>(bytes);
        for (size_t left = size; left > 0;) {
            const ssize_t n = write(fd, at, left);
            if (n < 0 && errno == EINTR) continue;
            if (n <= 0) {
                if (n == 0) errno = ENOSPC;
                stop(path);
                close(fd);
                return false;
            }
            at += n;
            left -= size_t(n);
        }
        if (close(fd) != 0) {
            stop(path);
            return false;
        }
        return true;
    }

    void see_pipe(const PipeContext *pipe) {
        if (pipe_seen || !pipe) return;
        pipe_seen = true;
        case_path.assign(pipe->case_path, strnlen(pipe->case_path, sizeof pipe->case_path));
        part_h   = pipe->attr.part_h;
        part_v   = pipe->attr.part_v;
        channels = pipe->channel_count;
        for (const isp::module_desc &m : isp::modules())
            if (pipe->bypass[m.bypass_bit / 8] >> (m.bypass_bit % 8) & 1u) bypass.push_back(m.name);
    }

    void note_module(const isp::module_desc &m) {
        for (const std::string &name : modules)
            if (name == m.name) return;
        modules.push_back(m.name);
    }

    void write_manifest();
};

recording &rec() {
    static recording r;
    return r;
}

/* The pipeline's errno as the forwarded call left it, whatever the recorder's own calls did. */
class errno_kept {
  public:
    errno_kept() : saved_(errno) {}
    ~errno_kept() { errno = saved_; }

  private:
    int saved_;
};

/* Made when the preload is loaded, so that the standard error kept for the log line is the one
 * the process started with, not one a program has redirected meanwhile. */
__attribute__((constructor)) void start_recording() {
    rec();
}

/* The frame directory a module's next load reads, from its context; -1 where it reads none. */
int next_frame(const isp::module_desc &m, const void *context) {
    if (!context || isp::file_kind_of(m) == isp::file_kind::pattern) return -1;
    if (isp::file_kind_of(m) == isp::file_kind::per_channel)
        return static_cast<const JsonChnContext *>(context)->frame;
    return static_cast<const JsonModuleContext *>(context)->frame;
}

picojson::value number(double v) {
    return picojson::value(v);
}

picojson::value strings(const std::vector<std::string> &items) {
    picojson::array a;
    for (const std::string &s : items) a.push_back(picojson::value(s));
    return picojson::value(a);
}

/* One push as the manifest lists it. Every name comes from the module table (lower case, digits
 * and underscores) and needs no escaping. */
std::string push_line(const step_id &step, const isp::module_desc &m, const std::string &block,
                      int channel, const isp::group_desc &group, const std::string &bin,
                      const std::vector<std::string> &targets) {
    std::string files = "\"" + bin + "\"";
    std::string arrays;
    for (const std::string &t : targets) arrays += (arrays.empty() ? "\"" : ",\"") + t + "\"";
    char line[1024];
    std::snprintf(line, sizeof line,
                  "{\"block\":\"%s\",\"channel\":%d,\"cmd\":%u,\"files\":{\"bin\":%s,\"cmodel\":[],"
                  "\"json\":null,\"targets\":[%s]},\"group\":\"%s\",\"module\":\"%s\",\"size\":%zu,"
                  "\"sources\":[],\"step\":{\"dir\":%d,\"frame\":%d,\"phase\":\"%s\"},"
                  "\"step_dir\":\"%s\",\"type\":%s}",
                  block.c_str(), channel, unsigned(group.cmd), files.c_str(), arrays.c_str(),
                  group.name, m.name, group.size, step.dir, step.number,
                  isp_case::phase_name(step.kind), isp_case::step_dir(step).c_str(),
                  group.c_type ? ("\"" + std::string(group.c_type) + "\"").c_str() : "null");
    return line;
}

void recording::write_manifest() {
    if (stopped || !unwritten) return;
    unwritten = false;
    picojson::object o;
    o["manifest_version"] = number(2);
    o["recording"]        = picojson::value(true);
    o["tool"]             = picojson::value("libisp_record " ISP_JSON_VERSION);
    o["library"]          = picojson::value(library);
    o["case"]             = picojson::value(case_path);
    picojson::object grid;
    grid["h"]          = number(part_h);
    grid["v"]          = number(part_v);
    grid["partitions"] = number(part_h * part_v);
    o["grid"]          = picojson::value(grid);
    o["channels"]      = number(channels);
    o["frames"]        = number(frames);
    o["pointer_bytes"] = number(sizeof(void *));
    o["modules"]       = strings(modules);
    o["bypass"]        = strings(bypass);
    o["pushes"]        = picojson::value(picojson::array());
    /* the settings, with the pushes spliced into their empty array, one per line */
    std::string text = picojson::value(o).serialize();
    const size_t at  = text.find("\"pushes\":[]") + 10;
    text.insert(at, "\n" + push_lines + "\n");
    write_file("manifest.json", text.data(), text.size());
}

}  // namespace

op_scope::op_scope(const isp::module_desc &module, op kind, const JsonModuleHandle *handle)
    : now_{&module, {}}, outer_(t_current) {
    const errno_kept kept;
    attribution *now = &now_;
    recording &r     = rec();
    if (!r.stopped) {
        std::lock_guard<std::mutex> hold(r.lock);
        if (handle) r.see_pipe(handle->pipe);
        int &cycles = r.processes[size_t(&module - isp::modules().begin())];
        switch (kind) {
            case op::create:
            case op::init:
                break;
            case op::process: {
                ++cycles;
                if (cycles > r.frames) r.frames = cycles;
                const int dir = next_frame(module, handle ? handle->priv : nullptr);
                if (dir >= 0) r.dir_of_frame.emplace(cycles, dir);
            }
                [[fallthrough]];
            case op::trigger:
            case op::sync:
                if (cycles > 0) {
                    const auto it = r.dir_of_frame.find(cycles);
                    now->step     = {phase::frame, cycles,
                                 it == r.dir_of_frame.end() ? cycles : it->second};
                }
                break;
            case op::deinit:
            case op::destroy:
                now->step = isp_case::teardown_step();
                break;
        }
    }
    t_current = now;
}

op_scope::~op_scope() {
    t_current = outer_;
}

void registered(const isp::module_desc &module, JsonModuleOps *, const void *library_symbol) {
    const errno_kept kept;
    recording &r = rec();
    if (r.stopped) return;
    std::lock_guard<std::mutex> hold(r.lock);
    r.note_module(module);
    Dl_info info;
    if (r.library.empty() && dladdr(library_symbol, &info) && info.dli_fname)
        r.library = info.dli_fname;
}

void wrapper_created(uint32_t handle, const VinHalWrapperAttr *attr) {
    const errno_kept kept;
    recording &r = rec();
    if (r.stopped) return;
    std::lock_guard<std::mutex> hold(r.lock);
    wrapper w;
    if (t_current) w.creator = t_current->module;
    /* without wrapped operations, the module of the wrapper type (the first of a shared block) */
    for (const isp::module_desc &m : isp::modules())
        if (!w.creator && attr && m.wrapper_type == attr->type) w.creator = &m;
    r.wrappers[handle] = w;
    ++r.live_wrappers;
}

void regio_created(uint32_t handle, const VinHalRegioAttr *attr) {
    const errno_kept kept;
    recording &r = rec();
    if (r.stopped || !attr) return;
    std::lock_guard<std::mutex> hold(r.lock);
    const auto found = r.wrappers.find(handle);
    if (found == r.wrappers.end()) return;
    wrapper &w = found->second;
    const std::string name(attr->name, strnlen(attr->name, sizeof attr->name));
    w.block   = name.rfind("mod_", 0) == 0 ? name.substr(4) : name;
    w.channel = attr->channel;
    /* no pipeline context seen (the operations are not wrapped): the register I/O record gives
     * the partition count, as a grid of one row, and the channels */
    if (!r.pipe_seen) {
        r.part_h   = attr->part_num;
        r.part_v   = 1;
        r.channels = std::max(r.channels, w.channel + 1);
    }
}

void wrapper_destroyed(uint32_t handle) {
    const errno_kept kept;
    recording &r = rec();
    if (r.stopped) return;
    std::lock_guard<std::mutex> hold(r.lock);
    if (r.wrappers.erase(handle) && --r.live_wrappers == 0) r.write_manifest();
}

void pushed(uint32_t handle, const VinHalSetupCmd *cmd) {
    const errno_kept kept;
    recording &r = rec();
    if (r.stopped) return;
    std::lock_guard<std::mutex> hold(r.lock);
    const auto found = r.wrappers.find(handle);
    if (found == r.wrappers.end()) return;
    wrapper &w                   = found->second;
    const isp::group_desc *group = isp::find_pushed_group(w.block, cmd->cmd);
    const isp::module_desc *m    = t_current ? t_current->module : w.creator;
    if (!group || !m) return; /* nothing the tool could decode */
    step_id step;
    if (t_current) {
        step = t_current->step;
    } else {
        if (!w.pushed.insert(cmd->cmd).second) {
            ++w.cycle;
            w.pushed = {cmd->cmd};
        }
        if (w.cycle > r.frames) r.frames = w.cycle;
        if (w.cycle > 0) step = {phase::frame, w.cycle, w.cycle};
    }
    r.note_module(*m);
    char name[64];
    std::snprintf(name, sizeof name, "cmd%02u_%s", unsigned(cmd->cmd), group->name);
    std::string base = isp_case::step_dir(step) + "/" + m->name + "/";
    if (isp::file_kind_of(*m) == isp::file_kind::per_channel)
        base += "chn" + std::to_string(w.channel) + "/";
    base += name;
    /* pointer members cleared, the arrays behind them beside: as the tool's dumps hold them
     * (only the groups that point at the partition sizes have pointers) */
    if (group->partition_sizes) {
        const uint8_t *data              = static_cast<const uint8_t *>(cmd->data);
        const std::vector<uint8_t> bytes = isp_case::without_pointers(
            group->c_type, std::vector<uint8_t>(data, data + group->size));
        if (!r.write_file(base + ".bin", bytes.data(), bytes.size())) return;
    } else if (!r.write_file(base + ".bin", cmd->data, group->size)) {
        return;
    }
    std::vector<std::string> targets;
    std::vector<uint8_t> h, v;
    const size_t partitions = size_t(r.part_h) * size_t(r.part_v);
    if (isp::copy_partition_sizes(*group, cmd->data, partitions, h, v)) {
        for (const auto &[member, array] :
             {std::make_pair("part_size_h", &h), std::make_pair("part_size_v", &v)}) {
            targets.push_back(base + "." + member + ".bin");
            if (!r.write_file(targets.back(), array->data(), array->size())) return;
        }
    }
    r.push_lines += (r.pushes++ ? ",\n" : "") +
                    push_line(step, *m, w.block, w.channel, *group, base + ".bin", targets);
    r.unwritten = true;
}

}  // namespace isp_record
