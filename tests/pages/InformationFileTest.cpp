// The text file that the Information tab saves.

#include "InformationTest.h"

#include "Drive.h"
#include "InformationFile.h"
#include "Text.h"

namespace {

constexpr char kMark[] = "\xEF\xBB\xBF";

// Fifteen rows, the first of them with that value.
InformationRows RowsWith(const std::u16string& value) {
    InformationRows rows = {};
    for (InformationRow& row : rows)
        SetInformationText(row.label, u"Label");
    SetInformationText(rows[0].value, value.c_str());
    return rows;
}

std::string Lines(std::size_t count) {
    std::string text;
    while (count-- > 0)
        text += "Label : \r\n";
    return text;
}

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
        DWORD error = 0;
        EXPECT_EQ(SaveRows(u"C:\\x.log", RowsWith(c.value), &error), 0u);
        EXPECT_EQ(drive.ReadWholeFile(u"C:\\x.log"),
                  kMark + ("Label : " + platform::ToUtf8(c.line)) + "\r\n" + Lines(14));
    }
}

TEST(InformationFile, TellsWhatFailedAndClosesTheFile) {
    const struct {
        const char16_t* path;
        std::uint64_t failingWrite;
        UINT message;
        DWORD error;
        std::optional<std::string> left;
    } cases[] = {
        {u"C:\\none\\x.log", 1, 188, ERROR_PATH_NOT_FOUND, {}},
        {u"C:\\x.log", 1, 187, ERROR_DISK_FULL, ""},
        {u"C:\\x.log", 8, 187, ERROR_DISK_FULL, kMark + Lines(7)},
    };
    for (const auto& c : cases) {
        TestMachine test;
        test.machine.faults.FailCalls("WriteFile", u"", ERROR_DISK_FULL, c.failingWrite);
        DWORD error = 0;
        EXPECT_EQ(SaveRows(c.path, RowsWith(u""), &error), c.message);
        EXPECT_EQ(error, c.error);
        EXPECT_EQ(test.machine.Get<platform::Drive>().ReadWholeFile(c.path), c.left);
    }
}

}  // namespace
