/* Reading and writing JSON files: the whole file is parsed, failures abort with their exact
 * report, and the writer goes through a redirected standard output. */
#include <signal.h>
#include <sys/stat.h>

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

/* The whole standard error of an aborted read as an extended regular expression: the report,
 * the C library's assertion line for the check at line of json_file.cpp and, under qemu-user,
 * the emulator's own line about the signal. */
std::string abort_report(const std::string &report, int line) {
    std::string pattern    = "^";
    const std::string text = "\n" + report + "\n";
    for (char c : text)
        pattern += (std::string("\\.[]()*+?{}|^$").find(c) != std::string::npos ? "\\" : "") +
                   std::string(1, c);
    return pattern + "[^\n]*convert/common/json_file\\.cpp:" + std::to_string(line) +
           ": picojson::value read_json_file\\(const string&\\): Assertion `false' failed\\.\n"
           "(qemu: uncaught target signal 6 \\(Aborted\\) - core dumped\n)?$";
}

/* Everything written to file descriptor 1 while body runs. */
std::string capture_stdout(const std::function<void()> &body) {
    testing::internal::CaptureStdout();
    body();
    std::cout.flush();
    return testing::internal::GetCapturedStdout();
}

TEST(ReadJsonFile, ParsesTheFirstValueOfTheWholeFile) {
    temp_dir dir;
    EXPECT_EQ(read_json_file(dir.write("a.json",
                                       "{\n \"w\": {\"g\": {\"val\": 256}},\n"
                                       " \"l\": [1.5, null, \"x\", true]} trailing\n[2]"))
                  .serialize(),
              "{\"l\":[1.5,null,\"x\",true],\"w\":{\"g\":{\"val\":256}}}");
    std::string big = "[";
    for (int i = 0; i < 200000; ++i) big += "12345,";
    big += "7]";
    const std::string fifo = dir.path() + "/fifo.json";
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    std::thread writer([&] { std::ofstream(fifo) << big; });
    /* a regular file is read with the size it has, a stream without a size to its end */
    for (const std::string &path : {dir.write("big.json", big), fifo})
        EXPECT_TRUE(read_json_file(path).serialize() == big) << path;
    writer.join();
}

TEST(ReadJsonFileDeathTest, AnUnreadableFileAbortsWithItsReportAndCheckLine) {
    temp_dir dir;
    const std::string missing = dir.path() + "/cfgs/f0/rtl_gamma_p0.json";
    EXPECT_EXIT(read_json_file(missing), testing::KilledBySignal(SIGABRT),
                abort_report("[error] failed to read json file: " + missing, 12));
    /* an empty file fails on line 1; the tab is left out of the quoted rest of the line */
    for (const auto &bad :
         {std::make_pair("", "line 1 near: "),
          std::make_pair("{\n \"a\": 1,\n \"b\": @oops,\t\"c\"\n}\n", "line 3 near: @oops,\"c\"")})
        EXPECT_EXIT(read_json_file(dir.write("bad.json", bad.first)),
                    testing::KilledBySignal(SIGABRT),
                    abort_report(std::string("[error] readFile cannot parse jsonsyntax error at ") +
                                     bad.second,
                                 21));
}

TEST(WriteJsonFile, WritesThePrettyFormAndGivesStandardOutputBack) {
    temp_dir dir;
    picojson::object root;
    root["b"] = picojson::value(picojson::array{picojson::value(3.0), picojson::value(true)});
    root["a"] = picojson::value(picojson::object{{"k", picojson::value(0.5)}});
    root["c"] = picojson::value(picojson::object());
    root["d"] = picojson::value(1e20);
    const std::string path = dir.write("out.json", std::string(1000, 'x'));
    const std::string out  = capture_stdout([&] {
        std::cout << "before ";
        write_json_file(path, picojson::value(root));
        std::cout << "after";
    });
    EXPECT_EQ(out, "before after");
    /* a file that cannot be opened loses the output silently */
    EXPECT_EQ(capture_stdout([&] {
                  write_json_file(dir.path() + "/no/such/dir/out.json", picojson::value(1.0));
                  std::cout << "still here";
              }),
              "still here");
    struct stat st;
    EXPECT_NE(stat((dir.path() + "/no").c_str(), &st), 0);
    EXPECT_EQ(read_file(path),
              "{\n  \"a\": {\n    \"k\": 0.5\n  },\n  \"b\": [\n    3,\n    true\n"
              "  ],\n  \"c\": {},\n  \"d\": 1e+20\n}\n\n");
}

}  // namespace
