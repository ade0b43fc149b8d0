// isp-case's escapers, JSON writer and "did you mean": hostile bytes never reach a reader raw.
#include <string>

#include <gtest/gtest.h>

#include "tools/core/closest_name.h"
#include "tools/output/escape.h"
#include "tools/output/json.h"

namespace {

TEST(IspCaseEscape, ControlsAndBadUtf8AreShownNotObeyed) {
    const std::string terminal[][2] = {
        {std::string("a\x1b[2J\0\n\x7f", 8), "a\\x1b[2J\\x00\\n\\x7f"},
        {"\xc2\x9b-\xe2\x80\xae", "\\u009b-\\u202e"},  // C1 CSI, right-to-left override
        {"\xff\xc0\xaf\xed\xa0\x80 caf\xc3\xa9 \\",
         "\\xff\\xc0\\xaf\\xed\\xa0\\x80 caf\xc3\xa9 \\"},
    };  // a stray byte, an overlong '/', a surrogate; then good UTF-8 and a backslash as written
    for (const auto &r : terminal) EXPECT_EQ(isp_case::terminal_text(r[0]), r[1]) << r[1];

    const std::string hostile = "a\"b'c<d>&e\tf\ng";
    EXPECT_EQ(isp_case::markup_escape(hostile), "a\"b'c&lt;d&gt;&amp;e\tf\ng");
    EXPECT_EQ(isp_case::markup_escape(hostile, isp_case::markup_context::attribute),
              "a&quot;b&#39;c&lt;d&gt;&amp;e&#9;f&#10;g");
    // controls neither language can carry, even as references, and bytes that are not UTF-8
    EXPECT_EQ(isp_case::markup_escape(std::string("x\x1b\0\xff\xc2\x85\xc3\xa9", 8)),
              "x\\x1b\\x00\\xff\\u0085\xc3\xa9");
}

TEST(IspCaseJson, FieldsKeepTheirOrderAndPicojsonEscapes) {
    isp_case::json_fields o;
    o.add("type", "step").add("case", "a/\"b\"\n\x01\xff").add("n", size_t(3)).add("s", 0.28);
    o.add("nan", 0.0 / 0.0).add("in", isp_case::json_fields().add("b", 1).add("a", true));
    EXPECT_EQ(o.serialize(),
              "{\"type\":\"step\",\"case\":\"a\\/\\\"b\\\"\\n\\u0001\xEF\xBF\xBD\","
              "\"n\":3,\"s\":0.28,\"nan\":null,\"in\":{\"b\":1,\"a\":true}}");
}

TEST(IspCaseDidYouMean, ClosestNameWithinTwoEdits) {
    const std::vector<std::string> names = {"wbc", "wbe", "gamma", "d_gain"};
    const char *rows[][2]                = {
                       {"gama", "gamma"}, {"d_gian", "d_gain"}, {"wbd", "wbc"}, {"gammmmma", ""}, {"x", ""}};
    for (const auto &r : rows) EXPECT_EQ(isp_case::closest_name(r[0], names), r[1]) << r[0];
}

}  // namespace
