// Lines on the output streams: what a format means, and what the code page lacks.

#include "Diagnostics.h"

#include "Drive.h"
#include "Fixture.h"

namespace {

TEST(Diagnostics, PrintEachTextWhateverItsWidth) {
    TestMachine test;
    const platform::Streams& streams = test.machine.Get<platform::Streams>();
    PrintDiagnostic("%s|%S|%hs|%ls|%5s|%-3S|%.1ls|%%s", "a", u"b", "c", u"d", "e", u"f", u"gh");
    EXPECT_EQ(streams.output, "a|b|c|d|    e|f  |g|%s");
    PrintError("%c%C %d %08X %8d %ld %016I64x\n", 'a', u'b', -1, 0xABu, 42, 7, 255ull);
    EXPECT_EQ(streams.error, "ab -1 000000AB       42 7 00000000000000ff\n");
}

TEST(Diagnostics, ReplaceWhatTheCodePageLacksAndCutWhatIsTooLong) {
    const std::u16string longest(1023, u'x');
    const struct {
        std::u16string text;
        std::string printed;
    } cases[] = {
        {u"\u30A4\u30FC 2", "[?? 2]"},
        {u"\u00E9\u20AC", "[\xE9\x80]"},
        {longest, "[" + std::string(1022, 'x')},
    };
    for (const auto& c : cases) {
        TestMachine test;
        PrintDiagnostic("[%S]", c.text.c_str());
        EXPECT_EQ(test.machine.Get<platform::Streams>().output, c.printed);
    }
}

}  // namespace
