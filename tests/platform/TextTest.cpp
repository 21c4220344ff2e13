// Conversions of the stand-in's own, and allocation under faults.

#include <memory>
#include <new>
#include <string>

#include <windows.h>

#include "FactsMachine.h"
#include "Text.h"

using namespace platform;

namespace {

TEST(Utf8Test, ConvertsUtf8AndReplacesWhatIsIllFormed) {
    const struct {
        std::string utf8;
        std::u16string wide;
        const char* why;
    } cases[] = {
        {"a\u00E9\u20AC", u"a\u00E9\u20AC", "one, two and three bytes"},
        {"\xF0\x9F\x98\x80", u"\U0001F600", "four bytes become a pair"},
        {"\xC3", u"\uFFFD", "cut off"},
        {"\xE2\x82x", u"\uFFFDx", "a cut sequence is one error, and what follows stands"},
        {"\xC0\x80", u"\uFFFD\uFFFD", "overlong"},
        {"\xED\xA0\x80", u"\uFFFD\uFFFD\uFFFD", "a surrogate's bytes"},
        {"\x80\xFF", u"\uFFFD\uFFFD", "no lead bytes"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(FromUtf8(c.utf8), c.wide) << c.why;
    EXPECT_EQ(ToUtf8(u"a\u00E9\u20AC\U0001F600"), "a\u00E9\u20AC\U0001F600");
    EXPECT_EQ(ToUtf8(u"\xD800x\xDC00"), "\uFFFDx\uFFFD");
}

TEST(AllocationTest, NewFailsOnlyWhereItReportsByNull) {
    Machine machine;
    machine.faults.FailCalls("operator new", u"", ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(std::unique_ptr<int>(new (std::nothrow) int), nullptr);
    EXPECT_EQ(std::unique_ptr<int[]>(new (std::nothrow) int[3]), nullptr);
    EXPECT_NE(std::make_unique<int>(), nullptr);
    {
        const QuietScope quiet;
        EXPECT_NE(std::unique_ptr<int>(new (std::nothrow) int), nullptr);
    }
    machine.faults.Disarm();
    EXPECT_NE(std::unique_ptr<int>(new (std::nothrow) int), nullptr);
}

}  // namespace
