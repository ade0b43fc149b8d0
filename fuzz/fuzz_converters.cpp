/* Every register-file converter on arbitrary JSON: objects of any shape, wrong types, fractional,
 * huge and negative numbers, short arrays, deep nesting. A converter may only fill its structure
 * and report missing fields; the raw-number curve and mesh converters may also pass picojson's
 * type error on. Anything else (a crash, a sanitizer report, another exception) is a finding.
 *
 * The converters of every block whose top key the object holds run in turn on the same object,
 * as a module runs them; an object without a known top key runs one block chosen by the input's
 * size. The partition index is the input's size, low 8 bits. */
#include <stddef.h>
#include <stdint.h>

#include <memory>
#include <string>
#include <vector>

#include "fuzz/fuzz_support.h"
#include "modules/tables.h"

namespace {

/* The converters of every block, in the module table's block order. */
struct block_run {
    std::string top_key; /* "isp_<block>" */
    std::vector<const isp::converter_desc *> converters;
};

const std::vector<block_run> &block_runs() {
    static const std::vector<block_run> runs = [] {
        std::vector<block_run> runs;
        for (const char *block : isp::blocks())
            runs.push_back({std::string("isp_") + block, isp::block_converters(block)});
        return runs;
    }();
    return runs;
}

/* Each structure lives alone in a heap block of its exact size, so a write past its end reaches
 * a redzone; a structure pointing at partition-size arrays gets arrays of one element per
 * partition up to this one, as the smallest grid holding the partition has. */
void run_one(const isp::converter_desc &c, picojson::object &root, uint8_t partition) {
    std::unique_ptr<unsigned char[]> out(new unsigned char[c.size]());
    try {
        c.convert_alone(root, out.get(), partition);
    } catch (const std::exception &error) {
        if (c.raises_type_error && isp_fuzz::is_type_error(error)) return;
        isp_fuzz::unexpected(c.name, error.what());
    } catch (...) {
        isp_fuzz::unexpected(c.name, "not a std::exception");
    }
}

void run_block(const block_run &run, picojson::object &root, uint8_t partition) {
    for (const isp::converter_desc *c : run.converters) run_one(*c, root, partition);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    picojson::value document;
    if (!isp_fuzz::parse(data, size, document) || !document.is<picojson::object>()) return 0;
    picojson::object &root  = document.get<picojson::object>();
    const uint8_t partition = static_cast<uint8_t>(size);
    /* The blocks the object names, looked up before any converter inserts its null entries. */
    std::vector<const block_run *> named;
    for (const block_run &run : block_runs())
        if (root.count(run.top_key)) named.push_back(&run);
    if (named.empty()) named.push_back(&block_runs()[size % block_runs().size()]);
    for (const block_run *run : named) run_block(*run, root, partition);
    return 0;
}
