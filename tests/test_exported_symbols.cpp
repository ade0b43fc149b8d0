/* The dynamic symbol tables of the two libraries as readelf prints them, read the same natively
 * and under the target's emulator (readelf reads any ELF file): libisp_json exports exactly the
 * entry points of its module and block tables and the utilities, and leaves every platform
 * interface to the platform library. */
#include <stdio.h>
#include <stdlib.h>

#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "modules/tables.h"

namespace {

struct dyn_symbol {
    std::string name, type; /* demangled; "FUNC", "OBJECT", ... */
    bool defined, weak;
};

struct elf_file {
    std::string soname;
    std::vector<dyn_symbol> symbols; /* global and weak entries of .dynsym */
    std::map<std::string, dyn_symbol> defined;
};

std::string output_of(const std::string &command) {
    std::string out;
    FILE *pipe = popen(command.c_str(), "r");
    if (!pipe) return out;
    char buffer[4096];
    for (size_t n; (n = fread(buffer, 1, sizeof buffer, pipe)) > 0;) out.append(buffer, n);
    EXPECT_EQ(pclose(pipe), 0) << command;
    return out;
}

elf_file read_elf(const std::string &path) {
    elf_file out;
    std::smatch m;
    const std::string dynamic = output_of("readelf -d -W '" + path + "'");
    if (std::regex_search(dynamic, m, std::regex("\\(SONAME\\).*\\[(.*)\\]"))) out.soname = m[1];
    /* "  12: 0001f3c0  40 FUNC GLOBAL DEFAULT 11 name[@version (n)]" */
    std::istringstream table(output_of("readelf --dyn-syms -W -C '" + path + "'"));
    const std::regex entry(
        " *[0-9]+: [0-9a-f]+ +[0-9a-fx]+ (\\w+) +(\\w+) +\\w+ +(\\w+) (.*?)(@.*)?");
    for (std::string line; std::getline(table, line);) {
        if (!std::regex_match(line, m, entry) || (m[2] != "GLOBAL" && m[2] != "WEAK")) continue;
        out.symbols.push_back({m[4], m[1], m[3] != "UND", m[2] == "WEAK"});
        if (out.symbols.back().defined) out.defined[m[4]] = out.symbols.back();
    }
    EXPECT_FALSE(out.symbols.empty()) << path;
    return out;
}

/* std::string and picojson::object& as the demangler spells them. */
const std::string k_string =
    "std::__cxx11::basic_string<char, std::char_traits<char>, std::allocator<char> >";
const std::string k_object = "std::map<" + k_string + ", picojson::value, std::less<" + k_string +
                             " >, std::allocator<std::pair<" + k_string +
                             " const, picojson::value> > >&";
const std::string k_doubles = "std::vector<double, std::allocator<double> >";

class ExportedSymbols : public testing::Test {
  protected:
    static void SetUpTestSuite() {
        library  = read_elf(ISP_JSON_LIBRARY_FILE);
        platform = read_elf(ISP_PLATFORM_LIBRARY_FILE);
        /* The sorted exports go to the file named by ISP_EXPORTS_LIST, so that the lists of the
         * native and the target build can be compared line by line. */
        if (const char *path = getenv("ISP_EXPORTS_LIST")) {
            std::ofstream out(path, std::ios::trunc);
            for (const auto &s : library.defined) out << s.first << '\n';
        }
    }
    static elf_file library, platform;
};
elf_file ExportedSymbols::library, ExportedSymbols::platform;

/* Class and machine need no check: this program could not load a library built for another. */
TEST_F(ExportedSymbols, EachLibraryNamesItsMajorVersion) {
    EXPECT_EQ(library.soname, "libisp_json.so.2");
    EXPECT_EQ(platform.soname, "libisp_platform_sim.so.2");
}

/* The module table's entry points with C linkage, each block's converters under their C++
 * signature, exporters named after a block, and the utilities: nothing more, nothing less. */
TEST_F(ExportedSymbols, ExactlyTheEntryPointsOfTheTablesAndTheUtilitiesAreExported) {
    std::set<std::string> expected = {
        "sign_to_regval",
        "regval_to_float",
        "read_json_file(" + k_string + " const&)",
        "write_json_file(" + k_string + " const&, picojson::value const&)",
        "picojson::value json::createArray1D<double>(" + k_doubles + " const&)",
        "picojson::value json::createArray2D<double>(std::vector<" + k_doubles +
            ", std::allocator<" + k_doubles + " > > const&)"};
    size_t with_sync = 0;
    for (const isp::module_desc &m : isp::modules()) {
        const std::string mod = m.name;
        expected.insert("qv_isp_module_" + mod + "_json_register");
        for (const char *op : {"create", "destroy", "init", "deinit", "process", "trigger", "ctrl",
                               "set_param", "get_param"})
            expected.insert("isp_" + mod + "_json_mod_" + op);
        if (m.enable == isp::enable_update::in_sync && ++with_sync)
            expected.insert("isp_" + mod + "_json_mod_sync");
    }
    for (const char *block : isp::blocks()) {
        EXPECT_FALSE(isp::block_converters(block).empty()) << block;
        for (const isp::converter_desc *c : isp::block_converters(block))
            expected.insert(std::string(c->name) + "(" + k_object + ", " + c->c_type +
                            "*, unsigned char)");
    }
    /* hand-checked rows of the tables */
    EXPECT_EQ(isp::modules().size(), 34u);
    EXPECT_EQ(with_sync, 30u);
    EXPECT_EQ(isp::blocks().size(), 26u);
    for (const char *name : {"qv_isp_module_cc_json_register", "isp_hdr_json_mod_sync",
                             "isp_eis_post_json_mod_get_param", "isp_ae_stat_json_mod_ctrl"})
        EXPECT_EQ(expected.count(name), 1u) << name;
    for (const char *name : {"isp_ae_stat_json_mod_sync", "isp_ainr_json_mod_sync",
                             "isp_hidrc_json_mod_sync", "isp_hdrc_json_mod_sync"})
        EXPECT_EQ(expected.count(name), 0u) << name;
    for (const char *group : {"_isp_dpc_user_calc_dp_correct_t", "_isp_dpc_user_calc_partition_t"})
        EXPECT_EQ(expected.count("rtl_to_drv_dpc_user_calc_dp_correct(" + k_object + ", " + group +
                                 "*, unsigned char)"),
                  1u);

    const std::regex exporter("drv_to_cmodel_([a-z0-9_]+)\\(_isp_[a-z0-9_]+_t\\*, " + k_object +
                              ", unsigned char\\)");
    std::set<std::string> found;
    for (const auto &entry : library.defined) {
        const dyn_symbol &s = entry.second;
        std::smatch m;
        if (std::regex_match(s.name, m, exporter)) {
            bool named = false;  // after a block: drv_to_cmodel_<block>_...
            for (const char *block : isp::blocks())
                named |= m[1].str().rfind(std::string(block) + "_", 0) == 0;
            EXPECT_TRUE(named) << s.name;
        } else {
            found.insert(s.name);
        }
        EXPECT_EQ(s.type, "FUNC") << s.name;
    }
    EXPECT_EQ(found, expected);
}

TEST_F(ExportedSymbols, PlatformInterfacesAreLeftUndefinedForThePlatformLibrary) {
    std::map<std::string, const dyn_symbol *> table;
    for (const dyn_symbol &s : library.symbols) table[s.name] = &s;
    for (const char *name :
         {"QV_SYS_LogPrint", "QV_OS_MEM_Calloc", "QV_OS_MEM_Free", "qv_hal_sys_mem_alloc_cached",
          "QV_SYS_MemFree", "vin_hal_wrapper_create", "vin_hal_wrapper_destroy",
          "vin_hal_wrapper_regio_create", "vin_hal_wrapper_regio_destroy", "vin_hal_wrapper_setup",
          "vin_hal_wrapper_trigger", "isp_plat_hal_register_func", "qv_regio_regdesc_get_plat"}) {
        ASSERT_EQ(table.count(name), 1u) << name << " is not referenced";
        EXPECT_FALSE(table[name]->defined) << name << " is defined by libisp_json";
        EXPECT_FALSE(table[name]->weak) << name << " would silently resolve to null";
        EXPECT_EQ(platform.defined.count(name), 1u) << name << " is missing from the platform";
    }
}

}  // namespace
