// The system's store of INF files, and what goes beyond the conformance cases.

#include <string>
#include <vector>

#include <windows.h>
#include <setupapi.h>

#include "Drive.h"
#include "FactsMachine.h"
#include "InfFile.h"
#include "Text.h"

namespace {

using namespace platform;

const std::string kVersion = "[Version]\nSignature=\"$Windows NT$\"\n";

struct InfMachine : FactsMachine {
    void Write(std::u16string_view path, const std::string& content) {
        EXPECT_TRUE(machine.Get<Drive>().WriteWholeFile(path, content));
    }
    // The models of the store: "description=component id", one behind the other.
    static std::string Models() {
        std::string all;
        for (const InfModel& model : StoredModels())
            all += ToUtf8(model.description + u"=" + model.componentId + u" ");
        return all;
    }
    // Copies a file; its name in the store, or the error.
    std::string Copy(const std::string& content) {
        Write(u"C:\\package.inf", content);
        char16_t path[MAX_PATH] = {};
        PWSTR name = nullptr;
        if (!SetupCopyOEMInfW(u"C:\\package.inf", nullptr, SPOST_PATH, 0, path, MAX_PATH, nullptr,
                              &name))
            return "error " + std::to_string(GetLastError());
        EXPECT_EQ(u"C:\\Windows\\INF\\" + std::u16string(name), path);
        EXPECT_EQ(machine.Get<Drive>().ReadWholeFile(path), content);
        return ToUtf8(name);
    }
};

TEST(InfStore, GivesTheLowestFreeName) {
    InfMachine test;
    test.Write(u"C:\\Windows\\INF\\same.inf", kVersion + "; 1");
    test.Write(u"C:\\Windows\\INF\\oem1.inf", "no INF");
    EXPECT_EQ(test.Copy(kVersion + "; 1"), "oem0.inf") << "of a name of the store's own";
    EXPECT_EQ(test.Copy(kVersion + "; 2"), "oem2.inf");
    EXPECT_TRUE(SetupUninstallOEMInfW(u"OEM0.inf", 0, nullptr));
    EXPECT_EQ(test.Copy(kVersion + "; 2"), "oem2.inf") << "it is there already";
    EXPECT_EQ(test.Copy(kVersion + "; 3"), "oem0.inf");
    for (const char16_t* name :
         {u"same.inf", u"C:\\Windows\\INF\\oem0.inf", u"oem.inf", u"..\\oem0"}) {
        EXPECT_FALSE(SetupUninstallOEMInfW(name, SUOI_FORCEDELETE, nullptr));
        EXPECT_EQ(GetLastError(), ERROR_NOT_AN_INSTALLED_OEM_INF);
    }
    test.Write(u"C:\\Windows\\INF\\oem7.inf\\file", "");
    EXPECT_FALSE(SetupUninstallOEMInfW(u"oem7.inf", SUOI_FORCEDELETE, nullptr));
}

TEST(InfStore, ModelsAreThoseOfAllSectionsThatAreNamed) {
    InfMachine test;
    EXPECT_EQ(InfMachine::Models(), "") << "no store";
    test.Write(u"C:\\Windows\\INF\\b.inf", kVersion +
                                               "[Manufacturer]\n%M%=models\nmodels\nx=none\n"
                                               "[Models]\n%D%=Inst,CVTA_muxp,more\nno=Inst\n"
                                               "[Strings]\nD=\"MUX; driver\"\n");
    test.Write(u"C:\\Windows\\INF\\A.INF", kVersion +
                                               "[Manufacturer]\nm=mp,NTamd64, ntx86\n"
                                               "[mp.ntx86]\nx86=i,id86\n[mp]\nall=i,id\n"
                                               "[MP.NTAMD64]\n64=i,id64\n[mp.other]\nno=i,no\n");
    test.Write(u"C:\\Windows\\INF\\broken.inf", "[Manufacturer]\nm=mp\n[mp]\nno=i,no\n");
    test.Write(u"C:\\Windows\\INF\\c.inf.txt", kVersion + "[Manufacturer]\nm=mp\n[mp]\nno=i,no\n");
    test.Write(u"C:\\Windows\\INF\\dir.inf\\c.inf", kVersion);
    EXPECT_EQ(InfMachine::Models(), "x86=id86 all=id 64=id64 MUX; driver=CVTA_muxp ");
}

TEST(InfFile, IsReadInItsEncoding) {
    const struct {
        std::string bytes;
        std::u16string field;
    } cases[] = {
        {ToUtf16(kVersion + "[A]\nx=\u00E9\u20AC\n", false), u"\u00E9\u20AC"},
        {"\xEF\xBB\xBF" + kVersion + "[A]\nx=\u00E9\u20AC\n", u"\u00E9\u20AC"},
        {kVersion + "[A]\nx=\u00E9\u20AC\n", u"\u00E9\u20AC"},
        {kVersion + "[A]\nx=\xE9\x80\n", u"\u00E9\u20AC"},
        {kVersion + "[A]\nx=" + std::string(16, '%') + "\n", std::u16string(8, u'%')},
        {kVersion + "[A]\nx=%a%%a%%a%%a%%a%%a%%a%%a%%a%%a%\n[Strings]\na=" + std::string(510, 'a'),
         std::u16string(4095, u'a')},
    };
    for (const auto& row : cases) {
        InfMachine test;
        test.Write(u"C:\\x.inf", row.bytes);
        InfFile file;
        UINT line = 0;
        ASSERT_EQ(file.Read(u"C:\\x.inf", line), 0u);
        EXPECT_EQ(file.Field(*file.FindSection(u"A"), 0, 1), row.field) << &row - cases;
    }
}

// Reads a field as the library does: the error, or 0.
DWORD TryRead() {
    const HINF inf = SetupOpenInfFileW(u"C:\\x.inf", nullptr, INF_STYLE_WIN4, nullptr);
    if (inf == INVALID_HANDLE_VALUE) return GetLastError();
    INFCONTEXT line;
    WCHAR text[8];
    const bool isRead = SetupFindFirstLineW(inf, u"A", nullptr, &line) &&
                        SetupGetStringFieldW(&line, 1, text, 8, nullptr);
    const DWORD error = isRead ? 0 : GetLastError();
    SetupCloseInfFile(inf);
    EXPECT_FALSE(SetupGetStringFieldW(&line, 1, text, 8, nullptr)) << "a closed file";
    return error;
}

TEST(InfCalls, FailAsTheyAreTold) {
    const struct {
        std::string fault;
        DWORD error;
    } cases[] = {
        {"", 0},
        {R"("SetupOpenInfFileW c:\\X.inf"="5")", 5},
        {R"("SetupFindFirstLineW a"="0xE0000102")", ERROR_LINE_NOT_FOUND},
        {R"("SetupGetStringFieldW C:\\x.inf"="8,1,1")", 8},
    };
    for (const auto& row : cases) {
        InfMachine test;
        test.Write(u"C:\\x.inf", kVersion + "[A]\nx=1\n");
        test.Merge(FactLines("Faults", row.fault + "\n"));
        EXPECT_EQ(TryRead(), row.error) << row.fault;
    }
    InfMachine test;
    test.Write(u"C:\\x.inf", kVersion);
    const HINF inf = SetupOpenInfFileW(u"C:\\x.inf", nullptr, INF_STYLE_WIN4, nullptr);
    EXPECT_EQ(test.machine.ledger.Open().size(), 1u);
    SetupCloseInfFile(inf);
    EXPECT_EQ(test.machine.ledger.Open().size(), 0u);
}

}  // namespace
