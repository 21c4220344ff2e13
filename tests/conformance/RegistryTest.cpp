// The registry's functions: codes, sizes, rights, order and handles.

#include <string>
#include <vector>

#include "Conformance.h"

namespace {

using Names = std::vector<Text>;
using Data = std::vector<BYTE>;

class RegistryTest : public Conformance {
  protected:
    // A key below the scratch key, made with what is missing, closed with the fixture.
    HKEY Make(const Text& path, REGSAM access = KEY_ALL_ACCESS) {
        HKEY key = nullptr;
        EXPECT_EQ(
            RegCreateKeyExW(scratch, path.c_str(), 0, nullptr, 0, access, nullptr, &key, nullptr),
            0);
        m_keys.push_back(key);
        return key;
    }
    void TearDown() override {
        for (const HKEY key : m_keys)
            EXPECT_EQ(RegCloseKey(key), 0);
    }
    static LSTATUS Open(HKEY from, const WCHAR* path, REGSAM access = KEY_READ) {
        HKEY key = nullptr;
        const LSTATUS status = RegOpenKeyExW(from, path, 0, access, &key);
        if (status == 0) RegCloseKey(key);
        return status;
    }
    static LSTATUS Set(HKEY key, const WCHAR* name, const Data& data = {1},
                       DWORD type = REG_BINARY) {
        return RegSetValueExW(key, name, 0, type, data.data(), static_cast<DWORD>(data.size()));
    }
    static LSTATUS Query(HKEY key, const WCHAR* name) {
        return RegQueryValueExW(key, name, nullptr, nullptr, nullptr, nullptr);
    }
    // One step of an enumeration: the name, empty when there is none.
    template <class Function>
    static Text Nth(Function enumerate, HKEY key, DWORD index) {
        WCHAR name[256];
        DWORD length = 256;
        const LSTATUS status =
            enumerate(key, index, name, &length, nullptr, nullptr, nullptr, nullptr);
        return status == 0 ? Text(name, length) : Text();
    }
    static Names Subkeys(HKEY key) {
        Names names;
        for (DWORD i = 0; !Nth(&RegEnumKeyExW, key, i).empty(); ++i)
            names.push_back(Nth(&RegEnumKeyExW, key, i));
        return names;
    }
    // The default value's name as "@".
    static Names Values(HKEY key) {
        DWORD count = 0;
        RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &count, nullptr,
                         nullptr, nullptr, nullptr);
        Names names;
        for (DWORD i = 0; i < count; ++i) {
            const Text name = Nth(&RegEnumValueW, key, i);
            names.push_back(name.empty() ? TEXT("@") : name);
        }
        return names;
    }

  private:
    std::vector<HKEY> m_keys;
};

TEST_F(RegistryTest, PathsOpen) {
    const Text longest(255, TEXT('n'));
    Make(TEXT("One\\Two"));
    Make(longest);
    const struct {
        Text path;
        LSTATUS opened;
    } cases[] = {
        {TEXT("oNE\\tWO"), 0},
        {TEXT("One\\Two\\"), 0},
        {TEXT("One\\\\Two"), 0},
        {TEXT("\\One"), ERROR_BAD_PATHNAME},
        {longest, 0},
        {TEXT("One\\Three"), ERROR_FILE_NOT_FOUND},
        {TEXT("Four\\Five\\"), ERROR_FILE_NOT_FOUND},
    };
    for (const auto& row : cases)
        EXPECT_EQ(Open(scratch, row.path.c_str()), row.opened) << &row - cases;
    EXPECT_EQ(Open(nullptr, TEXT("One")), ERROR_INVALID_HANDLE);
}

TEST_F(RegistryTest, ValuesComeBackAsTheyWereSet) {
    ASSERT_EQ(Set(scratch, TEXT("Name"), {1, 2, 3, 4, 5}, REG_SZ), 0);
    ASSERT_EQ(RegSetValueExW(scratch, nullptr, 0, 0xFFFF0001, nullptr, 0), 0);
    const struct {
        const WCHAR* name;
        DWORD capacity;
        LSTATUS status;
        DWORD type, size;
        Data data;  // in a buffer of 9s
        const char* why;
    } cases[] = {
        {TEXT("nAME"), 6, 0, REG_SZ, 5, {1, 2, 3, 4, 5, 9}, "no terminator is added"},
        {TEXT("Name"), 4, ERROR_MORE_DATA, REG_SZ, 5, {9, 9, 9, 9, 9, 9}, "a short buffer stays"},
        {TEXT(""), 6, 0, 0xFFFF0001, 0, {9, 9, 9, 9, 9, 9}, "the default value"},
        {TEXT("None"), 6, ERROR_FILE_NOT_FOUND, 77, 6, {9, 9, 9, 9, 9, 9}, "absent"},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.why);
        Data data(6, 9);
        DWORD size = row.capacity;
        DWORD type = 77;
        EXPECT_EQ(RegQueryValueExW(scratch, row.name, nullptr, &type, data.data(), &size),
                  row.status);
        if (row.status != ERROR_FILE_NOT_FOUND) {
            EXPECT_EQ(type, row.type);
        }
        EXPECT_EQ(size, row.size);
        EXPECT_EQ(data, row.data);
        size = 0;
        EXPECT_EQ(RegQueryValueExW(scratch, row.name, nullptr, nullptr, nullptr, &size),
                  row.status == ERROR_FILE_NOT_FOUND ? row.status : 0)
            << "without a buffer the size is told";
        EXPECT_EQ(size, row.status == ERROR_FILE_NOT_FOUND ? 0 : row.size);
    }
    EXPECT_EQ(Query(scratch, TEXT("Name")), 0) << "nothing asked but whether it is there";
}

TEST_F(RegistryTest, SubkeysEnumerateSorted) {
    // Upper case counts: a letter comes before the underscore.
    for (const WCHAR* name : {TEXT("b_"), TEXT("ba"), TEXT("B0"), TEXT("\u00C9x"), TEXT("Z"),
                              TEXT("\u00E9"), TEXT("a")})
        Make(name);
    EXPECT_EQ(Subkeys(scratch), (Names{TEXT("a"), TEXT("B0"), TEXT("ba"), TEXT("b_"), TEXT("Z"),
                                       TEXT("\u00E9"), TEXT("\u00C9x")}));
    WCHAR name[3];
    DWORD length = 2;
    EXPECT_EQ(RegEnumKeyExW(scratch, 1, name, &length, nullptr, nullptr, nullptr, nullptr),
              ERROR_MORE_DATA)
        << "the terminator needs room, too";
}

TEST_F(RegistryTest, ValuesEnumerateAsTheyWereSet) {
    for (const WCHAR* name : {TEXT("z"), TEXT("a"), TEXT("m"), TEXT("A"), TEXT("")})
        ASSERT_EQ(Set(scratch, name), 0);
    EXPECT_EQ(Values(scratch), (Names{TEXT("z"), TEXT("a"), TEXT("m"), TEXT("@")}))
        << "the name keeps its case";
    EXPECT_EQ(RegDeleteValueW(scratch, TEXT("Z")), 0);
    EXPECT_EQ(RegDeleteValueW(scratch, TEXT("Z")), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(Values(scratch), (Names{TEXT("a"), TEXT("m"), TEXT("@")}));
}

TEST_F(RegistryTest, AHandleDoesWhatItWasOpenedFor) {
    const struct {
        REGSAM access;
        bool query, set, enumerate;
    } cases[] = {
        {KEY_QUERY_VALUE, true, false, false},
        {KEY_SET_VALUE, false, true, false},
        {KEY_ENUMERATE_SUB_KEYS, false, false, true},
        {KEY_ALL_ACCESS, true, true, true},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.access);
        const HKEY key = Make(TEXT("Key"), row.access);
        const auto expected = [](bool allowed) { return allowed ? 0 : ERROR_ACCESS_DENIED; };
        EXPECT_EQ(Set(key, TEXT("v")), expected(row.set));
        EXPECT_EQ(Set(Make(TEXT("Key")), TEXT("v")), 0);
        EXPECT_EQ(Query(key, TEXT("v")), expected(row.query));
        Make(TEXT("Key\\Sub"));
        EXPECT_EQ(Subkeys(key).empty(), !row.enumerate);
        EXPECT_EQ(Open(key, TEXT("Sub")), 0) << "by the key's own security, not the handle's";
        EXPECT_EQ(RegDeleteValueW(key, TEXT("none")),
                  row.set ? ERROR_FILE_NOT_FOUND : ERROR_ACCESS_DENIED);
    }
}

TEST_F(RegistryTest, AHandleOfADeletedKeyIsGoodForClosingOnly) {
    const HKEY key = Make(TEXT("Key\\Below"));
    EXPECT_EQ(RegDeleteTreeW(scratch, TEXT("Key")), 0);
    Make(TEXT("Key\\Below"));  // of the same name, but another key
    EXPECT_EQ(Set(key, TEXT("v")), ERROR_KEY_DELETED);
    EXPECT_EQ(Query(key, TEXT("v")), ERROR_KEY_DELETED);
    EXPECT_EQ(RegDeleteValueW(key, TEXT("v")), ERROR_KEY_DELETED);
    EXPECT_EQ(Open(key, TEXT("")), ERROR_KEY_DELETED);
}

}  // namespace
