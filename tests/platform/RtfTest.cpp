// What a person reads of Rich Text Format.

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "Rtf.h"
#include "Seeds.h"
#include "Text.h"

using platform::RtfToPlainText;
using platform::ToUtf8;
using std::string_literals::operator""s;

namespace {

TEST(RtfTest, ReadsTheTextOfADocument) {
    const struct {
        std::string body;  // within {\rtf1 ...}
        std::u16string text;
        const char* why;
    } cases[] = {
        {"Hello\\par World\\line!", u"Hello\nWorld\n!", "breaks"},
        {"a\\\nb\\\r\nc", u"a\nb\nc", "an escaped one is a paragraph's end"},
        {"a\\tab b\\cell c\\cell\\row d", u"a\tb\tc\t\nd", "tabs and tables"},
        {"\\{\\}\\\\ \\~\\_\\-x", u"{}\\ \u00A0\u2011x", "control symbols"},
        {"\\b bold\\b0  plain", u"bold plain", "one blank ends a word, a second one is text"},
        {"\\b1bold {\\i\\fs24 in}out", u"bold inout", "a number ends a word as well"},
        {"x{\\fonttbl{\\f0 Arial;}}{\\colortbl;\\red0;}{\\stylesheet{s}}{\\info{\\title t}}y",
         u"xy", "tables and properties"},
        {"x{\\pict\\wmetafile8 0102}{\\header h}{\\*\\generator g;}{\\*\\foo{b} c}y", u"xy",
         "pictures, headers and what is marked as ignorable"},
        {"{\\field{\\*\\fldinst HYPERLINK \"u\"}{\\fldrslt shown}}", u"shown", "a field's result"},
        {"{\\v secret}{\\v\\v0 a}\\v b\\plain c", u"ac", "hidden text"},
        {"a\\bin4 }{\\\\b", u"ab", "raw bytes aren't read"},
        {"\\unknownword123 a\\'zzb", u"azzb", "what isn't known is passed over"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(RtfToPlainText("{\\rtf1\\ansi " + c.body + "}"), c.text) << c.why;
}

TEST(RtfTest, ReadsCharactersInTheirCodePage) {
    const struct {
        std::string rtf;
        std::u16string text;
        const char* why;
    } cases[] = {
        {"{\\rtf1\\ansi\\ansicpg1252 \\'e9\\'80\\'96\xE9}", u"\u00E9\u20AC\u2013\u00E9", "1252"},
        {"{\\rtf1\\ansi \\'E9}", u"\u00E9", "none named"},
        {"{\\rtf1\\ansi\\ansicpg65001 \\'c3\\'a9\xC3\xA9\\b\\'e2\\'82\\'ac}", u"\u00E9\u00E9\u20AC",
         "UTF-8 over several escapes"},
        {"{\\rtf1 \\u8364?\\u-3844 ?x}", u"\u20AC\uF0FCx", "one fallback by default"},
        {"{\\rtf1 \\uc2\\u8364\\'80\\'80x{\\uc0\\u233 y}\\u233 abz}", u"\u20ACx\u00E9y\u00E9z",
         "the count belongs to the group"},
        {"{\\rtf1 \\u233{a}\\u233\\par b}", u"\u00E9a\u00E9\nb", "a group or break is no fallback"},
        {"{\\rtf1 \\u55357?\\u56832?}", u"\U0001F600", "a pair"},
        {"{\\rtf1 a}trailing", u"a", "what follows the document"},
        {"{\\rtf1 a{\\b b", u"ab", "cut off within groups"},
        {"{\\rtf1 a\\'e", u"a", "cut off within an escape"},
        {"{\\rtf1 a\\", u"a", "cut off within a control"},
        {"{\\rtf1 a\\bin99 bc", u"a", "cut off within raw bytes"},
        {"{plain}", u"{plain}", "no Rich Text Format"},
        {"", u"", "nothing"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(RtfToPlainText(c.rtf), c.text) << c.why;
}

TEST(RtfTest, SurvivesAnyDepth) {
    const std::size_t depth = 1'000'000;
    const std::string rtf =
        "{\\rtf1 a" + std::string(depth, '{') + "b" + std::string(depth, '}') + "c}";
    EXPECT_EQ(RtfToPlainText(rtf), u"abc");
}

TEST(RtfTest, SurvivesDamage) {
    const std::string whole =
        "{\\rtf1\\ansi\\ansicpg65001{\\fonttbl{\\f0 A;}}\\uc1 a\\'c3\\'a9\\u8364?\\bin3 "
        "{}\\{b\\par "
        "{\\*\\x y}{\\v h}\\tab c}";
    for (const std::uint64_t seed : Seeds(300)) {
        SCOPED_TRACE("TEST_SEED=" + std::to_string(seed));
        std::mt19937_64 random(seed);
        std::string rtf = whole;
        for (int change = 0; change < 6; ++change)
            rtf[5 + random() % (rtf.size() - 5)] = "{}\\'*u-0 9\n\x80"[random() % 12];
        rtf.resize(5 + random() % (rtf.size() - 5));
        EXPECT_LE(RtfToPlainText(rtf).size(), rtf.size());
    }
}

}  // namespace
