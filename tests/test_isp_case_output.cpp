// isp-case's output pieces: the markup and terminal escapers, the ordered JSON writer and the
// "did you mean" of list options. Bytes from hostile files must never reach a page, a JUnit file
// or a terminal as markup or control sequences.
#include <string>

#include <gtest/gtest.h>

#include "tools/core/closest_name.h"
#include "tools/output/escape.h"
#include "tools/output/json.h"

namespace {

using isp_case::markup_context;
using isp_case::markup_escape;
using isp_case::terminal_text;

TEST(IspCaseEscape, TerminalShowsControlsAndBadUtf8Escaped) {
    const struct {
        std::string in, out;
    } rows[] = {
        {"d_gain", "d_gain"},
        {"a\x1b[2Jb", "a\\x1b[2Jb"},
        {std::string("k\0y", 3), "k\\x00y"},
        {"line\nforged\r\t", "line\\nforged\\r\\t"},
        {"\x7f", "\\x7f"},
        {"\xc2\x9b"
         "31m",
         "\\u009b31m"},  // C1 CSI
        {"\xe2\x80\xae"
         "txt",
         "\\u202etxt"},                       // right-to-left override
        {"\xff\xfe", "\\xff\\xfe"},           // not UTF-8
        {"\xc0\xaf", "\\xc0\\xaf"},           // overlong '/'
        {"\xed\xa0\x80", "\\xed\\xa0\\x80"},  // a surrogate
        {"\xe2\x82", "\\xe2\\x82"},           // cut short
        {"caf\xc3\xa9 \xe2\x82\xac \\", "caf\xc3\xa9 \xe2\x82\xac \\"},
    };
    for (const auto &r : rows) EXPECT_EQ(terminal_text(r.in), r.out) << r.out;
}

TEST(IspCaseEscape, MarkupEscapesForItsContext) {
    const std::string hostile = "a\"b'c<d>&e\tf\ng";
    EXPECT_EQ(markup_escape(hostile), "a\"b'c&lt;d&gt;&amp;e\tf\ng");
    EXPECT_EQ(markup_escape(hostile, markup_context::attribute),
              "a&quot;b&#39;c&lt;d&gt;&amp;e&#9;f&#10;g");
    // controls neither language can carry, even as references, and bytes that are not UTF-8
    EXPECT_EQ(markup_escape(std::string("x\x1b\0\xff\xc2\x85y", 7)), "x\\x1b\\x00\\xff\\u0085y");
    EXPECT_EQ(markup_escape("\" onload=\"alert(1)", markup_context::attribute),
              "&quot; onload=&quot;alert(1)");
    EXPECT_EQ(markup_escape("\xc3\xa9\xe2\x86\x92"), "\xc3\xa9\xe2\x86\x92");
}

TEST(IspCaseJson, FieldsKeepTheirOrderAndPicojsonEscapes) {
    isp_case::json_fields o;
    o.add("type", "step")
        .add("case", std::string("a/\"b\"\n\x01\xff"))
        .add("n", size_t(3))
        .add("seconds", 0.28)
        .add("nan", 0.0 / 0.0)
        .add("ok", true)
        .add_null("z")
        .add("inner", isp_case::json_fields().add("b", 1).add("a", 2));
    EXPECT_EQ(o.serialize(),
              "{\"type\":\"step\",\"case\":\"a\\/\\\"b\\\"\\n\\u0001\xEF\xBF\xBD\",\"n\":3,"
              "\"seconds\":0.28,\"nan\":null,\"ok\":true,\"z\":null,\"inner\":{\"b\":1,\"a\":2}}");
}

TEST(IspCaseDidYouMean, ClosestNameWithinTwoEdits) {
    const std::vector<std::string> names = {"wbc", "gamma", "gic", "csc", "d_gain"};
    const struct {
        const char *in, *out;
    } rows[] = {
        {"gama", "gamma"},     // one deletion
        {"d_gian", "d_gain"},  // a swap is two edits
        {"wcb", "wbc"},
        {"gc", "gic"},     // one insertion
        {"ccs", "csc"},    // two edits
        {"gammmmma", ""},  // three edits
        {"x", ""},         // as many edits as characters: no guess
        {"cs", "csc"},
    };
    for (const auto &r : rows) EXPECT_EQ(isp_case::closest_name(r.in, names), r.out) << r.in;
    EXPECT_EQ(isp_case::closest_name("wbd", {"wbc", "wbe"}), "wbc");  // ties: the first
}

}  // namespace
