// The text file that the Information tab saves.

#include "InformationTest.h"

#include "Drive.h"
#include "InformationFile.h"
#include "Text.h"

namespace {

TEST(InformationFile, HoldsALineForEachRowWhateverItsTextIs) {
    const std::u16string longest(249, u'\uFF21');
    const struct {
        std::u16string value, line;
        const char* reason;
    } cases[] = {
        {u"\u0421\u0435\u0442\u044C \u65E5\u672C", u"\u0421\u0435\u0442\u044C \u65E5\u672C",
         "Cyrillic and Japanese"},
        {u"\U0001F5A7", u"\U0001F5A7", "beyond the basic plane"},
        {longest, longest, "longest"},
        {u"a\r\nb\nc", u"a  b c", "a line break would make another line"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.reason);
        TestMachine test;
        auto& drive = test.machine.Get<platform::Drive>();
        drive.WriteWholeFile(u"C:\\x.log", std::string(5000, '?'));  // replaced
        InformationRows rows = {};
        for (InformationRow& row : rows) {
            std::u16string(u"Label").copy(row.label, 5);
            c.value.copy(row.value, c.value.size());
        }
        EXPECT_FALSE(SaveRows(u"C:\\x.log", rows));
        std::string expected = "\xEF\xBB\xBF";
        for (std::size_t i = 0; i < rows.size(); ++i)
            expected += "Label : " + platform::ToUtf8(c.line) + "\r\n";
        EXPECT_EQ(drive.ReadWholeFile(u"C:\\x.log"), expected);
    }
}

}  // namespace
