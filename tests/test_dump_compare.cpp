/* The dump reader and the comparison engine on small dumps written by hand: which differences
 * two runs have, and which dumps are refused with what message. */

#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "isp_json.h"
#include "tests/support/test_support.h"
#include "tools/compare/engine.h"
#include "tools/compare/runs.h"
#include "tools/compare/wording.h"
#include "tools/dump/decode.h"
#include "tools/dump/reader.h"
#include "tools/dump/store.h"

namespace {

namespace fs = std::filesystem;
using isp_test::temp_dir;
using picojson::value;

/* A dump under construction: wbc ctrl pushes of a 2x1 grid, one channel, two frames. */
class dump_builder {
  public:
    explicit dump_builder(const std::string &dir) : dir_(dir) {}

    /* A wbc ctrl push of the given d_gain and wb_gain[2] codes in frame `frame` (0: setup);
     * returns its entry. */
    picojson::object &push(int frame, uint32_t d_gain, const std::string &name = "cmd01_ctrl",
                           uint16_t wb_gain2 = 0) {
        _isp_wbc_user_ctrl_t ctrl{};
        ctrl.d_gain                      = d_gain;
        ctrl.wb_gain[2]                  = wb_gain2;
        const std::vector<uint8_t> bytes = isp_test::bytes_of(ctrl);
        const std::string step           = frame ? "frame" + std::to_string(frame) : "setup";
        frames_                          = std::max(frames_, frame);
        const std::string base           = step + "/wbc/" + name;
        isp_case::decode_input input;
        input.block      = "wbc";
        input.type       = "_isp_wbc_user_ctrl_t";
        input.bytes      = &bytes;
        input.partitions = 2;
        fs::create_directories(dir_ + "/" + step + "/wbc");
        write(base + ".bin", std::string(bytes.begin(), bytes.end()));
        write(base + ".json", isp_case::decode_structure(input).serialize());
        picojson::object p, files, at;
        at["phase"] = value(std::string(frame ? "frame" : "setup"));
        at["frame"] = value(double(frame));
        at["dir"]   = value(double(frame));
        picojson::array sources;
        for (int part = 0; part < 2; ++part)
            sources.push_back(value(
                picojson::object{{"partition", value(double(part))},
                                 {"channel", value(0.0)},
                                 {"file", value("cfgs/f" + std::to_string(frame) + "/rtl_wbc_p" +
                                                std::to_string(part) + ".json")}}));
        files["bin"]     = value(base + ".bin");
        files["json"]    = value(base + ".json");
        files["cmodel"]  = value(picojson::array());
        files["targets"] = value(picojson::array());
        p                = {{"step", value(at)},
                            {"module", value(std::string("wbc"))},
                            {"block", value(std::string("wbc"))},
                            {"channel", value(0.0)},
                            {"cmd", value(1.0)},
                            {"group", value(std::string("ctrl"))},
                            {"type", value(std::string("_isp_wbc_user_ctrl_t"))},
                            {"size", value(double(bytes.size()))},
                            {"sources", value(sources)},
                            {"files", value(files)}};
        pushes_.push_back(value(p));
        return pushes_.back().get<picojson::object>();
    }

    /* Rewrites one key of d_gain in a push's decoded file. */
    void edit_d_gain(const std::string &json, const std::string &key, const value &v) {
        value decoded;
        picojson::parse(decoded, isp_test::read_file(dir_ + "/" + json));
        for (value &m : decoded.get("members").get<picojson::array>())
            if (m.get("name").to_str() == "d_gain") m.get<picojson::object>()[key] = v;
        write(json, decoded.serialize());
    }

    std::string finish(int part_h = 2) {
        picojson::object m = {
            {"manifest_version", value(2.0)},
            {"tool", value(std::string("isp-case test"))},
            {"library", value(std::string("libisp_json test"))},
            {"case", value(std::string("case"))},
            {"grid", value(picojson::object{{"h", value(double(part_h))}, {"v", value(1.0)}})},
            {"channels", value(1.0)},
            {"frames", value(double(frames_))},
            {"pointer_bytes", value(8.0)},
            {"modules", value(picojson::array{value(std::string("wbc"))})},
            {"bypass", value(picojson::array())},
            {"verdict", value(picojson::object{{"result", value(std::string("ok"))},
                                               {"errors", value(0.0)},
                                               {"warnings", value(0.0)},
                                               {"strict", value(false)},
                                               {"text", value(std::string("ok"))}})},
            {"findings", value(picojson::array())},
            {"pushes", value(pushes_)}};
        write("manifest.json", value(m).serialize());
        return dir_;
    }

  private:
    void write(const std::string &relative, const std::string &text) {
        std::ofstream(dir_ + "/" + relative, std::ios::binary) << text;
    }
    std::string dir_;
    picojson::array pushes_;
    int frames_ = 2;
};

struct found {
    isp_case::comparison_summary summary;
    std::vector<std::string> lines; /* "kind step member[index] a->b" */
};

found compare(const std::string &a, const std::string &b, double tolerance = 0) {
    found f;
    isp_case::compare_options options;
    options.tolerance = tolerance;
    f.summary         = isp_case::compare_dumps(
                isp_case::open_dump(a), isp_case::open_dump(b), options,
                [&](const isp_case::difference &d) {
            std::string line = std::string(isp_case::kind_name(d.kind)) + " " +
                               isp_case::step_label(d.push().step);
            if (!d.member.empty())
                line += " " + d.member + (d.index < 0 ? "" : "[" + std::to_string(d.index) + "]");
            if (d.kind == isp_case::difference_kind::format)
                line += " " + d.in_a.format + "->" + d.in_b.format;
            else if (d.kind == isp_case::difference_kind::location)
                line += " " + d.in_a.location + "->" + d.in_b.location;
            else if (d.kind == isp_case::difference_kind::code ||
                     d.kind == isp_case::difference_kind::value)
                line += isp_test::format(" %g/%g->%g/%g", d.in_a.code, d.in_a.value, d.in_b.code,
                                                 d.in_b.value);
            f.lines.push_back(line);
        });
    return f;
}

using lines_t = std::vector<std::string>;

/* Codes are what the hardware gets: no tolerance hides them; a format or register path of its
 * own kind; the tolerance weighs real values only. */
TEST(CompareEngine, CodesAlwaysDifferFormatsAndRegistersAreDifferencesOfTheirOwn) {
    temp_dir dir;
    dump_builder a(dir.path() + "/a"), b(dir.path() + "/b"), c(dir.path() + "/c");
    a.push(0, 256), a.push(1, 256);
    b.push(0, 256), b.push(1, 512);
    c.push(0, 256);
    c.push(1, 256);
    // the same code read through another format and another register
    c.edit_d_gain("frame1/wbc/cmd01_ctrl.json", "format", value(std::string("u10.9")));
    c.edit_d_gain("frame1/wbc/cmd01_ctrl.json", "value", value(0.5));
    c.edit_d_gain("frame1/wbc/cmd01_ctrl.json", "register", value(std::string("isp_wbc.x.val")));
    const std::string da = a.finish(), db = b.finish(), dc = c.finish();

    const found codes = compare(da, db, 1e9);
    EXPECT_EQ(codes.lines, lines_t{"code frame 1 (f1) d_gain 256/1->512/2"});
    EXPECT_EQ(codes.summary.differing, 1u);
    EXPECT_FALSE(codes.summary.identical());

    EXPECT_EQ(compare(da, dc).lines,
              (lines_t{"format frame 1 (f1) d_gain u10.8->u10.9",
                       "register frame 1 (f1) d_gain isp_wbc.d_gain.val->isp_wbc.x.val",
                       "value frame 1 (f1) d_gain 256/1->256/0.5"}));
    EXPECT_EQ(compare(da, dc, 0.5).lines.size(), 2u);  // the values within the tolerance
    EXPECT_TRUE(compare(da, da).summary.identical());
}

/* Repeated pushes of one step pair by occurrence; a push one side lacks is named as such. */
TEST(CompareEngine, RepeatedPushesPairByOccurrenceAndLoneOnesAreNamed) {
    temp_dir dir;
    dump_builder a(dir.path() + "/a"), b(dir.path() + "/b");
    a.push(1, 1, "cmd01_ctrl"), a.push(1, 2, "cmd01_ctrl.2"), a.push(1, 4, "cmd01_ctrl.3");
    b.push(0, 7);
    b.push(1, 1, "cmd01_ctrl"), b.push(1, 3, "cmd01_ctrl.2");
    const found f = compare(a.finish(), b.finish());
    EXPECT_EQ(f.lines, (lines_t{"push_only_in_b setup (f0)",
                                "code frame 1 (f1) d_gain 2/0.0078125->3/0.0117188",
                                "push_only_in_a frame 1 (f1)"}));
    EXPECT_EQ(f.summary.only_a, 1u);
    EXPECT_EQ(f.summary.only_b, 1u);
    EXPECT_EQ(f.summary.differing, 1u);
}

/* The first divergence in register terms: wb_gain[2] is filled by the second gain register, not
 * the member's first row; the files are those the push was converted from. */
TEST(CompareEngine, FirstDivergenceNamesTheRowThatFillsTheElementAndItsFiles) {
    temp_dir dir;
    dump_builder a(dir.path() + "/a"), b(dir.path() + "/b");
    a.push(0, 256), a.push(1, 256), a.push(2, 256);
    b.push(0, 256), b.push(1, 256, "cmd01_ctrl", 384), b.push(2, 384);
    const isp_case::dump da = isp_case::open_dump(a.finish()), db = isp_case::open_dump(b.finish());
    const isp_case::divergence found = isp_case::first_divergence(da, db, {});
    ASSERT_TRUE(found.first);
    EXPECT_EQ(isp_case::first_divergence_text(*found.first, found.more),
              "frame 1 (f1): wbc.ctrl.wb_gain[2] at isp_wbc.wb_gain2.val2 in "
              "cfgs/f1/rtl_wbc_p0.json, cfgs/f1/rtl_wbc_p1.json: code 0 | 384, value 0 | 1.5; 1 "
              "more difference");
    EXPECT_EQ(found.first->files,
              (std::vector<std::string>{"cfgs/f1/rtl_wbc_p0.json", "cfgs/f1/rtl_wbc_p1.json"}));
    isp_case::compare_options first_only;
    first_only.limit = 1;
    EXPECT_EQ(isp_case::first_divergence(da, db, first_only).summary.pushes_a, 2u);
    EXPECT_FALSE(isp_case::first_divergence(da, da, {}).first);

    // an element of a two-dimensional member is named as the driver's structure declares it
    auto clc    = std::make_shared<isp_case::dump_push>();
    clc->module = "cc", clc->group = "clc", clc->type = "_isp_clc_user_clc_t";
    isp_case::difference d;
    d.a = clc, d.member = "matrix_list", d.index = 7;
    EXPECT_EQ(isp_case::element_name(d), "cc.clc.matrix_list[0][7]");
}

/* A difference repeated the same way over consecutive steps is one run; a step without it, or
 * other codes, begin another. Runs come as they end, those that began first first. */
TEST(CompareEngine, DifferencesRepeatedOverConsecutiveStepsAreOneRun) {
    temp_dir dir;
    dump_builder a(dir.path() + "/a"), b(dir.path() + "/b");
    const uint32_t b_gains[] = {256, 512, 512, 256, 512, 512, 768};
    for (int frame = 0; frame <= 6; ++frame) {
        a.push(frame, 256);
        b.push(frame, b_gains[frame], "cmd01_ctrl", frame == 5 ? 7 : 0);
    }
    const isp_case::dump da = isp_case::open_dump(a.finish()), db = isp_case::open_dump(b.finish());
    lines_t runs;
    isp_case::run_merger merger(da, db, [&](const isp_case::difference_run &r) {
        runs.push_back(isp_case::step_range_label(r.first.push().step, r.last) + " " +
                       std::to_string(r.steps) + ": " +
                       isp_case::difference_text(r.first, true, &r.last));
    });
    isp_case::compare_dumps(da, db, {}, std::ref(merger));
    merger.finish();
    EXPECT_EQ(runs, (lines_t{"frames 1-2 (f1-f2) 2: wbc.ctrl.d_gain at isp_wbc.d_gain.val in "
                             "cfgs/f{1..2}/rtl_wbc_p0.json, cfgs/f{1..2}/rtl_wbc_p1.json: code "
                             "256 | 512, value 1 | 2",
                             "frames 4-5 (f4-f5) 2: wbc.ctrl.d_gain at isp_wbc.d_gain.val in "
                             "cfgs/f{4..5}/rtl_wbc_p0.json, cfgs/f{4..5}/rtl_wbc_p1.json: code "
                             "256 | 512, value 1 | 2",
                             "frame 5 (f5) 1: wbc.ctrl.wb_gain[2] at isp_wbc.wb_gain2.val2 in "
                             "cfgs/f5/rtl_wbc_p0.json, cfgs/f5/rtl_wbc_p1.json: code 0 | 7, value "
                             "0 | 0.02734375",
                             "frame 6 (f6) 1: wbc.ctrl.d_gain at isp_wbc.d_gain.val in "
                             "cfgs/f6/rtl_wbc_p0.json, cfgs/f6/rtl_wbc_p1.json: code 256 | 768, "
                             "value 1 | 3"}));

    using isp_case::frame_step;
    EXPECT_EQ(isp_case::step_range_label(frame_step(2, 3), frame_step(5, 3)),
              "frames 2-5 (f2-f3, then f3 again)");
    EXPECT_EQ(isp_case::step_range_label(frame_step(4, 3), frame_step(6, 3)),
              "frames 4-6 (f3 again)");
    EXPECT_EQ(isp_case::step_range_label(isp_case::setup_step(), frame_step(1, 3)),
              "setup (f0) to frame 1 (f1)");
}

/* An element of a per-partition member came from its partition's file alone, partition p's
 * elements p-th in the structure; any other member from every file of the push. */
TEST(CompareEngine, PerPartitionElementsNameTheirPartitionsFile) {
    isp_case::dump_push push;
    for (int part = 0; part < 4; ++part)
        push.sources.push_back({part, 0, "cfgs/f1/x_p" + std::to_string(part) + ".json"});
    const auto member = [](unsigned count, bool per_partition, std::vector<double> codes) {
        isp_case::dump_member m;
        m.name          = "m";
        m.count         = count;
        m.scalar        = false;
        m.per_partition = per_partition;
        m.codes         = std::move(codes);
        return m;
    };
    const auto files_of_differences = [&](unsigned count, bool per_partition) {
        isp_case::decoded_push a, b;
        a.members = {member(count, per_partition, {1, 1, 1, 1, 1, 1})};
        b.members = {member(count, per_partition, {1, 1, 1, 2, 1, 1})};
        isp_case::difference prototype;
        prototype.a = prototype.b = std::make_shared<const isp_case::dump_push>(push);
        std::vector<std::string> files;
        isp_case::compare_structures(a, b, 0, prototype,
                                     [&](const isp_case::difference &d) { files = d.files; });
        return files;
    };
    EXPECT_EQ(files_of_differences(256, true), lines_t{"cfgs/f1/x_p3.json"});
    EXPECT_EQ(files_of_differences(512, true), lines_t{"cfgs/f1/x_p1.json"});
    EXPECT_EQ(files_of_differences(6, false), (lines_t{"cfgs/f1/x_p0.json", "cfgs/f1/x_p1.json",
                                                       "cfgs/f1/x_p2.json", "cfgs/f1/x_p3.json"}));
}

TEST(CompareEngine, ToleranceMustBeAFiniteNumberZeroOrMore) {
    EXPECT_EQ(isp_case::tolerance_problem(0), "");
    EXPECT_EQ(isp_case::tolerance_problem(0.25), "");
    EXPECT_EQ(isp_case::tolerance_problem(NAN), "not a finite number");
    EXPECT_EQ(isp_case::tolerance_problem(INFINITY), "not a finite number");
    EXPECT_EQ(isp_case::tolerance_problem(-1e-9), "negative");
}

std::string open_error(const std::string &dir) {
    try {
        const isp_case::dump d = isp_case::open_dump(dir);
        for (const isp_case::dump_push &p : d.pushes) isp_case::read_push(d, p);
    } catch (const isp_case::dump_error &e) {
        return e.what();
    }
    return "";
}

/* A dump is used whole or not at all: each damage named with its file. */
TEST(DumpReader, DamagedDumpsAreRefusedNamingTheFile) {
    temp_dir dir;
    const auto sample = [&](const std::string &name, int part_h = 2) {
        dump_builder d(dir.path() + "/" + name);
        d.push(0, 256), d.push(1, 256);
        return d.finish(part_h);
    };
    EXPECT_EQ(open_error(sample("whole")), "");

    const std::string cut = sample("cut");
    fs::resize_file(cut + "/frame1/wbc/cmd01_ctrl.bin", 7);
    EXPECT_EQ(open_error(cut),
              cut + "/frame1/wbc/cmd01_ctrl.bin: 7 bytes, but the manifest says the push has 16");

    const std::string changed = sample("changed");
    std::string bytes         = isp_test::read_file(changed + "/setup/wbc/cmd01_ctrl.bin");
    bytes[1]                  = 2;
    std::ofstream(changed + "/setup/wbc/cmd01_ctrl.bin", std::ios::binary) << bytes;
    EXPECT_EQ(open_error(changed), changed + "/setup/wbc/cmd01_ctrl.bin: its bytes disagree with " +
                                       changed + "/setup/wbc/cmd01_ctrl.json (member d_gain)");

    const std::string half = sample("half");
    fs::remove_all(half + "/frame1");
    EXPECT_EQ(open_error(half), half +
                                    ": not a whole dump: 1 of the manifest's 2 pushes lack files, "
                                    "the first " +
                                    half + "/frame1/wbc/cmd01_ctrl.bin");

    const std::string grid = sample("grid", 4);
    EXPECT_EQ(open_error(grid), grid +
                                    "/manifest.json: push setup/wbc/cmd01_ctrl.bin: converted "
                                    "from 2 partition file(s) but the manifest's grid 4x1 has 4 "
                                    "partition(s)");

    EXPECT_EQ(open_error(dir.path()), dir.path() + "/manifest.json: cannot be read");
}

/* The manifest before steps were values: "init" is setup, "frameK" the cycle that read f(K+1)
 * or, past the last directory, the last one again. */
TEST(DumpReader, FirstManifestVersionStepsAreNamedByTheDirectoryTheyRead) {
    temp_dir dir;
    dump_builder d(dir.path() + "/d");
    d.push(0, 1), d.push(1, 1), d.push(2, 1);
    const std::string path = d.finish();
    std::string text       = isp_test::read_file(path + "/manifest.json");
    const auto replace     = [&](const std::string &from, const std::string &to) {
        text.replace(text.find(from), from.size(), to);
    };
    replace(R"("manifest_version":2)", R"("manifest_version":1)");
    replace(R"({"dir":0,"frame":0,"phase":"setup"})", R"("init")");
    replace(R"({"dir":1,"frame":1,"phase":"frame"})", R"("frame0")");
    replace(R"({"dir":2,"frame":2,"phase":"frame"})", R"("frame1")");
    replace(R"(cfgs\/f2\/rtl_wbc_p0)", R"(cfgs\/f1\/rtl_wbc_p0)");
    std::ofstream(path + "/manifest.json") << text;
    const isp_case::dump read = isp_case::open_dump(path);
    std::vector<std::string> steps;
    for (const isp_case::step_id &s : read.steps) steps.push_back(isp_case::step_label(s));
    EXPECT_EQ(steps, (lines_t{"setup (f0)", "frame 1 (f1)", "frame 2 (f1 again)"}));
}

/* The store's keys are SHA-256 as every other tool computes it (FIPS 180-4 test vectors: the
 * empty text, one block, and a text whose padding takes a second block). */
TEST(StoreKeys, AreTheStandardSha256) {
    const std::string two_blocks = "abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq";
    EXPECT_EQ(isp_case::sha256_hex("", 0),
              "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
    EXPECT_EQ(isp_case::sha256_hex("abc", 3),
              "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(isp_case::sha256_hex(two_blocks.data(), two_blocks.size()),
              "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1");
}

}  // namespace

/* A recording of the 32-bit target read on this build: the structure with pointers is moved to
 * this build's layout, its pointers 0; a size no layout gives is refused. */
TEST(DumpReader, TargetStructuresWithPointersAreLaidOutAsThisBuildLaysThemOut) {
    const std::vector<uint8_t> target = {1, 0, 0, 0, 0x10, 0x20, 0, 0, 0x30, 0x40, 0, 0};
    const std::vector<uint8_t> host =
        isp_case::with_host_pointers("_isp_clc_user_init_t", target, 4);
    _isp_clc_user_init_t expected{};
    expected.manual_clk_en = 1;
    ASSERT_EQ(host.size(), sizeof expected);
    std::vector<uint8_t> want(sizeof expected);
    std::memcpy(want.data(), &expected, sizeof expected);
    EXPECT_EQ(host, sizeof(void *) == 4 ? target : want);
    if (sizeof(void *) != 4) {
        EXPECT_TRUE(isp_case::with_host_pointers("_isp_clc_user_init_t", {1, 0, 0}, 4).empty());
    }
}
