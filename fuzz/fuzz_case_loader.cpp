/* One module's whole life on the simulated platform over a fuzzed register file: create, init
 * (which loads frame 0), process, trigger, sync, deinit, destroy. Byte 0 picks the module, byte 1
 * the grid (1 or 2 partitions each way) and the channel count (1 or 2); the rest is the file,
 * written for every partition and channel the module reads.
 *
 * Text that is not JSON is skipped: reading it ends the process by design. Allowed to escape are
 * picojson's type error for a root that is not an object, and for the modules with curve or mesh
 * converters the type errors those pass on. Afterwards the simulated platform must have seen no
 * misuse, and every context, wrapper and buffer must be gone. */
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <memory>
#include <string>

#include "fuzz/fuzz_support.h"
#include "isp_framework.h"
#include "isp_sim.h"
#include "modules/tables.h"

namespace {

std::string case_dir;

void remove_case_dir() {
    if (!case_dir.empty()) {
        const std::string command = "rm -rf '" + case_dir + "'";
        if (system(command.c_str()) != 0)
            fprintf(stderr, "could not remove %s\n", case_dir.c_str());
    }
}

void write_file(const std::string &path, const uint8_t *data, size_t size) {
    FILE *file = fopen(path.c_str(), "wb");
    if (!file || fwrite(data, 1, size, file) != size || fclose(file) != 0) {
        perror(path.c_str());
        abort();
    }
}

/* Runs one operation; an exception is fine only when the library documents it. */
template <typename Operation>
void guarded(const char *what, bool type_error_allowed, Operation operation) {
    try {
        operation();
    } catch (const std::exception &error) {
        if (type_error_allowed && isp_fuzz::is_type_error(error)) return;
        isp_fuzz::unexpected(what, error.what());
    } catch (...) {
        isp_fuzz::unexpected(what, "not a std::exception");
    }
}

[[noreturn]] void platform_misuse(const std::string &what) {
    fprintf(stderr, "simulated platform: %s\n", what.c_str());
    abort();
}

/* a module with curve or mesh converters passes their type errors on */
bool reads_raw_tables(const isp::module_desc &m) {
    for (const isp::converter_desc &c : m.converters)
        if (c.raises_type_error) return true;
    return false;
}

void check_platform() {
    for (const std::string &problem : isp_sim::problems()) platform_misuse(problem);
    for (const auto &tag : isp_sim::live_allocations())
        if (tag.second != 0)
            platform_misuse("context not freed under tag " + std::to_string(tag.first));
    if (isp_sim::live_wrappers() != 0) platform_misuse("wrapper not destroyed");
    if (isp_sim::live_dma_buffers() != 0) platform_misuse("statistics buffer not freed");
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    const char *base    = getenv("TMPDIR");
    std::string pattern = std::string(base && *base ? base : "/tmp") + "/isp_fuzz_case_XXXXXX";
    if (!mkdtemp(&pattern[0])) {
        perror("mkdtemp");
        abort();
    }
    case_dir = pattern;
    mkdir((case_dir + "/cfgs").c_str(), 0755);
    mkdir((case_dir + "/cfgs/f0").c_str(), 0755);
    atexit(remove_case_dir);
    isp_sim::set_log_echo(false);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size < 2) return 0;
    picojson::value document;
    if (!isp_fuzz::parse(data + 2, size - 2, document)) return 0;
    const isp::module_desc &m = isp::modules()[data[0] % isp::modules().size()];
    const uint8_t part_h = 1 + (data[1] & 1), part_v = 1 + ((data[1] >> 1) & 1);
    const int32_t channels = 1 + ((data[1] >> 2) & 1);
    for (int partition = 0; partition < part_h * part_v; ++partition)
        for (int channel = 0; channel < channels; ++channel)
            write_file(case_dir + "/" + isp::relative_file(m, 0, partition, channel), data + 2,
                       size - 2);

    isp_sim::reset();
    /* The framework's records in heap blocks of their exact size, so any stray access by the
     * library lands in a redzone. */
    std::unique_ptr<PipeContext> pipe(new PipeContext());
    std::unique_ptr<IspRegShadow> shadow(new IspRegShadow());
    std::unique_ptr<JsonModuleHandle> handle(new JsonModuleHandle());
    pipe->attr.part_h   = part_h;
    pipe->attr.part_v   = part_v;
    pipe->reg_shadow    = shadow.get();
    pipe->channel_count = channels;
    strncpy(pipe->case_path, case_dir.c_str(), sizeof pipe->case_path - 1);
    handle->pipe = pipe.get();

    JsonModuleOps *ops = nullptr;
    isp::registration_of(m)(&ops);
    const bool type_error_allowed = reads_raw_tables(m) || !document.is<picojson::object>();
    JsonModuleHandle *h           = handle.get();
    ops->create(h);
    guarded("init", type_error_allowed, [&] { ops->init(h); });
    guarded("process", type_error_allowed, [&] { ops->process(h); });
    ops->trigger(h);
    if (ops->sync) ops->sync(h);
    ops->deinit(h);
    ops->destroy(h);
    check_platform();
    return 0;
}
