// What a person reads of Rich Text Format.

#include <gtest/gtest.h>

#include <string>

#include "Rtf.h"
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
        {"a\\tab b\\cell c\\cell\\row d", u"a\tb\tc\t\nd", "tabs and tables"},
        {"\\{\\}\\\\ \\~\\_\\-x", u"{}\\ \u00A0\u2011x", "control symbols"},
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
        {"{\\rtf1\\ansi \\'E9}", u"\u00E9", "none named"},
        {"{\\rtf1\\ansi\\ansicpg65001 \\'c3\\'a9\xC3\xA9\\b\\'e2\\'82\\'ac}", u"\u00E9\u00E9\u20AC",
         "UTF-8 over several escapes"},
        {"{\\rtf1 \\u233{a}\\u233\\par b}", u"\u00E9a\u00E9\nb", "a group or break is no fallback"},
        {"{\\rtf1 a{\\b b", u"ab", "cut off within groups"},
        {"{\\rtf1 a\\'e", u"a", "cut off within an escape"},
        {"{\\rtf1 a\\", u"a", "cut off within a control"},
        {"{\\rtf1 a\\bin99 bc", u"a", "cut off within raw bytes"},
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

}  // namespace
