/* One partition of each block with a register map, loaded as its module loads it (read, parse,
 * convert into the module's frame with its converters in its order) against the floor: the same
 * file opened, read and parsed with picojson, nothing else. */
#include <benchmark/benchmark.h>
#include <stdio.h>
#include <string.h>

#include <string>
#include <vector>

#include "bench/benchmarks.h"
#include "bench/sample_case.h"
#include "isp_json_utils.h"
#include "modules/tables.h"

namespace isp_bench {
namespace {

/* The block's module (the channelled one where the block has one) with its frame, which lives as
 * long as the program, as the module's frame buffer outlives the files. */
struct partition_load {
    std::string block;
    std::string file; /* under the frame directory */
    const isp::module_desc *module;
    std::vector<max_align_t> frame;

    void convert(picojson::object &root) {
        unsigned char *bytes = reinterpret_cast<unsigned char *>(frame.data());
        for (const isp::converter_desc &c : module->converters)
            c.convert(root, bytes + c.group->offset, 0);
    }
};

size_t words(size_t bytes) {
    return (bytes + sizeof(max_align_t) - 1) / sizeof(max_align_t);
}

/* One load per block with a register map (the blocks with C-model exporters). */
std::vector<partition_load> &partition_loads() {
    static std::vector<partition_load> loads = [] {
        std::vector<partition_load> loads;
        for (const char *block : isp::blocks()) {
            const isp::module_desc *chosen = nullptr;
            bool exported                  = false;
            for (const isp::module_desc &m : isp::modules()) {
                if (strcmp(m.block, block) != 0) continue;
                if (!chosen || isp::file_kind_of(m) == isp::file_kind::per_channel) chosen = &m;
                for (const isp::converter_desc &c : m.converters) exported |= c.exporter != nullptr;
            }
            if (!exported) continue;
            const size_t partitions = size_t{k_grid_h} * k_grid_v;
            partition_load load{
                block, isp::relative_file(*chosen, 0, 0, 0).substr(strlen("cfgs/f0/")), chosen,
                std::vector<max_align_t>(words(chosen->frame_size) +
                                         words(isp::partition_size_bytes(partitions)))};
            unsigned char *bytes = reinterpret_cast<unsigned char *>(load.frame.data());
            for (const isp::group_desc &g : chosen->groups)
                isp::attach_partition_sizes(
                    g, bytes + g.offset, load.frame.data() + words(chosen->frame_size), partitions);
            loads.push_back(std::move(load));
        }
        return loads;
    }();
    return loads;
}

void library_load(benchmark::State &state, partition_load *load, const std::string &path) {
    for (auto _ : state) {
        picojson::value document = read_json_file(path);
        picojson::object &root   = document.get<picojson::object>();
        load->convert(root);
        benchmark::DoNotOptimize(root);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(file_size(path)));
}

void floor_load(benchmark::State &state, const std::string &path) {
    for (auto _ : state) {
        picojson::value document = parse_file(path);
        benchmark::DoNotOptimize(document);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(file_size(path)));
}

}  // namespace

int run_partition(const std::string &case_dir, const std::string &block, const std::string &what,
                  int loads) {
    for (partition_load &load : partition_loads()) {
        if (block != load.block) continue;
        const std::string path = case_dir + "/cfgs/f0/" + load.file;
        for (int i = 0; i < loads; ++i) {
            if (what == "library") {
                picojson::value document = read_json_file(path);
                picojson::object &root   = document.get<picojson::object>();
                load.convert(root);
                benchmark::DoNotOptimize(root);
            } else {
                picojson::value document = parse_file(path);
                benchmark::DoNotOptimize(document);
            }
        }
        return 0;
    }
    fprintf(stderr, "--profile: no block %s\n", block.c_str());
    return 2;
}

void register_partition_benchmarks(const std::string &case_dir) {
    for (partition_load &load : partition_loads()) {
        const std::string path = case_dir + "/cfgs/f0/" + load.file;
        const std::string name = std::string("partition/") + load.block;
        benchmark::RegisterBenchmark((name + "/floor").c_str(), floor_load, path)
            ->Unit(benchmark::kMicrosecond);
        benchmark::RegisterBenchmark((name + "/library").c_str(), library_load, &load, path)
            ->Unit(benchmark::kMicrosecond);
    }
}

}  // namespace isp_bench
