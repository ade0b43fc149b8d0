/* Converters on zeroed structures, standard error captured; exporters on aligned copies. */
#include "tools/core/converter_run.h"

#include <string.h>

#include <exception>

namespace isp_case {
namespace {

std::vector<max_align_t> zeroed(size_t size) {
    return std::vector<max_align_t>((size + sizeof(max_align_t) - 1) / sizeof(max_align_t));
}

}  // namespace

converter_run run_converters(
    const std::vector<const converter_info *> &converters, picojson::object root, uint8_t partition,
    stderr_stream &capture,
    const std::function<void(const converter_info &, void *structure)> &converted) {
    converter_run run;
    for (const converter_info *c : converters) {
        std::vector<max_align_t> storage = zeroed(c->size);
        try {
            c->convert_alone(root, storage.data(), partition);
        } catch (const std::exception &e) {
            run.raised_by = c;
            run.raised    = std::string(c->name) + " raises: " + e.what();
            break;
        }
        if (converted) converted(*c, storage.data());
    }
    run.messages = capture.take();
    return run;
}

std::vector<const converter_info *> load_order(const module_info &module) {
    std::vector<const converter_info *> order;
    for (const converter_info &c : module.converters) order.push_back(&c);
    return order;
}

picojson::value export_structure(isp::export_fn exporter, const void *bytes, size_t size,
                                 uint8_t partition) {
    std::vector<max_align_t> storage = zeroed(size);
    memcpy(storage.data(), bytes, size);
    picojson::object out;
    exporter(storage.data(), out, partition);
    return picojson::value(out);
}

}  // namespace isp_case
