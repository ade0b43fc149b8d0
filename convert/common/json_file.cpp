/* JSON documents between files and picojson values. A register file that cannot be read or
 * parsed ends the process: replaying a case with a missing frame makes no sense. */

/* The abort stays in release builds, so the assertion machinery is wanted whatever NDEBUG
 * says; this must come before anything else pulls in assert.h. */
#undef NDEBUG
#include <assert.h>

#include <fstream>
#include <iostream>
#include <sstream>
#include <string>

#include "isp_json_utils.h"

using std::string;

namespace {

const char read_function[] = "picojson::value read_json_file(const string&)";

/* The failure names this unit and the line of the check, whatever the build's source path. */
[[noreturn]] void read_failed(unsigned line) {
    __assert_fail("false", "convert/common/json_file.cpp", line, read_function);
}

/* The whole file in one read. Files that do not know their size (pipes, /proc) are copied
 * through the stream buffer instead. */
string read_all(std::ifstream &in) {
    string text;
    in.seekg(0, std::ios::end);
    const std::streamoff size = in.tellg();
    in.seekg(0, std::ios::beg);
    if (size > 0) {
        text.resize(static_cast<size_t>(size));
        in.read(&text[0], size);
        text.resize(static_cast<size_t>(in.gcount()));
    } else {
        in.clear();
        std::ostringstream copy;
        copy << in.rdbuf();
        text = copy.str();
    }
    return text;
}

/* Gives standard output its own buffer back on every way out, also when the stream was set to
 * throw on a write into an unopened file. */
class stdout_redirect {
  public:
    explicit stdout_redirect(std::streambuf *target) : saved_(std::cout.rdbuf(target)) {}
    ~stdout_redirect() { std::cout.rdbuf(saved_); }
    stdout_redirect(const stdout_redirect &)            = delete;
    stdout_redirect &operator=(const stdout_redirect &) = delete;

  private:
    std::streambuf *saved_;
};

}  // namespace

ISP_JSON_API picojson::value read_json_file(const string &path) {
    std::ifstream in(path, std::ios::in | std::ios::binary);
    if (!in) {
        std::cerr << std::endl << "[error] failed to read json file: " << path << std::endl;
        read_failed(12);
    }
    const string text = read_all(in);
    in.close();

    picojson::value value;
    const string error = picojson::parse(value, text);
    if (!error.empty()) {
        std::cerr << std::endl << "[error] readFile cannot parse json" << error << std::endl;
        read_failed(21);
    }
    return value;
}

/* The text reaches the file through standard output on purpose; nothing else may write to
 * standard output meanwhile. */
ISP_JSON_API void write_json_file(const string &path, const picojson::value &value) {
    std::ofstream file(path);
    const string text = value.serialize(true);
    {
        stdout_redirect redirect(file.rdbuf());
        std::cout << text << std::endl;
    }
    file.close();
}
