// The one class through which the library reaches the registry.

#include "RegistryKey.h"

#include <string>
#include <vector>

#include "Fixture.h"

namespace {

constexpr char kTestKey[] = "SOFTWARE\\Test";

RegistryKey Opened(REGSAM access) {
    RegistryKey key;
    EXPECT_EQ(key.Open(Wide(kTestKey).c_str(), access), ERROR_SUCCESS);
    return key;
}

TEST(RegistryKey, ReadsATextFromWhateverAValueHolds) {
    const struct {
        const char* line;
        std::size_t capacity;  // characters
        DWORD limit;           // bytes
        LONG error;
        const char16_t* text;
        const char* reason;
    } rows[] = {
        {R"("v"="abc")", 10, 520, 0, u"abc", "an ordinary text"},
        {R"("v"="abc")", 4, 520, 0, u"abc", "it just fits the buffer"},
        {R"("v"="abc")", 3, 520, ERROR_MORE_DATA, u"xx", "longer than the buffer"},
        {R"("v"="abc")", 10, 7, ERROR_MORE_DATA, u"xx", "longer than the limit"},
        {R"("v"=hex(2):25,00,61,00,25,00,00,00)", 10, 520, 0, u"%a%", "expandable, not expanded"},
        {R"("v"=hex(1):61,00,62,00)", 3, 520, 0, u"ab", "no terminator, room for one"},
        {R"("v"=hex(1):61,00,62,00)", 2, 520, ERROR_MORE_DATA, u"xx", "no terminator, no room"},
        {R"("v"=hex(1):61,00,62,00,63)", 3, 520, ERROR_MORE_DATA, u"xx",
         "an odd last byte, no room"},
        {R"("v"=hex(1):)", 10, 520, 0, u"", "no data"},
        {R"("v"=hex(1):61,00,00,00,62,00,00,00)", 10, 520, 0, u"a", "text behind a terminator"},
        {R"("w"="abc")", 10, 520, ERROR_FILE_NOT_FOUND, u"xx", "absent"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.reason);
        TestMachine test(Sample().With(kTestKey, row.line));
        const RegistryKey key = Opened(KEY_READ);
        WCHAR buffer[10] = u"xx";  // kept on a failure
        EXPECT_EQ(key.ReadText(u"v", buffer, row.capacity, row.limit), row.error);
        EXPECT_EQ(std::u16string(buffer), row.text);
    }
}

TEST(RegistryKey, ReadsANumberOfAtMostFourBytes) {
    const struct {
        const char* line;
        LONG error;
        DWORD number;
    } rows[] = {
        {R"("v"=dword:12345678)", 0, 0x12345678},
        {R"("v"=hex:01,02)", 0, 0x0201},
        {R"("v"=hex(b):01,00,00,00,00,00,00,00)", ERROR_MORE_DATA, 7},
        {R"("w"=dword:1)", ERROR_FILE_NOT_FOUND, 7},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.line);
        TestMachine test(Sample().With(kTestKey, row.line));
        DWORD number = 7;
        EXPECT_EQ(Opened(KEY_READ).ReadDword(u"v", number), row.error);
        EXPECT_EQ(number, row.number);
        EXPECT_EQ(Opened(KEY_WRITE).WriteDword(u"w", 0x89ABCDEF), ERROR_SUCCESS);
        EXPECT_EQ(test.Number(kTestKey, u"w"), 0x89ABCDEFu);
    }
}

TEST(RegistryKey, WalksTheTextsOfAListThatMayLackItsEnd) {
    using Texts = std::vector<std::u16string>;
    const struct {
        const char* data;
        Texts texts;
        const char* reason;
    } rows[] = {
        {"61,00,62,00,00,00,63,00,00,00,00,00", {u"ab", u"c"}, "as it should be"},
        {"61,00,00,00,63,00", {u"a", u"c"}, "no terminators"},
        {"61,00,00,00,00,00,63,00,00,00", {u"a"}, "text behind the empty one"},
        {"61,00,00,00,63", {u"a", u"c"}, "an odd last byte"},
        {"00,00", {}, "an empty list"},
        {"", {}, "no data"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.reason);
        TestMachine test(Sample().With(kTestKey, "\"v\"=hex(7):" + std::string(row.data)));
        const RegistryKey key = Opened(KEY_READ | KEY_WRITE);
        MultiText list;
        EXPECT_EQ(key.ReadMultiText(u"v", list), ERROR_SUCCESS);
        Texts texts;
        for (const WCHAR* text : list)
            texts.emplace_back(text);
        EXPECT_EQ(texts, row.texts);
        // What was read can be written again to the byte.
        EXPECT_EQ(key.WriteBytes(u"w", REG_MULTI_SZ, list.Data(), list.Size()), ERROR_SUCCESS);
        EXPECT_EQ(test.Bytes(kTestKey, u"w"), test.Bytes(kTestKey, u"v"));
    }
}

TEST(RegistryKeyEnumerator, WalksTheSubkeysAndPassesOverWhatDoesNotOpen) {
    const std::string parent = kTestKey;
    TestMachine test(Sample()
                         .With(parent + "\\a", "\"v\"=dword:1")
                         .With(parent + "\\b", "\"v\"=dword:2")
                         .With(parent + "\\a longer name", "\"v\"=dword:3"));
    test.machine.faults.FailCalls("RegOpenKeyExW", u"b", ERROR_ACCESS_DENIED);
    RegistryKeyEnumerator subkeys;
    std::string seen;
    HRESULT result = subkeys.Start(HKEY_LOCAL_MACHINE, Wide(parent).c_str(), 0, KEY_READ);
    for (; result != S_FALSE; result = subkeys.Next()) {
        DWORD number = 0;
        if (result == S_OK) subkeys.Subkey().ReadDword(u"v", number);
        seen += std::to_string(number) + (result == S_OK ? " " : "! ");
        EXPECT_TRUE(result == S_OK || result == static_cast<HRESULT>(0x80070005));
        EXPECT_EQ(static_cast<bool>(subkeys.Subkey()), result == S_OK);
    }
    EXPECT_EQ(seen, "1 3 0! ");
    EXPECT_EQ(subkeys.Start(HKEY_LOCAL_MACHINE, u"SOFTWARE\\None", 0, 0), S_FALSE);
}

}  // namespace
