// The registry's functions against what Windows does: codes, sizes, rights, order and handles.

#include <string>
#include <vector>

#include <windows.h>

#include "Facts.h"
#include "FactsMachine.h"
#include "Registry.h"
#include "Text.h"

namespace {

using namespace platform;
using Names = std::vector<std::u16string>;
using Data = std::vector<BYTE>;

class RegistryTest : public testing::Test {
  protected:
    // A key below HKEY_LOCAL_MACHINE, made with what is missing, closed with the fixture.
    HKEY Make(const std::u16string& path, REGSAM access = KEY_ALL_ACCESS) {
        HKEY key = nullptr;
        EXPECT_EQ(Create(HKEY_LOCAL_MACHINE, path, access, &key), 0);
        m_keys.push_back(key);
        return key;
    }
    void TearDown() override {
        for (const HKEY key : m_keys)
            EXPECT_EQ(RegCloseKey(key), 0);
    }
    static LSTATUS Create(HKEY from, const std::u16string& path, REGSAM access, HKEY* key,
                          DWORD* disposition = nullptr) {
        return RegCreateKeyExW(from, path.c_str(), 0, nullptr, 0, access, nullptr, key,
                               disposition);
    }
    static LSTATUS Open(HKEY from, const char16_t* path, REGSAM access = KEY_READ) {
        HKEY key = nullptr;
        const LSTATUS status = RegOpenKeyExW(from, path, 0, access, &key);
        EXPECT_EQ(key == nullptr, status != 0);
        if (status == 0) {
            EXPECT_EQ(RegCloseKey(key), 0);
        }
        return status;
    }
    static LSTATUS Set(HKEY key, const char16_t* name, const Data& data = {1},
                       DWORD type = REG_BINARY) {
        return RegSetValueExW(key, name, 0, type, data.data(), static_cast<DWORD>(data.size()));
    }
    static LSTATUS Query(HKEY key, const char16_t* name) {
        return RegQueryValueExW(key, name, nullptr, nullptr, nullptr, nullptr);
    }
    // The names of all subkeys or values; enumerate: the function that gives one.
    template <class Function>
    static Names All(Function enumerate, HKEY key) {
        Names names;
        WCHAR name[256];
        for (DWORD length = 256; enumerate(key, static_cast<DWORD>(names.size()), name, &length,
                                           nullptr, nullptr, nullptr, nullptr) == 0;
             length = 256)
            names.emplace_back(name, length);
        return names;
    }
    static Names Subkeys(HKEY key) { return All(&RegEnumKeyExW, key); }
    static Names Values(HKEY key) { return All(&RegEnumValueW, key); }
    // The first character of the index-th subkey's name; a blank when there is none.
    static WCHAR NthSubkey(HKEY key, DWORD index) {
        WCHAR name[8] = u" ";
        DWORD length = 8;
        RegEnumKeyExW(key, index, name, &length, nullptr, nullptr, nullptr, nullptr);
        return name[0];
    }

    FactsMachine facts;

  private:
    std::vector<HKEY> m_keys;
};

TEST_F(RegistryTest, PathsAreTakenAsWindowsTakesThem) {
    const std::u16string longest(255, u'n');
    const HKEY base = Make(u"Base");
    Make(u"Base\\One\\Two");
    Make(u"Base\\" + longest);
    const struct {
        std::u16string path;
        LSTATUS status;
    } cases[] = {
        {u"oNE\\tWO", 0},
        {u"One\\Two\\", 0},
        {u"One\\\\Two", 0},
        {u"\\One", ERROR_BAD_PATHNAME},
        {u"One\\Three", ERROR_FILE_NOT_FOUND},
        {u"One\\Two\\Three", ERROR_FILE_NOT_FOUND},
        {longest, 0},
        {longest + u"n", ERROR_INVALID_PARAMETER},
    };
    for (const auto& row : cases)
        EXPECT_EQ(Open(base, row.path.c_str()), row.status) << ToUtf8(row.path);
    HKEY key = nullptr;
    EXPECT_EQ(RegOpenKeyExW(HKEY_LOCAL_MACHINE, u"", 0, KEY_READ, &key), 0);
    EXPECT_EQ(key, HKEY_LOCAL_MACHINE) << "a predefined key opens as itself";
    EXPECT_EQ(Open(base, nullptr), 0);
    EXPECT_EQ(Open(nullptr, u"One"), ERROR_INVALID_HANDLE);
    EXPECT_EQ(Open(base, u"One", 0), ERROR_ACCESS_DENIED) << "no right asked for";
}

TEST_F(RegistryTest, CreatingMakesWhatIsMissingAndSaysSo) {
    std::u16string deep;
    for (int i = 0; i < 512; ++i)
        deep += u"d\\";
    const HKEY base = Make(u"Base");
    DWORD disposition = 0;
    const auto create = [&](const std::u16string& path) {
        HKEY key = nullptr;
        const LSTATUS status = Create(base, path, KEY_READ, &key, &disposition);
        if (key != nullptr) RegCloseKey(key);
        return status;
    };
    EXPECT_EQ(create(u"A\\B"), 0);
    EXPECT_EQ(disposition, DWORD{REG_CREATED_NEW_KEY});
    EXPECT_EQ(create(u"a\\b\\"), 0);
    EXPECT_EQ(disposition, DWORD{REG_OPENED_EXISTING_KEY});
    EXPECT_EQ(create(u"X\\" + std::u16string(256, u'n')), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(create(deep), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(Subkeys(base), Names{u"A"}) << "a failure makes nothing";
}

TEST_F(RegistryTest, ValuesComeBackAsTheyWereSet) {
    const HKEY key = Make(u"Key");
    ASSERT_EQ(Set(key, u"Name", {1, 2, 3, 4, 5}, REG_SZ), 0);
    ASSERT_EQ(RegSetValueExW(key, nullptr, 0, 0xFFFF0001, nullptr, 0), 0);
    const struct {
        const char16_t* name;
        DWORD capacity;
        LSTATUS status;
        DWORD type, size;
        Data data;  // in a buffer of 9s
        const char* why;
    } cases[] = {
        {u"nAME", 6, 0, REG_SZ, 5, {1, 2, 3, 4, 5, 9}, "no terminator is added"},
        {u"Name", 4, ERROR_MORE_DATA, REG_SZ, 5, {9, 9, 9, 9, 9, 9}, "a short buffer stays"},
        {u"", 6, 0, 0xFFFF0001, 0, {9, 9, 9, 9, 9, 9}, "the default value"},
        {u"None", 6, ERROR_FILE_NOT_FOUND, 77, 6, {9, 9, 9, 9, 9, 9}, "absent"},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.why);
        Data data(6, 9);
        DWORD size = row.capacity;
        DWORD type = 77;
        EXPECT_EQ(RegQueryValueExW(key, row.name, nullptr, &type, data.data(), &size), row.status);
        if (row.status != ERROR_FILE_NOT_FOUND) {
            EXPECT_EQ(type, row.type);
        }
        EXPECT_EQ(size, row.size);
        EXPECT_EQ(data, row.data);
    }
    EXPECT_EQ(Query(key, u"Name"), 0) << "nothing asked but whether it is there";
    EXPECT_EQ(Set(key, std::u16string(16384, u'v').c_str()), ERROR_INVALID_PARAMETER);
}

TEST_F(RegistryTest, SubkeysEnumerateSortedAndValuesAsTheyWereSet) {
    const HKEY key = Make(u"Key");
    for (const char16_t* name : {u"b_", u"ba", u"B0", u"\u00C9x", u"Z", u"\u00E9", u"a"})
        Make(std::u16string(u"Key\\") + name);
    // Upper case counts: a letter comes before the underscore.
    EXPECT_EQ(Subkeys(key), (Names{u"a", u"B0", u"ba", u"b_", u"Z", u"\u00E9", u"\u00C9x"}));

    for (const char16_t* name : {u"z", u"a", u"m", u"A", u""})
        ASSERT_EQ(Set(key, name), 0);
    EXPECT_EQ(Values(key), (Names{u"z", u"a", u"m", u""})) << "the name keeps its case";
    EXPECT_EQ(RegDeleteValueW(key, u"Z"), 0);
    EXPECT_EQ(RegDeleteValueW(key, u"Z"), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(Values(key), (Names{u"a", u"m", u""}));

    WCHAR name[2];
    DWORD length = 2;
    EXPECT_EQ(RegEnumKeyExW(key, 1, name, &length, nullptr, nullptr, nullptr, nullptr),
              ERROR_MORE_DATA)
        << "the terminator needs room, too";
}

TEST_F(RegistryTest, AnEnumerationSurvivesChangesBetweenItsSteps) {
    const HKEY key = Make(u"Key");
    for (const char16_t* name : {u"a", u"b", u"c", u"d"})
        Make(std::u16string(u"Key\\") + name);
    EXPECT_EQ(NthSubkey(key, 1), u'b');
    EXPECT_EQ(RegDeleteKeyW(key, u"b"), 0);
    std::u16string seen;
    for (const DWORD index : {1U, 0U, 2U, 3U})
        seen += NthSubkey(key, index);
    EXPECT_EQ(seen, u"cad ");
}

TEST_F(RegistryTest, AHandleDoesWhatItWasOpenedFor) {
    const struct {
        REGSAM access;
        bool query, set, enumerate;
    } cases[] = {
        {KEY_QUERY_VALUE, true, false, false},
        {KEY_SET_VALUE, false, true, false},
        {KEY_ENUMERATE_SUB_KEYS, false, false, true},
        {KEY_WRITE, false, true, false},
        {GENERIC_READ, true, false, true},
        {GENERIC_ALL, true, true, true},
        {MAXIMUM_ALLOWED, true, true, true},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.access);
        const HKEY key = Make(u"Key", row.access);
        const auto expected = [](bool allowed) { return allowed ? 0 : ERROR_ACCESS_DENIED; };
        EXPECT_EQ(Set(key, u"v"), expected(row.set));
        EXPECT_EQ(Set(Make(u"Key"), u"v"), 0);
        EXPECT_EQ(Query(key, u"v"), expected(row.query));
        Make(u"Key\\Sub");
        EXPECT_EQ(Values(key).empty(), !row.query);
        EXPECT_EQ(Subkeys(key).empty(), !row.enumerate);
        EXPECT_EQ(Open(key, u"Sub"), 0) << "by the key's own security, not the handle's";
        EXPECT_EQ(RegDeleteKeyW(key, u"Sub"), 0) << "the same";
        EXPECT_EQ(RegDeleteTreeW(key, nullptr), expected(row.query && row.set && row.enumerate));
        EXPECT_EQ(RegDeleteValueW(key, u"none"),
                  row.set ? ERROR_FILE_NOT_FOUND : ERROR_ACCESS_DENIED);
    }
}

TEST_F(RegistryTest, DeletingKeys) {
    const HKEY base = Make(u"Base");
    Make(u"Base\\Full\\Below");
    EXPECT_EQ(RegDeleteKeyW(base, u"Full"), ERROR_ACCESS_DENIED) << "it has a subkey";
    EXPECT_EQ(RegDeleteKeyW(base, u"None"), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(RegDeleteKeyW(HKEY_LOCAL_MACHINE, u""), ERROR_ACCESS_DENIED);
    EXPECT_EQ(RegDeleteTreeW(base, u"None"), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(RegDeleteTreeW(base, u"Full"), 0);
    EXPECT_EQ(Open(base, u"Full"), ERROR_FILE_NOT_FOUND);

    Make(u"Base\\Other\\Below");
    ASSERT_EQ(Set(base, u"v"), 0);
    EXPECT_EQ(RegDeleteTreeW(base, nullptr), 0);
    EXPECT_TRUE(Subkeys(base).empty());
    EXPECT_TRUE(Values(base).empty());
    EXPECT_EQ(Open(HKEY_LOCAL_MACHINE, u"Base"), 0) << "the key itself stays";
    EXPECT_EQ(RegDeleteKeyW(base, u""), 0);
    EXPECT_EQ(Open(HKEY_LOCAL_MACHINE, u"Base"), ERROR_FILE_NOT_FOUND);
}

TEST_F(RegistryTest, AHandleOfADeletedKeyIsGoodForClosingOnly) {
    const HKEY key = Make(u"Base\\Key\\Below");
    const HKEY reader = Make(u"Base\\Key\\Below", KEY_READ);
    EXPECT_EQ(RegDeleteTreeW(HKEY_LOCAL_MACHINE, u"Base\\Key"), 0);
    Make(u"Base\\Key\\Below");  // of the same name, but another key
    EXPECT_EQ(Set(reader, u"v"), ERROR_ACCESS_DENIED) << "rights are looked at first";
    WCHAR name[8];
    DWORD length = 8;
    HKEY other = nullptr;
    const LSTATUS results[] = {
        Set(key, u"v"),
        Query(key, u"v"),
        RegDeleteValueW(key, u"v"),
        RegEnumKeyExW(key, 0, name, &length, nullptr, nullptr, nullptr, nullptr),
        RegEnumValueW(key, 0, name, &length, nullptr, nullptr, nullptr, nullptr),
        Open(key, u""),
        Create(key, u"s", KEY_READ, &other),
        RegDeleteKeyW(key, u""),
        RegDeleteTreeW(key, nullptr),
    };
    for (const LSTATUS& result : results)
        EXPECT_EQ(result, ERROR_KEY_DELETED) << &result - results;
}

TEST_F(RegistryTest, AFaultComesBeforeAnyChangeAndNeverAtClosing) {
    const HKEY key = Make(u"Key");
    facts.machine.faults.FailCalls("RegSetValueExW", u"VALUE", 1450);
    EXPECT_EQ(Set(key, u"value"), 1450);
    EXPECT_EQ(Set(key, u"other"), 0);
    EXPECT_EQ(Values(key), Names{u"other"});
    HKEY second = nullptr;
    ASSERT_EQ(Create(key, u"Sub", KEY_READ, &second), 0);
    facts.machine.faults.FailCalls("RegCloseKey", {}, ERROR_ACCESS_DENIED);
    EXPECT_EQ(RegCloseKey(second), 0);
    EXPECT_EQ(RegCloseKey(second), ERROR_INVALID_HANDLE);
    EXPECT_EQ(RegCloseKey(HKEY_LOCAL_MACHINE), 0) << "a predefined key stays open";
    facts.machine.faults.FailCalls("RegOpenKeyExW", u"key", 5);
    EXPECT_EQ(Open(HKEY_LOCAL_MACHINE, u"Key"), 5);
    EXPECT_TRUE(MachineKeyExists(u"Key")) << "facts are read quietly";
}

TEST_F(RegistryTest, ManyValuesInOneKeyStayApart) {
    const HKEY key = Make(u"Key");
    constexpr DWORD count = 500;
    const auto name = [](DWORD i) { return u"Value" + FromUtf8(std::to_string(i)); };
    for (DWORD i = 0; i < count; ++i)
        ASSERT_EQ(Set(key, name(i).c_str(), {static_cast<BYTE>(i)}), 0);
    for (DWORD i = 0; i < count; i += 2)
        ASSERT_EQ(RegDeleteValueW(key, name(i).c_str()), 0);
    for (DWORD i = 1; i < count; i += 4)
        ASSERT_EQ(Set(key, name(i).c_str(), {7}), 0);
    Names left;
    for (DWORD i = 0; i < count; ++i) {
        BYTE byte = 0;
        DWORD size = 1;
        const LSTATUS status =
            RegQueryValueExW(key, name(i).c_str(), nullptr, nullptr, &byte, &size);
        ASSERT_EQ(status, i % 2 == 0 ? ERROR_FILE_NOT_FOUND : 0) << i;
        EXPECT_EQ(byte, i % 2 == 0 ? 0 : i % 4 == 1 ? 7 : static_cast<BYTE>(i)) << i;
        if (i % 2 != 0) left.push_back(name(i));
    }
    EXPECT_EQ(Values(key), left);
}

}  // namespace
