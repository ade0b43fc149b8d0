/* Reading and writing JSON files: the whole file is parsed, failures abort with their exact
 * report, and the writer goes through a redirected standard output. */
#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <functional>
#include <iostream>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "isp_json_utils.h"
#include "tests/support/test_support.h"

namespace {

using isp_test::read_file;
using isp_test::temp_dir;

/* text as a POSIX extended regular expression matching exactly itself. */
std::string literal(const std::string &text) {
    std::string pattern;
    for (char c : text) {
        if (std::string("\\.[]()*+?{}|^$").find(c) != std::string::npos) pattern += '\\';
        pattern += c;
    }
    return pattern;
}

/* The whole standard error of an aborted read: this unit's report, then the C library's
 * assertion line naming the unit and the line of the check. Run under qemu-user, the emulator
 * itself reports the fatal signal in one more line on the same stream, after all of that. */
std::string abort_report(const std::string &report, int line) {
    return "^" + literal("\n" + report + "\n") + "[^\n]*" +
           literal("convert/common/json_file.cpp:" + std::to_string(line) +
                   ": picojson::value read_json_file(const string&): Assertion `false' failed.\n") +
           "(qemu: uncaught target signal 6 \\(Aborted\\) - core dumped\n)?$";
}

/* Everything written to file descriptor 1 while body runs. */
std::string capture_stdout(const temp_dir &dir, const std::function<void()> &body) {
    const std::string path = dir.path() + "/stdout.txt";
    std::cout.flush();
    std::fflush(stdout);
    const int saved = dup(1);
    const int file  = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    dup2(file, 1);
    close(file);
    body();
    std::cout.flush();
    std::fflush(stdout);
    dup2(saved, 1);
    close(saved);
    return read_file(path);
}

TEST(read_json_file, parses_the_whole_document) {
    temp_dir dir;
    const std::string path     = dir.write("rtl_wbc_p0.json",
                                           "{\n  \"isp_wbc\": {\"d_gain\": {\"val\": 256}},\n"
                                               "  \"list\": [1.5, null, \"x\", true]\n}\n");
    const picojson::value root = read_json_file(path);
    ASSERT_TRUE(root.is<picojson::object>());
    EXPECT_EQ(root.serialize(),
              "{\"isp_wbc\":{\"d_gain\":{\"val\":256}},\"list\":[1.5,null,\"x\",true]}");
}

TEST(read_json_file, text_after_the_first_value_is_ignored) {
    temp_dir dir;
    EXPECT_EQ(read_json_file(dir.write("a.json", "{\"a\": 1} trailing words\n[2]")).serialize(),
              "{\"a\":1}");
    EXPECT_EQ(read_json_file(dir.write("b.json", "[1,2]}")).serialize(), "[1,2]");
}

TEST(read_json_file, a_large_file_is_read_to_its_end) {
    temp_dir dir;
    std::string text = "[";
    for (int i = 0; i < 200000; ++i) text += "12345,";
    text += "7]";
    const picojson::value array = read_json_file(dir.write("big.json", text));
    ASSERT_TRUE(array.is<picojson::array>());
    ASSERT_EQ(array.get<picojson::array>().size(), 200001u);
    EXPECT_EQ(array.get<picojson::array>().back().get<double>(), 7.0);
}

TEST(read_json_file, a_stream_without_a_size_is_read_too) {
    temp_dir dir;
    const std::string path = dir.path() + "/fifo.json";
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    std::thread writer([&path] { std::ofstream(path) << "{\"from\": \"pipe\"}"; });
    const picojson::value root = read_json_file(path);
    writer.join();
    EXPECT_EQ(root.serialize(), "{\"from\":\"pipe\"}");
}

TEST(read_json_file_death, an_unreadable_file_aborts_with_its_report_and_check_line) {
    temp_dir dir;
    const std::string missing = dir.path() + "/cfgs/f0/rtl_gamma_p0.json";
    EXPECT_EXIT(read_json_file(missing), testing::KilledBySignal(SIGABRT),
                abort_report("[error] failed to read json file: " + missing, 12));
    /* an empty file is a syntax error on line 1; the tab is below the blank and left out of the
     * quoted rest of the line */
    const struct {
        const char *text, *near;
    } syntax_errors[] = {
        {"", "line 1 near: "},
        {"{\n  \"a\": 1,\n  \"b\": @oops,\t\"c\"\n}\n", "line 3 near: @oops,\"c\""}};
    for (const auto &bad : syntax_errors)
        EXPECT_EXIT(
            read_json_file(dir.write("bad.json", bad.text)), testing::KilledBySignal(SIGABRT),
            abort_report(
                std::string("[error] readFile cannot parse jsonsyntax error at ") + bad.near, 21));
}

TEST(write_json_file, writes_the_pretty_form_and_two_final_line_feeds) {
    temp_dir dir;
    picojson::object inner;
    inner["k"] = picojson::value(0.5);
    picojson::object root;
    root["b"] = picojson::value(picojson::array{picojson::value(3.0), picojson::value(true)});
    root["a"] = picojson::value(inner);
    root["c"] = picojson::value(picojson::object());
    root["d"] = picojson::value(1e20);
    const std::string path = dir.path() + "/cmodel.json";

    const std::string leaked =
        capture_stdout(dir, [&] { write_json_file(path, picojson::value(root)); });

    EXPECT_EQ(read_file(path),
              "{\n"
              "  \"a\": {\n"
              "    \"k\": 0.5\n"
              "  },\n"
              "  \"b\": [\n"
              "    3,\n"
              "    true\n"
              "  ],\n"
              "  \"c\": {},\n"
              "  \"d\": 1e+20\n"
              "}\n"
              "\n");
    EXPECT_EQ(leaked, "");
}

TEST(write_json_file, replaces_a_longer_file_and_gives_standard_output_back) {
    temp_dir dir;
    const std::string path = dir.write("out.json", std::string(1000, 'x'));
    const std::string out  = capture_stdout(dir, [&] {
        std::cout << "before ";
        write_json_file(path, picojson::value(picojson::array()));
        std::cout << "after";
    });
    EXPECT_EQ(out, "before after");
    EXPECT_EQ(read_file(path), "[]\n\n");
}

TEST(write_json_file, an_unopenable_file_loses_the_output_silently) {
    temp_dir dir;
    const std::string path = dir.path() + "/no/such/dir/out.json";
    const std::string out  = capture_stdout(dir, [&] {
        write_json_file(path, picojson::value(1.0));
        EXPECT_TRUE(std::cout.good());
        std::cout << "still here";
    });
    EXPECT_EQ(out, "still here");
    struct stat st;
    EXPECT_NE(stat(path.c_str(), &st), 0);
}

}  // namespace
