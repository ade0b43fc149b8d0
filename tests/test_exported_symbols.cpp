/* The dynamic symbol tables of the two libraries, read from their ELF files by this program
 * itself so that the check runs the same natively and under the target's emulator: libisp_json
 * exports exactly the entry points of its module and block tables and the utilities, and leaves
 * every platform interface to the platform library. */
#include <cxxabi.h>
#include <elf.h>
#include <stdint.h>
#include <stdlib.h>
#include <string.h>

#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "modules/tables.h"

namespace {

struct dyn_symbol {
    std::string name, demangled; /* demangled equals name for C symbols */
    bool defined, weak;
    unsigned type; /* STT_FUNC, ... */
};

struct elf_file {
    unsigned elf_class = 0, machine = 0;
    std::string soname;
    std::vector<dyn_symbol> symbols; /* global and weak entries of .dynsym */
    std::map<std::string, dyn_symbol> defined;
};

std::string demangle(const std::string &name) {
    int status               = 0;
    char *text               = abi::__cxa_demangle(name.c_str(), nullptr, nullptr, &status);
    const std::string result = status == 0 && text ? text : name;
    free(text);
    return result;
}

template <typename T>
T read_at(const std::vector<char> &bytes, uint64_t offset) {
    T value{};
    EXPECT_LE(offset + sizeof(T), bytes.size()) << "ELF structure beyond the end of the file";
    if (offset + sizeof(T) <= bytes.size()) memcpy(&value, bytes.data() + offset, sizeof value);
    return value;
}

/* One reader for both classes; the Elf32 and Elf64 structures share their member names. */
template <typename Ehdr, typename Shdr, typename Sym, typename Dyn>
void read_tables(const std::vector<char> &bytes, elf_file &out) {
    const Ehdr header = read_at<Ehdr>(bytes, 0);
    out.machine       = header.e_machine;
    std::vector<Shdr> sections;
    for (unsigned i = 0; i < header.e_shnum; ++i)
        sections.push_back(read_at<Shdr>(bytes, header.e_shoff + uint64_t{i} * header.e_shentsize));
    for (const Shdr &section : sections) {
        if (section.sh_link >= sections.size()) continue;
        const char *strings = bytes.data() + sections[section.sh_link].sh_offset;
        if (section.sh_type == SHT_DYNSYM) {
            for (uint64_t at = sizeof(Sym); at < section.sh_size; at += sizeof(Sym)) {
                const Sym sym       = read_at<Sym>(bytes, section.sh_offset + at);
                const unsigned bind = sym.st_info >> 4;
                if (bind != STB_GLOBAL && bind != STB_WEAK) continue;
                const std::string name = strings + sym.st_name;
                out.symbols.push_back({name, demangle(name), sym.st_shndx != SHN_UNDEF,
                                       bind == STB_WEAK, unsigned(sym.st_info & 0xF)});
                if (out.symbols.back().defined)
                    out.defined[out.symbols.back().demangled] = out.symbols.back();
            }
        } else if (section.sh_type == SHT_DYNAMIC) {
            for (uint64_t at = 0; at + sizeof(Dyn) <= section.sh_size; at += sizeof(Dyn)) {
                const Dyn entry = read_at<Dyn>(bytes, section.sh_offset + at);
                if (entry.d_tag == DT_SONAME) out.soname = strings + entry.d_un.d_val;
            }
        }
    }
}

elf_file read_elf(const char *path) {
    std::ifstream in(path, std::ios::binary);
    const std::vector<char> bytes((std::istreambuf_iterator<char>(in)),
                                  std::istreambuf_iterator<char>());
    elf_file out;
    EXPECT_TRUE(bytes.size() > EI_NIDENT && memcmp(bytes.data(), ELFMAG, SELFMAG) == 0) << path;
    EXPECT_EQ(bytes.size() > EI_NIDENT ? bytes[EI_DATA] : 0, ELFDATA2LSB) << path;
    if (bytes.size() <= EI_NIDENT) return out;
    out.elf_class = static_cast<unsigned char>(bytes[EI_CLASS]);
    if (out.elf_class == ELFCLASS32)
        read_tables<Elf32_Ehdr, Elf32_Shdr, Elf32_Sym, Elf32_Dyn>(bytes, out);
    else
        read_tables<Elf64_Ehdr, Elf64_Shdr, Elf64_Sym, Elf64_Dyn>(bytes, out);
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

TEST_F(ExportedSymbols, TheFilesAreSharedLibrariesOfThisBuild) {
    EXPECT_EQ(library.elf_class, sizeof(void *) == 4 ? unsigned{ELFCLASS32} : ELFCLASS64);
#if defined(__arm__)
    EXPECT_EQ(library.machine, unsigned{EM_ARM});
    EXPECT_EQ(platform.machine, unsigned{EM_ARM});
#elif defined(__x86_64__)
    EXPECT_EQ(library.machine, unsigned{EM_X86_64});
    EXPECT_EQ(platform.machine, unsigned{EM_X86_64});
#endif
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
        if (std::regex_match(s.demangled, m, exporter)) {
            bool named = false;  // after a block: drv_to_cmodel_<block>_...
            for (const char *block : isp::blocks())
                named |= m[1].str().rfind(std::string(block) + "_", 0) == 0;
            EXPECT_TRUE(named) << s.demangled;
        } else {
            found.insert(s.demangled);
        }
        EXPECT_EQ(s.type, unsigned{STT_FUNC}) << s.demangled;
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
