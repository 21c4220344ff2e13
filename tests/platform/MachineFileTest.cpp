// Machine files: what is read and refused, what is written, and that nothing gets lost between.

#include <string>
#include <vector>

#include <windows.h>

#include "Facts.h"
#include "FactsMachine.h"
#include "Registry.h"
#include "Text.h"

namespace {

using namespace platform;

const std::string kHeader = FactsMachine::kHead;
const std::string kKey = "[HKEY_LOCAL_MACHINE\\SOFTWARE\\K]\n";

std::string Replace(std::string text, const std::string& from, const std::string& to) {
    for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size())
        text.replace(at, from.size(), to);
    return text;
}

std::string Formatted(Machine& machine) {
    return FormatRegistry(machine.Get<Registry>().Tree());
}

// A value of the key that the samples here use, as the line of a value v.
std::string Value(Machine& machine, const char16_t* name) {
    const auto key =
        machine.Get<Registry>().Tree().Find(RegistryRoot::LocalMachine, u"SOFTWARE\\K");
    const RegistryValue* value = key ? key->FindValue(name) : nullptr;
    return value ? FormatValue(u"v", value->Type(), value->Data()) : "";
}

TEST(MachineFileTest, EveryEncodingAndLineEndReadsAlike) {
    const std::string text = kHeader + kKey +
                             "@=\"\xC3\xA4\xE2\x82\xAC\xF0\x9F\x94\x8C\"\n"
                             "\"n\xC3\xA4me\"=hex:01,\\\n  02\n";
    const std::string crlf = Replace(text, "\n", "\r\n");
    const std::string files[] = {
        text,
        "\xEF\xBB\xBF" + crlf,
        ToUtf16(text, false),
        ToUtf16(crlf, false),
        ToUtf16(crlf, true),
        text.substr(0, text.size() - 1),
    };
    for (const std::string& file : files) {
        SCOPED_TRACE(&file - files);
        Machine machine;
        ASSERT_FALSE(LoadMachineFile(machine, file));
        EXPECT_EQ(Value(machine, u""), "\"v\"=\"\xC3\xA4\xE2\x82\xAC\xF0\x9F\x94\x8C\"\n");
        EXPECT_EQ(Value(machine, u"n\u00C4me"), "\"v\"=hex:01,02\n");
    }
}

TEST(MachineFileTest, ValuesInEveryFormThatExportsAndPeopleWrite) {
    const struct {
        std::string written, read;  // what stands behind "v"=; empty: no value
    } cases[] = {
        {"\"a\\\\b\\\"c\"", "\"a\\\\b\\\"c\""},
        {" \"x;y\" ; a comment", "\"x;y\""},
        {"\"2\r\nlines\n\"", "hex(1):32,00,0d,00,0a,00,6c,00,69,00,6e,00,65,00,73,00,0a,00,00,00"},
        {"\"\x1B[2J\"", "hex(1):1b,00,5b,00,32,00,4a,00,00,00"},   // a terminal's command
        {"\"\xC2\x9B\"", "hex(1):9b,00,00,00"},                    // the same in one character
        {"\"\xE2\x80\xAE\"", "hex(1):2e,20,00,00"},                // from right to left
        {"\"\xC2\xA0\xE2\x80\x8D\"", "\"\xC2\xA0\xE2\x80\x8D\""},  // neither of them
        {"dword:1", "dword:00000001"},
        {"hex:1, A2 ,\\\r\n\t03 ; end", "hex:01,a2,03"},
        {"hex:\\\n; between\n\n  02,", "hex:02"},
        {"hex(1):", "hex(1):"},
        {"hex(1):61,00", "hex(1):61,00"},
        {"hex(1):00,d8,00,00", "hex(1):00,d8,00,00"},  // half a pair
        {"hex(4):01,02", "hex(4):01,02"},
        {"hex(FFFF0012):01", "hex(ffff0012):01"},
        {"dword:1\n\"V\"=dword:2", "dword:00000002"},
        {"dword:1\n[-HKEY_LOCAL_MACHINE\\software\\k]", ""},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.written);
        FactsMachine facts(kKey + "  \"v\" = " + row.written + "\n");
        EXPECT_EQ(Value(facts.machine, u"v"), row.read.empty() ? "" : "\"v\"=" + row.read + "\n");
    }
}

TEST(MachineFileTest, ABrokenFileIsRefusedWithItsLine) {
    const std::string in = kHeader + kKey;  // the next line is the 4th
    const std::string value = in + "\"v\"=";
    const struct {
        std::string text;
        std::size_t line;
        const char* says;
    } cases[] = {
        {"\xFF\xFE", 1, "empty"},
        {"[HKEY_LOCAL_MACHINE\\A]\n", 1, "first line"},
        {"REGEDIT4\n\n[HKEY_LOCAL_MACHINE\\A]\n", 1, "REGEDIT4"},
        {kHeader + "[HKEY_OTHER\\A]\n", 3, "HKEY_OTHER"},
        {kHeader + "[-HKEY_LOCAL_MACHINE]\n", 3, "root"},
        {kHeader + "[HKEY_LOCAL_MACHINE\\" + std::string(256, 'k') + "]\n", 3, "255"},
        {kHeader + "[HKEY_USERS" + Replace(std::string(512, 'x'), "x", "\\d") + "]\n", 3, "512"},
        {kHeader + "\"v\"=\"x\"\n", 3, "in no key"},
        {in + "v=dword:1\n", 4, "neither"},
        {in + "\"" + std::string(16384, 'v') + "\"=dword:1\n", 4, "16383"},
        {in + "\"v\n", 4, "closing quote"},
        {value + "dword:123456789\n", 4, "dword"},
        {value + "hex(g):01\n", 4, "type"},
        {value + "hex:01,\\ 02\n", 4, "after the backslash"},
        {value + "hex:01,\\\n  02,\\\n  zz\n", 6, "bad hex"},
        {value + "\"x\\y\"\n", 4, "backslash"},
        {value + "\"\xC3(\"\n", 4, "UTF-8"},
        {value + std::string("\"a\0\"\n", 5), 4, "NUL"},
        {ToUtf16(in, false) + "x", 4, "UTF-16"},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.text.substr(0, 200));
        FactsMachine facts(kKey + "\"kept\"=\"1\"\n");
        const std::string before = Formatted(facts.machine);
        const std::uint64_t generation = facts.machine.Get<Registry>().Generation();
        for (const auto& read : {LoadMachineFile, MergeMachineFile}) {
            const auto error = read(facts.machine, row.text);
            ASSERT_TRUE(error);
            EXPECT_EQ(error->line, row.line) << error->message;
            EXPECT_NE(error->message.find(row.says), std::string::npos) << error->message;
        }
        EXPECT_EQ(Formatted(facts.machine), before);
        EXPECT_EQ(facts.machine.Get<Registry>().Generation(), generation);
    }
}

TEST(MachineFileTest, SavingHasTheLayoutOfAnExport) {
    const std::string values =
        "\"long\"=hex:00,01,02,03,04,05,06,07,08,09,0a,0b,0c,0d,0e,0f,10,11,12,13,14,15,\\\n"
        "  16,17,18,19,1a,1b,1c,1d,1e,1f,20,21,22,23,24,25,26,27,28,29,2a,2b,2c,2d,2e,\\\n"
        "  2f,30,31,32,33,34,35,36,37,38,39,3a,3b,3c,3d,3e,3f\n";
    FactsMachine facts(kKey + Replace(values, "\\\n  ", ""));
    const std::string text = kHeader + "[HKEY_LOCAL_MACHINE\\SOFTWARE]\n\n" + kKey + values + "\n";
    EXPECT_EQ(Formatted(facts.machine), text);
    EXPECT_EQ(SaveMachineFile(facts.machine), ToUtf16(Replace(text, "\n", "\r\n"), false));
}

TEST(MachineFileTest, CurrentControlSetIsTheSetThatSelectNames) {
    const auto select = [](const std::string& current) {
        return KeyLines("SYSTEM\\Select", "\"Current\"=dword:" + current);
    };
    const std::string one = KeyLines("SYSTEM\\ControlSet001\\S", "\"in\"=dword:1");
    const std::string two = KeyLines("SYSTEM\\ControlSet002\\S", "\"in\"=dword:2");
    const std::string plain = KeyLines("SYSTEM\\CurrentControlSet\\S", "\"in\"=dword:3");
    const struct {
        std::string text;
        DWORD in;
        const char16_t* keeps;  // the name that saving keeps
        const char* why;
    } cases[] = {
        {one + two + select("2"), 2, u"ControlSet002", "the second one"},
        {one + two + plain + select("2"), 3, u"ControlSet002", "both are merged"},
        {plain + select("1"), 3, u"CurrentControlSet", "no such set"},
        {one + plain, 3, u"CurrentControlSet", "no Select"},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.why);
        FactsMachine facts(row.text);
        EXPECT_EQ(MachineNumber(u"SYSTEM\\CurrentControlSet\\S", u"in"), row.in);
        WriteMachineNumber(u"System\\currentcontrolset\\New", u"n", 9);
        const std::u16string kept = std::u16string(u"SYSTEM\\") + row.keeps;
        EXPECT_EQ(MachineNumber(kept + u"\\New", u"n"), 9u);
        const std::string saved = Formatted(facts.machine);
        EXPECT_NE(saved.find(ToUtf8(kept) + "\\New]"), std::string::npos);
        EXPECT_EQ(saved.find("CurrentControlSet") != std::string::npos,
                  row.keeps == std::u16string(u"CurrentControlSet"));
    }
    FactsMachine bare(one);
    EXPECT_FALSE(MachineKeyExists(u"SYSTEM\\CurrentControlSet"));
}

TEST(MachineFileTest, AnImportChangesTheRunningMachine) {
    FactsMachine facts(FactLines("", "\"Time\"=\"2026-11-19 08:05\"") +
                       FactLines("Faults", "\"RegDeleteValueW gone\"=\"1450,2,1\"") + kKey +
                       "\"a\"=\"1\"\n\"b\"=\"2\"\n" + KeyLines("SOFTWARE\\K\\Sub"));
    const Scheduler& scheduler = facts.machine.scheduler;
    constexpr std::uint64_t start = 134'395'491'000'000'000;  // 2026-11-19 08:05 since 1601
    EXPECT_EQ(scheduler.LocalFileTime(), start);

    HKEY key = nullptr;
    ASSERT_EQ(RegOpenKeyExW(HKEY_LOCAL_MACHINE, u"SOFTWARE\\K", 0, KEY_ALL_ACCESS, &key), 0);
    EXPECT_EQ(RegDeleteValueW(key, u"gone"), ERROR_FILE_NOT_FOUND);
    facts.Merge(kKey + "\"b\"=-\n\"c\"=dword:1\n[-HKEY_LOCAL_MACHINE\\SOFTWARE\\K\\Sub]\n" +
                FactLines("", "\"Time\"=\"2030-01-01 00:00\""));
    EXPECT_EQ(MachineValues(u"SOFTWARE\\K"), (std::vector<std::u16string>{u"a", u"c"}));
    EXPECT_TRUE(MachineSubkeys(u"SOFTWARE\\K").empty());
    EXPECT_EQ(scheduler.LocalFileTime(), start) << "the clock stays";
    EXPECT_EQ(RegDeleteValueW(key, u"gone"), 1450) << "a rule that stays goes on counting";
    EXPECT_EQ(RegDeleteValueW(key, u"gone"), ERROR_FILE_NOT_FOUND);

    facts.Merge(FactLines("Faults", "\"RegDeleteValueW\"=\"5\""));
    EXPECT_EQ(RegDeleteValueW(key, u"c"), 5);
    facts.Merge("[-" + FactsMachine::kStandIn + "\\Faults]\n");
    EXPECT_EQ(RegDeleteValueW(key, u"c"), 0);
    EXPECT_EQ(RegCloseKey(key), 0);
}

}  // namespace
