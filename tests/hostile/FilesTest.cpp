// Machine files and help files that are damaged, or never were one.

#include "TestWindow.h"

#include <setupapi.h>

#include "AllTabs.h"
#include "Drive.h"
#include "Hostile.h"
#include "HelpDocument.h"
#include "InfFile.h"
#include "LibraryState.h"
#include "MachineFileCheck.h"
#include "Seeds.h"
#include "XmlTree.h"
#include "platform/FactsMachine.h"
#include "sheet/Program.h"

namespace {

// Pieces that mean something there, apart from what stands in the files themselves.
constexpr std::string_view kMachineTokens[] = {
    "[-HKEY_LOCAL_MACHINE\\SYSTEM\\",
    "ControlSet001]\n",
    "\"v\"=",
    "\"V\"=-\n",
    "dword:FFFFFFFF\n",
    "hex(ffffffff):",
    "00,",
    "\\\n",
    "=",
    "\"",
    "\xED\xA0\x80",
    std::string_view("\0", 1),
    "\xFF\xFE",
    "[HKEY_LOCAL_MACHINE\\SYSTEM\\Select]\n\"Current\"=dword:1\n"};
constexpr std::string_view kHelpTokens[] = {
    "<",
    "/>",
    "<PortType>",
    "</PortType>",
    "<![CDATA[",
    "]]>",
    "<!--",
    "&#x0;",
    "&x;",
    "<?xml version=\"1.0\" encoding=\"utf-16\"?>",
    "<!DOCTYPE a [<!ENTITY x \"&#123;\\rtf1 y\"><!ENTITY z SYSTEM \"file:///z\">]>",
    "{\\rtf1 ",
    "{",
    "}",
    "\\",
    "\\'8",
    "\\'ff",
    "\\u-1?",
    "\\u99999999999 ",
    "\\uc9",
    "\\bin2147483647 ",
    "\\bin-1 ",
    "\\*\\x",
    "\\ansicpg65001 ",
    "\\v ",
    "\xED\xA0\x80"};

constexpr std::string_view kInfTokens[] = {"[Version]\n", "[",
                                           "]\n",         "=",
                                           ",",           "\"",
                                           "%",           "%a%",
                                           ";",           "\\\n",
                                           "\\",          "\n",
                                           "\r",          "[Strings]\na=%a%\n",
                                           "\x1A",        std::string_view("\0", 1),
                                           "\xFF\xFE",    "\xEF\xBB\xBF"};

// In UTF-16 with a mark, one file in three; else as it is.
std::string InSomeEncoding(Hostile& hostile, const std::string& text) {
    return hostile.Below(3) != 0 ? text : ToUtf16(text, hostile.Below(2) != 0);
}

// A file of its kind gone wrong: damaged, damaged in its other encoding, or noise.
std::string Wrong(Hostile& hostile, const std::string& text,
                  std::span<const std::string_view> tokens) {
    const std::string start = text.substr(0, text.find('\n') + 1);
    if (hostile.Below(5) == 0) return InSomeEncoding(hostile, start + hostile.Noise(tokens));
    if (hostile.Below(3) == 0) return hostile.Damaged(InSomeEncoding(hostile, text), tokens);
    return InSomeEncoding(hostile, hostile.Damaged(text, tokens));
}

TEST(HostileFiles, AMachineFileIsReadWholeOrNotAtAll) {
    const std::string base = MachineOf(0).Text();
    std::vector<std::string> samples = {base};
    for (const char* name : {"plain-export", "two-port-ethernet", "unicode-name"})
        samples.push_back(FileText(SOURCE_DIR "/samples/" + std::string(name) + ".reg"));
    for (const std::uint64_t seed : Seeds(400)) {
        SCOPED_TRACE("TEST_SEED=" + std::to_string(seed));
        Hostile hostile(seed);
        const std::string file = Wrong(hostile, hostile.OneOf(samples), kMachineTokens);
        ASSERT_EQ(WrongWithReading(base, file), "");
    }
}

// A merge while the sheets are open, as regedit would do it.
TEST(HostileFiles, AMergeIntoAnOpenSheetIsWholeOrNothing) {
    for (const std::uint64_t seed : Seeds(40)) {
        SCOPED_TRACE("TEST_SEED=" + std::to_string(seed));
        Hostile hostile(seed);
        const std::size_t number = seed % kMachines;
        const std::string text = MachineOf(number).Text();
        std::string file;
        std::string merged;
        bool isRefused = true;
        while (isRefused && hostile.Below(8)) {  // one that is taken shows more
            platform::Machine machine;
            ASSERT_FALSE(platform::LoadMachineFile(machine, text));
            file = Wrong(hostile, text, kMachineTokens);
            isRefused = platform::MergeMachineFile(machine, file).has_value();
            merged = platform::SaveMachineFile(machine);
        }
        if (merged.empty()) continue;
        ExpectCleanUseAfter(number, hostile.OneOf(kScenarios), false, [&](TestMachine& test) {
            const platform::QuietScope quiet;
            (void)platform::MergeMachineFile(test.machine, file);
            EXPECT_EQ(platform::SaveMachineFile(test.machine), merged);
        });
        if (HasFailure()) return;
    }
}

// The first fields of a section that a file may have.
void ExpectShortFields(HINF inf, const WCHAR* section) {
    INFCONTEXT line;
    if (!SetupFindFirstLineW(inf, section, nullptr, &line)) return;
    for (DWORD field = 0; field < 4; ++field) {
        DWORD required = 0;
        if (!SetupGetStringFieldW(&line, field, nullptr, 0, &required)) continue;
        std::vector<WCHAR> text(required);
        EXPECT_LE(required, 4096u);
        EXPECT_TRUE(SetupGetStringFieldW(&line, field, text.data(), required, nullptr));
        EXPECT_EQ(text.back(), u'\0');
    }
}

TEST(HostileFiles, AnInfFileIsReadOrRefused) {
    const std::string inf =
        "[Version]\nSignature=\"$Windows NT$\"\n[Manufacturer]\n%m%=Models,NT\n"
        "[Models]\n%d%=Install,cvta_muxp\n[Models.NT]\n%d%=Install, id, \\\n x\n"
        "[Strings]\nm=\"Corvanta\"\nd=\"A \"\"driver\"\"\"\n";
    for (const std::uint64_t seed : Seeds(400)) {
        SCOPED_TRACE("TEST_SEED=" + std::to_string(seed));
        Hostile hostile(seed);
        const FactsMachine facts;
        platform::Drive& drive = platform::Machine::Current().Get<platform::Drive>();
        drive.WriteWholeFile(u"C:\\x.inf", Wrong(hostile, inf, kInfTokens));
        const HINF opened = SetupOpenInfFileW(u"C:\\x.inf", nullptr, INF_STYLE_WIN4, nullptr);
        const DWORD error = opened == INVALID_HANDLE_VALUE ? GetLastError() : 0;
        const BOOL isCopied =
            SetupCopyOEMInfW(u"C:\\x.inf", nullptr, SPOST_PATH, 0, nullptr, 0, nullptr, nullptr);
        EXPECT_EQ(isCopied ? 0 : GetLastError(), error);
        EXPECT_EQ(drive.ReadWholeFile(u"C:\\Windows\\INF\\oem0.inf").has_value(), error == 0);
        if (error != 0) continue;
        for (const WCHAR* section : {u"Version", u"Manufacturer", u"Models", u"Strings", u""})
            ExpectShortFields(opened, section);
        SetupCloseInfFile(opened);
        for (const platform::InfModel& model : platform::StoredModels())
            EXPECT_FALSE(model.componentId.empty());
    }
}

TEST(HostileFiles, AHelpFileIsShownOrTheControlIsEmpty) {
    const std::string shipped = FileText(SOURCE_DIR "/resources/help.xml");
    for (const std::uint64_t seed : Seeds(150)) {
        SCOPED_TRACE("TEST_SEED=" + std::to_string(seed));
        Hostile hostile(seed);
        const std::string file = Wrong(hostile, shipped, kHelpTokens);
        platform::XmlReader reader(false);
        const bool isWellFormed = reader.Feed(file) && reader.Finish();
        TestMachine test;
        test.machine.Get<platform::Drive>().WriteWholeFile(
            u"C:\\Program Files\\Corvanta\\Documentation\\help.xml", file);
        test.Attach();
        const TestWindow pane(u"RichEdit20W", ES_MULTILINE);
        const HelpDocument* help = Library().helpDocument.get();
        EXPECT_EQ(bool{help->document}, isWellFormed);
        for (const char16_t* key : {u"Performance_ETH", u"PortType", u"TeamConfig", u"VlanHelp"}) {
            pane.SetText(u"before");
            ShowHelpTopic(help, pane.Handle(), key, nullptr);
            const std::u16string shown = pane.Text();
            EXPECT_LE(shown.size(), file.size() + file.size());  // each line's end has two
            EXPECT_NE(shown, u"before");
        }
        test.user.Do([&] { SendMessageW(test.SheetWindow(), PSM_SETCURSEL, 1, 0); });
        EXPECT_TRUE(test.RunSheet());
    }
}

}  // namespace
