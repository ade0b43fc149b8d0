/* The parameter loader of every module: reads the register files of the current frame over the
 * partition grid (per channel, or the pattern files), converts them into the module's groups,
 * moves the frame index on and pushes the groups to the wrapper. */
#include <stdarg.h>
#include <stdio.h>
#include <string.h>
#include <sys/stat.h>

#include <memory>
#include <vector>

#include "isp_json_utils.h"
#include "isp_platform.h"
#include "modules/module.h"
#include "modules/module_log.h"

namespace isp {
namespace {

const size_t k_path_limit = 255;
/* every parameter loader reports a null handle, pipe or context with this one code */
const int32_t k_null_pointer_code = static_cast<int32_t>(0x8001010Bu);

using path_buffer = char[k_path_limit + 1];

/* Every path is formatted with a limit of 255 characters; a longer one is cut. */
void format_path(path_buffer &path, const char *format, ...) {
    va_list args;
    va_start(args, format);
    vsnprintf(path, k_path_limit, format, args);
    va_end(args);
}

/* The case path as a terminated string. The framework's field need not hold a terminator when a
 * path fills it; formatting the field itself would then read past the record. A formatted path is
 * cut long before the field's end anyway. */
struct case_dir {
    explicit case_dir(const PipeContext *pipe) {
        memcpy(text, pipe->case_path, sizeof pipe->case_path);
        text[sizeof pipe->case_path] = '\0';
    }
    char text[sizeof(PipeContext::case_path) + 1];
};

/* One buffer per load holding every group's structure, plus the partition-size arrays beside it
 * where the module has them; cleared before they are attached. */
class frame_buffer {
  public:
    frame_buffer(const module_desc &m, const PipeContext *pipe)
        : module_(m),
          partitions_(static_cast<size_t>(pipe->attr.part_h) * pipe->attr.part_v),
          extra_size_(has_sizes(m) ? partition_size_bytes(partitions_) : 0),
          bytes_(new max_align_t[words(m.frame_size) + words(extra_size_)]) {}

    void clear() {
        memset(bytes_.get(), 0,
               (words(module_.frame_size) + words(extra_size_)) * sizeof(max_align_t));
        for (const group_desc &g : module_.groups)
            if (g.partition_sizes) attach_partition_sizes(g, group(g.offset), extra(), partitions_);
    }
    void *group(size_t offset) { return reinterpret_cast<unsigned char *>(bytes_.get()) + offset; }

  private:
    static size_t words(size_t size) {
        return (size + sizeof(max_align_t) - 1) / sizeof(max_align_t);
    }
    static bool has_sizes(const module_desc &m) {
        for (const group_desc &g : m.groups)
            if (g.partition_sizes) return true;
        return false;
    }
    void *extra() { return bytes_.get() + words(module_.frame_size); }

    const module_desc &module_;
    size_t partitions_;
    size_t extra_size_;
    std::unique_ptr<max_align_t[]> bytes_;
};

/* Each partition owns an area of the statistics buffer with its sub-areas; the hardware takes
 * their addresses in 8-byte units, whatever the register file says. */
void write_addresses(const stat_buffer &buffer, frame_buffer &frame, uint64_t phys,
                     uint8_t partition) {
    const uint32_t base =
        static_cast<uint32_t>((phys + uint64_t{buffer.area_size} * partition) >> 3);
    for (const stat_address &a : buffer.addresses)
        a.write(frame.group(a.group->offset), partition, base + a.offset);
}

/* Reads one partition's file and runs the module's converters on it. A file that cannot be read
 * or parsed ends the process; a root that is not an object raises picojson's type error. */
void convert_file(const module_desc &m, const JsonModuleHandle *handle, frame_buffer &buffer,
                  const path_buffer &path, uint8_t partition) {
    picojson::value document = read_json_file(path);
    picojson::object &root   = document.get<picojson::object>();
    for (size_t i = 0; i < m.converters.size(); ++i) {
        const converter_desc &c = m.converters[i];
        c.convert(root, buffer.group(c.group->offset), partition);
        if (i == 0 && m.buffer) {
            const JsonStatContext *ctx = static_cast<const JsonStatContext *>(handle->priv);
            write_addresses(*m.buffer, buffer, ctx->phys, partition);
        }
    }
}

/* Rows outer, columns inner; counters and counts compared in 8 bits and the counts re-read
 * after every file; the partition index wraps after 255. */
template <typename PathOf>
void convert_grid(const module_desc &m, const JsonModuleHandle *handle, frame_buffer &buffer,
                  PathOf path_of) {
    const PipeContext *pipe = handle->pipe;
    uint8_t partition       = 0;
    for (uint8_t row = 0; row < pipe->attr.part_v; ++row) {
        for (uint8_t col = 0; col < pipe->attr.part_h; ++col) {
            path_buffer path;
            path_of(path, partition);
            convert_file(m, handle, buffer, path, partition);
            ++partition;
        }
    }
}

/* Moves to the next frame directory if there is one; otherwise freezes on the current one. */
void advance_frame(const PipeContext *pipe, frame_cursor cursor) {
    if (*cursor.last_frame == 1) return;
    path_buffer path;
    const case_dir dir(pipe);
    format_path(path, "%s/cfgs/f%d", dir.text, *cursor.frame + 1);
    struct stat st;
    if (stat(path, &st) != 0 || !S_ISDIR(st.st_mode))
        *cursor.last_frame = 1;
    else
        ++*cursor.frame;
}

/* Pushes every group in the catalogue's order, skipping the structures the module keeps; stops
 * at the first failure. */
int32_t push_groups(const module_desc &m, uint32_t wrapper, frame_buffer &buffer) {
    int pushed = 0;
    for (const group_desc &g : m.groups) {
        if (g.cmd == 0) continue;
        const VinHalSetupCmd cmd = {g.cmd, buffer.group(g.offset)};
        const int line           = m.lines->push_first + pushed++ * m.lines->push_step;
        if (vin_hal_wrapper_setup(wrapper, &cmd) != 0) {
            log_code(m.names.load, line, m.code_hw, g.message);
            return m.code_hw;
        }
    }
    return 0;
}

int32_t load_frame(const module_desc &m, JsonModuleHandle *handle) {
    const PipeContext *pipe   = handle->pipe;
    const frame_cursor cursor = cursor_of(m, handle->priv);
    const case_dir dir(pipe);
    frame_buffer buffer(m, pipe);
    buffer.clear();
    convert_grid(m, handle, buffer, [&](path_buffer &path, uint8_t partition) {
        format_path(path, m.file_pattern, dir.text, *cursor.frame, partition);
    });
    advance_frame(pipe, cursor);
    return push_groups(m, *static_cast<const uint32_t *>(handle->priv), buffer);
}

/* One pass per channel into the same buffers; the frame advances inside the channel loop, so a
 * later channel can read the next frame's files. */
int32_t load_channels(const module_desc &m, JsonModuleHandle *handle) {
    const PipeContext *pipe   = handle->pipe;
    const frame_cursor cursor = cursor_of(m, handle->priv);
    if (pipe->channel_count > ISP_MAX_CHANNELS) {
        log_code(m.names.load, m.lines->load_handle, m.code_arg, "invalid params.");
        return m.code_arg;
    }
    if (pipe->channel_count < 1) return 0;
    const case_dir dir(pipe);
    frame_buffer buffer(m, pipe);
    const uint32_t *wrappers = static_cast<const uint32_t *>(handle->priv);
    for (int32_t channel = 0; channel < pipe->channel_count && channel < ISP_MAX_CHANNELS;
         ++channel) {
        buffer.clear();
        convert_grid(m, handle, buffer, [&](path_buffer &path, uint8_t partition) {
            format_path(path, m.file_pattern, dir.text, *cursor.frame, partition, channel);
        });
        advance_frame(pipe, cursor);
        const int32_t status = push_groups(m, wrappers[channel], buffer);
        if (status != 0) return status;
    }
    return 0;
}

/* Pattern files lie in the case directory itself and do not change from frame to frame. */
int32_t load_patterns(const module_desc &m, JsonModuleHandle *handle) {
    const PipeContext *pipe = handle->pipe;
    const case_dir dir(pipe);
    frame_buffer buffer(m, pipe);
    buffer.clear();
    convert_grid(m, handle, buffer, [&](path_buffer &path, uint8_t partition) {
        format_path(path, m.file_pattern, dir.text, partition);
    });
    return push_groups(m, *static_cast<const uint32_t *>(handle->priv), buffer);
}

}  // namespace

int32_t module_load(const module_desc &m, JsonModuleHandle *handle) {
    const log_lines &l = *m.lines;
    if (!handle) {
        log_null_pointer(m.names.load, l.load_handle);
        return k_null_pointer_code;
    }
    if (!handle->pipe) {
        log_null_pointer(m.names.load, l.load_pipe);
        return k_null_pointer_code;
    }
    if (!handle->priv) {
        log_null_pointer(m.names.load, l.load_context);
        return k_null_pointer_code;
    }
    const PipeContext *pipe = handle->pipe;
    if (pipe->case_path[0] == '\0') {
        log_case_path_invalid(m.names.load, l.load_case);
        return -1;
    }
    if (m.code_grid != 0 && pipe->attr.part_h * pipe->attr.part_v == 0) {
        log_code(m.names.load, l.load_grid, m.code_grid, "partition err!!!.");
        return m.code_grid;
    }
    switch (m.kind) {
        case module_kind::channelled:
            return load_channels(m, handle);
        case module_kind::pattern:
            return load_patterns(m, handle);
        default:
            return load_frame(m, handle);
    }
}

}  // namespace isp
