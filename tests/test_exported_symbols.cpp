/* The dynamic symbol tables of the two libraries, read from their ELF files by this program
 * itself so that the check runs the same natively and under the target's emulator: libisp_json
 * exports exactly its documented families and leaves every platform interface to the platform
 * library. */
#include <cxxabi.h>
#include <elf.h>
#include <stdint.h>
#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

struct dyn_symbol {
    std::string name;      /* as in the table (mangled for C++) */
    std::string demangled; /* equal to name for C symbols */
    bool defined  = false;
    bool weak     = false;
    unsigned type = 0; /* STT_FUNC, STT_OBJECT, ... */
};

struct elf_file {
    unsigned elf_class = 0; /* ELFCLASS32 or ELFCLASS64 */
    unsigned machine   = 0; /* EM_ARM, EM_X86_64, ... */
    std::string soname;
    std::vector<dyn_symbol> symbols; /* global and weak entries of .dynsym */
};

std::string demangle(const std::string &name) {
    int status = 0;
    char *text = abi::__cxa_demangle(name.c_str(), nullptr, nullptr, &status);
    if (status != 0 || text == nullptr) return name;
    std::string result(text);
    free(text);
    return result;
}

template <typename T>
T read_at(const std::vector<char> &bytes, uint64_t offset) {
    if (offset > bytes.size() || bytes.size() - offset < sizeof(T))
        throw std::runtime_error("ELF structure beyond the end of the file");
    T value;
    memcpy(&value, bytes.data() + offset, sizeof value);
    return value;
}

std::string string_at(const std::vector<char> &bytes, uint64_t table, uint64_t index) {
    if (table + index >= bytes.size()) throw std::runtime_error("ELF string beyond the file");
    return std::string(bytes.data() + table + index);
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
        const uint64_t strings = sections[section.sh_link].sh_offset;
        if (section.sh_type == SHT_DYNSYM) {
            for (uint64_t at = sizeof(Sym); at < section.sh_size; at += sizeof(Sym)) {
                const Sym sym       = read_at<Sym>(bytes, section.sh_offset + at);
                const unsigned bind = sym.st_info >> 4;
                if (bind != STB_GLOBAL && bind != STB_WEAK) continue;
                dyn_symbol s;
                s.name      = string_at(bytes, strings, sym.st_name);
                s.demangled = demangle(s.name);
                s.defined   = sym.st_shndx != SHN_UNDEF;
                s.weak      = bind == STB_WEAK;
                s.type      = sym.st_info & 0xF;
                out.symbols.push_back(s);
            }
        } else if (section.sh_type == SHT_DYNAMIC) {
            for (uint64_t at = 0; at + sizeof(Dyn) <= section.sh_size; at += sizeof(Dyn)) {
                const Dyn entry = read_at<Dyn>(bytes, section.sh_offset + at);
                if (entry.d_tag == DT_NULL) break;
                if (entry.d_tag == DT_SONAME)
                    out.soname = string_at(bytes, strings, entry.d_un.d_val);
            }
        }
    }
}

elf_file read_elf(const std::string &path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) throw std::runtime_error("cannot open " + path);
    const std::vector<char> bytes((std::istreambuf_iterator<char>(in)),
                                  std::istreambuf_iterator<char>());
    if (bytes.size() < EI_NIDENT || memcmp(bytes.data(), ELFMAG, SELFMAG) != 0)
        throw std::runtime_error(path + " is not an ELF file");
    if (bytes[EI_DATA] != ELFDATA2LSB) throw std::runtime_error(path + " is not little-endian");
    elf_file out;
    out.elf_class = static_cast<unsigned char>(bytes[EI_CLASS]);
    if (out.elf_class == ELFCLASS32)
        read_tables<Elf32_Ehdr, Elf32_Shdr, Elf32_Sym, Elf32_Dyn>(bytes, out);
    else
        read_tables<Elf64_Ehdr, Elf64_Shdr, Elf64_Sym, Elf64_Dyn>(bytes, out);
    return out;
}

/* The 34 modules; those without a sync operation export no sync function. */
const std::vector<std::string> k_modules = {
    "cc",       "dehaze",  "demosaic", "hs2dlut", "lin",  "ifa",  "blc", "yuv3dnr",      "ae_stat",
    "awb_stat", "lsc",     "af_stat",  "gamma",   "wbc",  "ccmp", "dpc", "ycproc",       "eis_post",
    "y2dnr",    "sharpen", "rltm",     "fcc",     "ainr", "csc",  "gic", "edge_enhance", "hidrc",
    "depurple", "eis_pre", "raw2dnr",  "bl_det",  "scm",  "hdrc", "hdr"};
const std::set<std::string> k_without_sync  = {"ae_stat", "ainr", "hidrc", "hdrc"};
const std::vector<std::string> k_operations = {
    "create", "destroy", "init", "deinit", "process", "trigger", "ctrl", "set_param", "get_param"};

/* The hardware blocks that have converters and exporters. */
const std::set<std::string> k_blocks = {
    "wbc",    "blc",     "dpc",      "lsc",     "dem",    "clc",     "gamma",    "csc",     "hdrc",
    "hidrc",  "hdr",     "raw2dnr",  "lce",     "rltm",   "dehaze",  "y2dnr",    "yuv3dnr", "pfd",
    "nrlite", "ae_stat", "awb_stat", "af_stat", "bl_det", "eis_pre", "eis_post", "ifa"};

const std::vector<std::string> k_platform_interfaces = {"QV_SYS_LogPrint",
                                                        "QV_OS_MEM_Calloc",
                                                        "QV_OS_MEM_Free",
                                                        "qv_hal_sys_mem_alloc_cached",
                                                        "QV_SYS_MemFree",
                                                        "vin_hal_wrapper_create",
                                                        "vin_hal_wrapper_destroy",
                                                        "vin_hal_wrapper_regio_create",
                                                        "vin_hal_wrapper_regio_destroy",
                                                        "vin_hal_wrapper_setup",
                                                        "vin_hal_wrapper_trigger",
                                                        "isp_plat_hal_register_func",
                                                        "qv_regio_regdesc_get_plat"};

/* picojson::object& as the demangler spells it. */
const std::string k_string =
    "std::__cxx11::basic_string<char, std::char_traits<char>, "
    "std::allocator<char> >";
const std::string k_object = "std::map<" + k_string + ", picojson::value, std::less<" + k_string +
                             " >, std::allocator<std::pair<" + k_string +
                             " const, picojson::value> > >&";

const std::set<std::string> k_utilities = {
    "sign_to_regval",
    "regval_to_float",
    "read_json_file(" + k_string + " const&)",
    "write_json_file(" + k_string + " const&, picojson::value const&)",
    "picojson::value json::createArray1D<double>(std::vector<double, std::allocator<double> > "
    "const&)",
    "picojson::value json::createArray2D<double>(std::vector<std::vector<double, "
    "std::allocator<double> >, std::allocator<std::vector<double, std::allocator<double> > > > "
    "const&)"};

/* The longest block name that starts the converter's own name, "" when none does. */
std::string block_of(const std::string &name) {
    std::string best;
    for (const std::string &block : k_blocks)
        if (name.compare(0, block.size() + 1, block + "_") == 0 && block.size() > best.size())
            best = block;
    return best;
}

class ExportedSymbols : public testing::Test {
  protected:
    static void SetUpTestSuite() {
        library  = new elf_file(read_elf(ISP_JSON_LIBRARY_FILE));
        platform = new elf_file(read_elf(ISP_PLATFORM_LIBRARY_FILE));
        /* The sorted exports go to the file named by ISP_EXPORTS_LIST, so that the lists of the
         * native and the target build can be compared line by line. */
        if (const char *path = getenv("ISP_EXPORTS_LIST")) {
            std::ofstream out(path, std::ios::trunc);
            for (const std::string &name : defined_names(*library)) out << name << '\n';
        }
    }
    static void TearDownTestSuite() {
        delete library;
        delete platform;
    }

    static std::vector<dyn_symbol> defined(const elf_file &file) {
        std::vector<dyn_symbol> out;
        for (const dyn_symbol &s : file.symbols)
            if (s.defined) out.push_back(s);
        return out;
    }
    static std::set<std::string> defined_names(const elf_file &file) {
        std::set<std::string> out;
        for (const dyn_symbol &s : defined(file)) out.insert(s.demangled);
        return out;
    }

    static elf_file *library;
    static elf_file *platform;
};
elf_file *ExportedSymbols::library  = nullptr;
elf_file *ExportedSymbols::platform = nullptr;

TEST_F(ExportedSymbols, TheFilesAreSharedLibrariesOfThisBuild) {
    EXPECT_EQ(library->elf_class, sizeof(void *) == 4 ? unsigned{ELFCLASS32} : ELFCLASS64);
#if defined(__arm__)
    EXPECT_EQ(library->machine, unsigned{EM_ARM});
    EXPECT_EQ(platform->machine, unsigned{EM_ARM});
#elif defined(__x86_64__)
    EXPECT_EQ(library->machine, unsigned{EM_X86_64});
    EXPECT_EQ(platform->machine, unsigned{EM_X86_64});
#endif
    EXPECT_EQ(library->soname, "libisp_json.so.2");
    EXPECT_EQ(platform->soname, "libisp_platform_sim.so.2");
}

TEST_F(ExportedSymbols, ExactlyOneRegistrationPerModuleWithCLinkage) {
    std::set<std::string> found;
    for (const dyn_symbol &s : defined(*library))
        if (s.name.rfind("qv_isp_module_", 0) == 0) {
            found.insert(s.name);
            EXPECT_EQ(s.type, unsigned{STT_FUNC}) << s.name;
        }
    std::set<std::string> expected;
    for (const std::string &mod : k_modules)
        expected.insert("qv_isp_module_" + mod + "_json_register");
    EXPECT_EQ(expected.size(), 34u);
    EXPECT_EQ(found, expected);
}

TEST_F(ExportedSymbols, EveryModuleExportsItsOperationsAndSyncOnlyWhereItHasOne) {
    std::set<std::string> found;
    for (const dyn_symbol &s : defined(*library))
        if (std::regex_match(s.name, std::regex("isp_.*_json_mod_.*"))) {
            found.insert(s.name);
            EXPECT_EQ(s.type, unsigned{STT_FUNC}) << s.name;
        }
    std::set<std::string> expected;
    for (const std::string &mod : k_modules) {
        for (const std::string &op : k_operations)
            expected.insert("isp_" + mod + "_json_mod_" + op);
        if (!k_without_sync.count(mod)) expected.insert("isp_" + mod + "_json_mod_sync");
    }
    EXPECT_EQ(expected.size(), 34u * 9u + 30u);
    EXPECT_EQ(found, expected);
}

TEST_F(ExportedSymbols, UtilitiesAreExportedUnderTheirDocumentedSignatures) {
    const std::set<std::string> names = defined_names(*library);
    for (const std::string &utility : k_utilities) EXPECT_EQ(names.count(utility), 1u) << utility;
    /* the two C functions keep unmangled names */
    for (const dyn_symbol &s : defined(*library))
        if (s.demangled == "sign_to_regval" || s.demangled == "regval_to_float") {
            EXPECT_EQ(s.name, s.demangled);
        }
}

TEST_F(ExportedSymbols, ConvertersAndExportersHaveTheirSignatureAndNameABlock) {
    const std::regex converter("rtl_to_drv_([a-z0-9_]+)\\(" + std::string("(.*)") +
                               ", _isp_[a-z0-9_]+_t\\*, unsigned char\\)");
    const std::regex exporter(
        "drv_to_cmodel_([a-z0-9_]+)\\(_isp_[a-z0-9_]+_t\\*, (.*), "
        "unsigned char\\)");
    std::set<std::string> converter_blocks, exporter_blocks;
    size_t converters = 0, exporters = 0;
    for (const dyn_symbol &s : defined(*library)) {
        std::smatch m;
        if (s.demangled.rfind("rtl_to_drv_", 0) == 0) {
            ++converters;
            ASSERT_TRUE(std::regex_match(s.demangled, m, converter)) << s.demangled;
            EXPECT_EQ(m[2].str(), k_object) << s.demangled;
            EXPECT_NE(block_of(m[1].str()), "") << s.demangled;
            converter_blocks.insert(block_of(m[1].str()));
        } else if (s.demangled.rfind("drv_to_cmodel_", 0) == 0) {
            ++exporters;
            ASSERT_TRUE(std::regex_match(s.demangled, m, exporter)) << s.demangled;
            EXPECT_EQ(m[2].str(), k_object) << s.demangled;
            EXPECT_NE(block_of(m[1].str()), "") << s.demangled;
            exporter_blocks.insert(block_of(m[1].str()));
        } else {
            continue;
        }
        EXPECT_NE(s.name, s.demangled) << "converters and exporters have C++ linkage";
        EXPECT_EQ(s.type, unsigned{STT_FUNC}) << s.demangled;
    }
    EXPECT_GT(converters, 0u);
    EXPECT_GT(exporters, 0u);
    EXPECT_EQ(converter_blocks, k_blocks);  // every block converts its register files
}

TEST_F(ExportedSymbols, TheDefectPixelCorrectionKeepsBothDpCorrectOverloads) {
    const std::set<std::string> names = defined_names(*library);
    for (const char *group : {"_isp_dpc_user_calc_dp_correct_t", "_isp_dpc_user_calc_partition_t"})
        EXPECT_EQ(names.count("rtl_to_drv_dpc_user_calc_dp_correct(" + k_object + ", " + group +
                              "*, unsigned char)"),
                  1u)
            << group;
}

TEST_F(ExportedSymbols, NothingElseIsExported) {
    std::vector<std::string> strays;
    for (const dyn_symbol &s : defined(*library)) {
        const std::string &n = s.demangled;
        const bool documented =
            std::regex_match(n, std::regex("qv_isp_module_[a-z0-9_]+_json_register")) ||
            std::regex_match(n, std::regex("isp_[a-z0-9_]+_json_mod_[a-z_]+")) ||
            n.rfind("rtl_to_drv_", 0) == 0 || n.rfind("drv_to_cmodel_", 0) == 0 ||
            k_utilities.count(n) != 0;
        if (!documented) strays.push_back(n);
    }
    EXPECT_EQ(strays, std::vector<std::string>{});
}

TEST_F(ExportedSymbols, PlatformInterfacesAreLeftUndefinedForThePlatformLibrary) {
    std::map<std::string, const dyn_symbol *> table;
    for (const dyn_symbol &s : library->symbols) table[s.name] = &s;
    const std::set<std::string> provided = defined_names(*platform);
    for (const std::string &name : k_platform_interfaces) {
        ASSERT_EQ(table.count(name), 1u) << name << " is not referenced";
        EXPECT_FALSE(table[name]->defined) << name << " is defined by libisp_json";
        EXPECT_FALSE(table[name]->weak) << name << " would silently resolve to null";
        EXPECT_EQ(provided.count(name), 1u) << name << " is missing from the platform library";
    }
}

}  // namespace
