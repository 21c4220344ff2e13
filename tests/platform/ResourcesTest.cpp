// Resources of modules, and the modules themselves.

#include "DesktopMachine.h"

#include "Dialogs.h"
#include "Resources.h"

namespace {

// One block of the string table: 16 strings.
std::vector<BYTE> StringBlock(const std::vector<std::u16string>& texts) {
    Bytes block;
    for (std::size_t i = 0; i < 16; ++i) {
        const std::u16string text = i < texts.size() ? texts[i] : u"";
        block.Word(static_cast<unsigned>(text.size()));
        for (const char16_t unit : text)
            block.Word(unit);
    }
    return block.data;
}

ResourceFile Strings() {
    std::vector<std::u16string> last(15);
    last.push_back(u"the last of its block");
    return ResourceFile()
        .Add(Bytes().Ordinal(6), Bytes().Ordinal(7), StringBlock({u"", u"one", u"%1%n"}))
        .Add(Bytes().Ordinal(6), Bytes().Ordinal(8), StringBlock(last));
}

TEST(Resources, StringsAreFoundByTheirBlock) {
    const DesktopMachine desktop(Strings());
    const struct {
        UINT id;
        int capacity, copied;
        std::u16string text;
    } cases[] = {
        {97, 16, 3, u"one"},    {98, 16, 4, u"%1%n"},
        {97, 3, 2, u"on"},      {97, 1, 0, u""},
        {96, 16, 0, u"before"}, {99, 16, 0, u"before"},
        {80, 16, 0, u"before"}, {127, 64, 21, u"the last of its block"},
    };
    for (const auto& c : cases) {
        WCHAR text[64] = TEXT("before");
        EXPECT_EQ(LoadStringW(desktop.module, c.id, text, c.capacity), c.copied) << c.id;
        EXPECT_EQ(std::u16string(text), c.text) << c.id;
    }
    // Without a capacity it gives the address of the string itself.
    const WCHAR* inPlace = nullptr;
    ASSERT_EQ(LoadStringW(desktop.module, 97, reinterpret_cast<LPWSTR>(&inPlace), 0), 3);
    EXPECT_EQ(std::u16string_view(inPlace, 3), u"one");
}

TEST(Resources, AreFoundByNumberOrText) {
    const DesktopMachine desktop(ResourceFile()
                                     .Add(Bytes().Ordinal(10), Bytes().Ordinal(5), {1, 2, 3})
                                     .Add(Bytes().Ordinal(10), Bytes().Text(u"NAME"), {4, 5})
                                     .Add(Bytes().Text(u"KIND"), Bytes().Ordinal(5), {6}));
    const struct {
        LPCWSTR type, name;
        std::vector<BYTE> data;
        DWORD error;
    } cases[] = {
        {RT_RCDATA, MAKEINTRESOURCEW(5), {1, 2, 3}, 0},
        {TEXT("#10"), TEXT("#5"), {1, 2, 3}, 0},
        {RT_RCDATA, TEXT("name"), {4, 5}, 0},
        {TEXT("Kind"), MAKEINTRESOURCEW(5), {6}, 0},
        {RT_RCDATA, MAKEINTRESOURCEW(6), {}, ERROR_RESOURCE_NAME_NOT_FOUND},
        {RT_RCDATA, TEXT("#99999"), {}, ERROR_RESOURCE_NAME_NOT_FOUND},
        {RT_BITMAP, MAKEINTRESOURCEW(5), {}, ERROR_RESOURCE_TYPE_NOT_FOUND},
    };
    for (const auto& c : cases) {
        SetLastError(0);
        const HRSRC resource = FindResourceW(desktop.module, c.name, c.type);
        EXPECT_EQ(resource == nullptr, c.error != 0);
        EXPECT_EQ(GetLastError(), c.error);
        const auto* data =
            static_cast<const BYTE*>(LockResource(LoadResource(desktop.module, resource)));
        const DWORD size = SizeofResource(desktop.module, resource);
        EXPECT_EQ(std::vector<BYTE>(data, data + size), c.data);
    }
    EXPECT_EQ(FindResourceW(nullptr, MAKEINTRESOURCEW(5), RT_RCDATA), nullptr);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_RESOURCE_DATA_NOT_FOUND});
}

// The sanitizers watch these: a copy of exactly the bytes that are left.
template <class Read>
void ReadTruncated(const std::vector<BYTE>& whole, Read read) {
    for (std::size_t length = 0; length < whole.size(); ++length)
        read(std::vector<BYTE>(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length)));
}

TEST(Resources, FileThatIsCutOffGivesWhatIsWhole) {
    const ResourceFile file = Strings().Dialog(1, DialogBytes(u"Title").Control(u"\x80", 7));
    EXPECT_EQ(platform::ParseResources(file.Data()).size(), 3U);
    std::size_t before = 0;
    ReadTruncated(file.Data(), [&](const std::vector<BYTE>& cut) {
        const std::size_t found = platform::ParseResources(cut).size();
        EXPECT_GE(found, before);
        EXPECT_LE(found, 3U);
        before = found;
    });
}

TEST(Resources, TemplateThatIsCutOffMakesNoDialog) {
    const std::vector<BYTE> whole = DialogBytes(u"Title")
                                        .Control(u"\x80", 7, WS_VISIBLE, u"Press")
                                        .Control(u"RichEdit20W", 8)
                                        .Data();
    const auto dialog = platform::ParseDialogTemplate(whole);
    ASSERT_TRUE(dialog);
    EXPECT_EQ(dialog->title, u"Title");
    EXPECT_EQ(dialog->controls.at(0).className, u"Button");
    EXPECT_EQ(dialog->controls.at(1).className, u"RichEdit20W");
    ReadTruncated(whole, [](const std::vector<BYTE>& cut) {
        EXPECT_FALSE(platform::ParseDialogTemplate(cut)) << cut.size();
    });
    // A string table that lies about its lengths.
    std::vector<BYTE> block = StringBlock({u"one"});
    block[0] = block[1] = 0xFF;
    const DesktopMachine desktop(ResourceFile().Add(Bytes().Ordinal(6), Bytes().Ordinal(1), block));
    WCHAR text[8];
    EXPECT_EQ(LoadStringW(desktop.module, 0, text, 8), 0);
    EXPECT_EQ(LoadStringW(desktop.module, 1, text, 8), 0);
}

TEST(Resources, PlainTemplateIsReadToo) {
    Bytes bytes;
    bytes.Dword(WS_POPUP).Dword(0).Word(1).Word(1).Word(2).Word(30).Word(40);
    bytes.Word(0).Word(0).Text(u"Old").Align();
    bytes.Dword(WS_VISIBLE).Dword(0).Word(3).Word(4).Word(5).Word(6).Word(9);
    bytes.Ordinal(0x82).Ordinal(109).Word(0);
    const auto dialog = platform::ParseDialogTemplate(bytes.data);
    ASSERT_TRUE(dialog);
    EXPECT_EQ(dialog->title, u"Old");
    EXPECT_EQ(dialog->rect.right, 31);
    EXPECT_FALSE(dialog->fontSize);
    ASSERT_EQ(dialog->controls.size(), 1U);
    EXPECT_EQ(dialog->controls[0].className, u"Static");
    EXPECT_EQ(dialog->controls[0].id, 9U);
    EXPECT_EQ(dialog->controls[0].text, platform::ResourceName(WORD{109}));
}

// An image that notes how often its entry point was called with which reason.
std::vector<DWORD> g_reasons;
BOOL g_attaches = TRUE;
BOOL WINAPI Entry(HINSTANCE, DWORD reason, LPVOID) {
    g_reasons.push_back(reason);
    return reason != DLL_PROCESS_ATTACH || g_attaches;
}
INT_PTR WINAPI Exported() {
    return 42;
}

class ModulesTest : public testing::Test {
  protected:
    ModulesTest() {
        g_reasons.clear();
        g_attaches = TRUE;
        desktop.machine.Get<platform::Modules>().Install(
            {u"Counted.dll", &Entry, {}, {{"Exported", &Exported}}});
    }
    DesktopMachine desktop;
};

TEST_F(ModulesTest, EntryRunsForTheFirstAndTheLastReference) {
    const HMODULE first = LoadLibraryW(TEXT("counted"));
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(LoadLibraryW(TEXT("C:\\Windows\\COUNTED.DLL")), first);
    EXPECT_EQ(GetModuleHandleW(TEXT("Counted.dll")), first);
    EXPECT_EQ(GetProcAddress(first, "Exported"), &Exported);
    EXPECT_EQ(GetProcAddress(first, "exported"), nullptr);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_PROC_NOT_FOUND});
    EXPECT_TRUE(FreeLibrary(first));
    EXPECT_EQ(g_reasons, std::vector<DWORD>{DLL_PROCESS_ATTACH});
    EXPECT_TRUE(FreeLibrary(first));
    EXPECT_EQ(g_reasons, (std::vector<DWORD>{DLL_PROCESS_ATTACH, DLL_PROCESS_DETACH}));
    EXPECT_FALSE(FreeLibrary(first));
    EXPECT_EQ(GetModuleHandleW(TEXT("Counted.dll")), nullptr);
}

TEST_F(ModulesTest, LoadFailsWithoutALeftover) {
    g_attaches = FALSE;
    EXPECT_EQ(LoadLibraryW(TEXT("Counted.dll")), nullptr);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_DLL_INIT_FAILED});
    EXPECT_EQ(GetModuleHandleW(TEXT("Counted.dll")), nullptr);
    EXPECT_EQ(LoadLibraryW(TEXT("missing.dll")), nullptr);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_MOD_NOT_FOUND});
    g_attaches = TRUE;
    desktop.machine.faults.FailCalls("LoadLibraryW", u"counted.DLL", 5);
    EXPECT_EQ(LoadLibraryW(TEXT("Counted.dll")), nullptr);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_ACCESS_DENIED});
}

TEST_F(ModulesTest, EachReferenceIsInTheLedger) {
    const std::size_t before = desktop.machine.ledger.Open().size();
    const HMODULE module = LoadLibraryW(TEXT("Counted.dll"));
    LoadLibraryW(TEXT("Counted.dll"));
    EXPECT_EQ(desktop.machine.ledger.Open().size(), before + 2);
    FreeLibrary(module);
    EXPECT_EQ(desktop.machine.ledger.Open().size(), before + 1);
    FreeLibrary(module);
    EXPECT_EQ(desktop.machine.ledger.Open().size(), before);
}

}  // namespace
