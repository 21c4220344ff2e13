// The text file that the Information tab saves.

#include "InformationTest.h"

#include "Drive.h"
#include "InformationFile.h"
#include "Text.h"

namespace {

InformationRows TestRows() {
    InformationRows rows = {};
    for (std::size_t i = 0; i < rows.size(); ++i) {
        SetInformationText(rows[i].label, Wide("Label " + std::to_string(i)).c_str());
        SetInformationText(rows[i].value, Wide("value " + std::to_string(i)).c_str());
    }
    return rows;
}

std::string Lines(std::size_t count) {
    std::string text = "\xEF\xBB\xBF";
    for (std::size_t i = 0; i < count; ++i)
        text += "Label " + std::to_string(i) + " : value " + std::to_string(i) + "\r\n";
    return text;
}

TEST(InformationFile, HoldsALineForEachRowWhateverItsTextIs) {
    const std::u16string longest(249, u'\uFF21');
    const struct {
        std::u16string value;
        std::u16string line;
        const char* reason;
    } cases[] = {
        {u"\u0421\u0435\u0442\u044C \u65E5\u672C",
         u"Label 0 : \u0421\u0435\u0442\u044C \u65E5\u672C", "Cyrillic and Japanese"},
        {u"\U0001F5A7", u"Label 0 : \U0001F5A7", "beyond the basic plane"},
        {u"", u"Label 0 : ", "empty"},
        {longest, u"Label 0 : " + longest, "longest"},
        {u"a\r\nb\nc", u"Label 0 : a  b c", "a line break would make another line"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.reason);
        TestMachine test;
        auto& drive = test.machine.Get<platform::Drive>();
        drive.WriteWholeFile(u"C:\\x.log", std::string(5000, '?'));  // replaced
        InformationRows rows = TestRows();
        SetInformationText(rows[0].value, c.value.c_str());
        DWORD error = 0;
        EXPECT_EQ(SaveRows(u"C:\\x.log", rows, &error), 0u);
        EXPECT_EQ(drive.ReadWholeFile(u"C:\\x.log"), "\xEF\xBB\xBF" + platform::ToUtf8(c.line) +
                                                         Lines(15).substr(Lines(1).size() - 2));
    }
}

TEST(InformationFile, TellsWhatFailedAndClosesTheFile) {
    const struct {
        const char16_t* path;
        std::uint64_t failingWrite;  // 0: none
        UINT message;
        DWORD error;
        std::optional<std::string> left;
        const char* reason;
    } cases[] = {
        {u"C:\\none\\x.log", 0, 188, ERROR_PATH_NOT_FOUND, {}, "no such directory"},
        {u"C:\\x.log", 1, 187, ERROR_DISK_FULL, "", "the first line"},
        {u"C:\\x.log", 8, 187, ERROR_DISK_FULL, Lines(7), "in the middle"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.reason);
        TestMachine test;
        if (c.failingWrite != 0)
            test.machine.faults.FailCalls("WriteFile", u"", ERROR_DISK_FULL, c.failingWrite);
        DWORD error = 0;
        EXPECT_EQ(SaveRows(c.path, TestRows(), &error), c.message);
        EXPECT_EQ(error, c.error);
        EXPECT_EQ(test.machine.Get<platform::Drive>().ReadWholeFile(c.path), c.left);
    }
}

}  // namespace
