/* One partition of each block with a register map, loaded as its module loads it (read, parse,
 * convert with the module's converters in its order) against the floor: the same file opened,
 * read and parsed with picojson, nothing else. */
#include <benchmark/benchmark.h>
#include <stdio.h>

#include <string>
#include <vector>

#include "bench/benchmarks.h"
#include "bench/sample_case.h"
#include "isp_json.h"

namespace isp_bench {
namespace {

using step = void (*)(picojson::object &root, uint8_t partition);

/* Converts into a structure of its own that lives as long as the program, as the module's frame
 * buffer outlives the files. */
template <typename T, int (*convert)(picojson::object &, T *, uint8_t)>
void into(picojson::object &root, uint8_t partition) {
    static T out;
    convert(root, &out, partition);
}

void clc_init(picojson::object &root, uint8_t partition) {
    static uint16_t sizes_h[k_grid_h * k_grid_v], sizes_v[k_grid_h * k_grid_v];
    static _isp_clc_user_init_t out;
    out.part_size_h = sizes_h;
    out.part_size_v = sizes_v;
    rtl_to_drv_clc_user_init(root, &out, partition);
}

struct partition_load {
    const char *block;
    const char *file; /* under the frame directory */
    std::vector<step> steps;
};

/* The converters of the block's module (the channelled ones per channel), in its order. */
const partition_load k_loads[] = {
    {"wbc",
     "rtl_wbc_p0.json",
     {into<_isp_wbc_user_ctrl_t, rtl_to_drv_wbc_user_ctrl>,
      into<_isp_wbc_user_setup_t, rtl_to_drv_wbc_user_setup>,
      into<_isp_wbc_user_init_t, rtl_to_drv_wbc_user_init>}},
    {"blc",
     "rtl_blc_p0_chn0.json",
     {into<_isp_blc_user_lin_t, rtl_to_drv_blc_user_lin>,
      into<_isp_blc_user_common_t, rtl_to_drv_blc_user_common>,
      into<_isp_blc_user_dither_t, rtl_to_drv_blc_user_dither>,
      into<_isp_blc_user_setup_t, rtl_to_drv_blc_user_setup>,
      into<_isp_blc_user_init_t, rtl_to_drv_blc_user_init>,
      into<_isp_blc_kernel_gbl_t, rtl_to_drv_blc_kernel_gbl>,
      into<_isp_blc_kernel_sbl_t, rtl_to_drv_blc_kernel_sbl>,
      into<_isp_blc_kernel_ctrl_t, rtl_to_drv_blc_kernel_ctrl>}},
    {"dpc",
     "rtl_dpc_p0_chn0.json",
     {into<_isp_dpc_user_calc_dp_strength_t, rtl_to_drv_dpc_user_calc_dp_strength>,
      into<_isp_dpc_user_setup_t, rtl_to_drv_dpc_user_setup>,
      into<_isp_dpc_user_calc_top_control_t, rtl_to_drv_dpc_user_calc_top_control>,
      into<_isp_dpc_user_calc_noise_t, rtl_to_drv_dpc_user_calc_noise>,
      into<_isp_dpc_user_calc_wb_gain_t, rtl_to_drv_dpc_user_calc_wb_gain>,
      into<_isp_dpc_user_calc_quick_det_t, rtl_to_drv_dpc_user_calc_quick_det>,
      into<_isp_dpc_user_calc_dp_correct_t, rtl_to_drv_dpc_user_calc_dp_correct>,
      into<_isp_dpc_user_calc_color_limit_t, rtl_to_drv_dpc_user_calc_color_limit>,
      into<_isp_dpc_user_init_t, rtl_to_drv_dpc_user_init>}},
    {"lsc",
     "rtl_lsc_p0.json",
     {into<_isp_lsc_user_setup_t, rtl_to_drv_lsc_user_setup>,
      into<_isp_lsc_user_coord_t, rtl_to_drv_lsc_user_coord>,
      into<_isp_lsc_user_mesh_t, rtl_to_drv_lsc_user_mesh>}},
    {"dem",
     "rtl_dem_p0.json",
     {into<_isp_dem_user_init_t, rtl_to_drv_dem_user_init>,
      into<_isp_dem_user_setup_t, rtl_to_drv_dem_user_setup>,
      into<_isp_dem_user_dem_mode_t, rtl_to_drv_dem_user_dem_mode>,
      into<_isp_dem_user_dem_core_t, rtl_to_drv_dem_user_dem_core>,
      into<_isp_dem_user_wbc_t, rtl_to_drv_dem_user_wbc>}},
    {"clc",
     "rtl_clc_p0.json",
     {clc_init, into<_isp_clc_user_clc_setup_t, rtl_to_drv_clc_user_clc_setup>,
      into<_isp_clc_user_clc_t, rtl_to_drv_clc_user_clc>}},
    {"gamma",
     "rtl_gamma_p0.json",
     {into<_isp_gamma_user_setup_t, rtl_to_drv_gamma_user_setup>,
      into<_isp_gamma_user_dither_t, rtl_to_drv_gamma_user_dither>,
      into<_isp_gamma_user_lut_t, rtl_to_drv_gamma_user_lut>}},
    {"csc",
     "rtl_csc_p0.json",
     {into<_isp_csc_user_core_t, rtl_to_drv_csc_user_core>,
      into<_isp_csc_user_setup_t, rtl_to_drv_csc_user_setup>,
      into<_isp_csc_user_init_t, rtl_to_drv_csc_user_init>}},
    {"hdrc",
     "rtl_hdrc_p0.json",
     {into<_isp_hdrc_user_setup_t, rtl_to_drv_hdrc_user_setup>,
      into<_isp_hdrc_user_hdrc_lut_t, rtl_to_drv_hdrc_user_hdrc_lut>,
      into<_isp_hdrc_user_glb_ctrl_t, rtl_to_drv_hdrc_glb_ctl>}},
    {"hidrc",
     "rtl_hidrc_p0.json",
     {into<_isp_hidrc_user_setup_t, rtl_to_drv_hidrc_user_setup>,
      into<_isp_hidrc_user_hidrc_lut_t, rtl_to_drv_hidrc_user_hidrc_lut>}},
};

void library_load(benchmark::State &state, const partition_load *load, const std::string &path) {
    for (auto _ : state) {
        picojson::value document = read_json_file(path);
        picojson::object &root   = document.get<picojson::object>();
        for (step convert : load->steps) convert(root, 0);
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
    for (const partition_load &load : k_loads) {
        if (block != load.block) continue;
        const std::string path = case_dir + "/cfgs/f0/" + load.file;
        for (int i = 0; i < loads; ++i) {
            if (what == "library") {
                picojson::value document = read_json_file(path);
                picojson::object &root   = document.get<picojson::object>();
                for (step convert : load.steps) convert(root, 0);
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
    for (const partition_load &load : k_loads) {
        const std::string path = case_dir + "/cfgs/f0/" + load.file;
        const std::string name = std::string("partition/") + load.block;
        benchmark::RegisterBenchmark((name + "/floor").c_str(), floor_load, path)
            ->Unit(benchmark::kMicrosecond);
        benchmark::RegisterBenchmark((name + "/library").c_str(), library_load, &load, path)
            ->Unit(benchmark::kMicrosecond);
    }
}

}  // namespace isp_bench
