// The registry's functions: codes, sizes, rights, order and handles.

#include <string>
#include <vector>

#include "Conformance.h"

namespace {

using Names = std::vector<Text>;
using Data = std::vector<BYTE>;

class RegistryTest : public Conformance {
  protected:
    RegistryTest() {
        RegDeleteTreeW(HKEY_CURRENT_USER, kScratch);  // of a run that was broken off
        scratch = Make(kScratch);
    }
    ~RegistryTest() override {
        for (const HKEY key : m_keys)
            EXPECT_EQ(RegCloseKey(key), 0);
        RegDeleteTreeW(HKEY_CURRENT_USER, kScratch);
    }
    // A key below the scratch key, made with what is missing, closed with the fixture.
    HKEY Make(const Text& path, REGSAM access = KEY_ALL_ACCESS) {
        HKEY key = nullptr;
        EXPECT_EQ(
            RegCreateKeyExW(scratch, path.c_str(), 0, nullptr, 0, access, nullptr, &key, nullptr),
            0);
        m_keys.push_back(key);
        return key;
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
    // The names that an enumeration gives.
    template <class Function>
    static Names All(Function enumerate, HKEY key) {
        Names names;
        WCHAR name[256];
        DWORD length = 256;
        for (DWORD i = 0; enumerate(key, i, name, &length, nullptr, nullptr, nullptr, nullptr) == 0;
             ++i) {
            names.emplace_back(name, length);
            length = 256;
        }
        return names;
    }

    HKEY scratch = HKEY_CURRENT_USER;  // its key kScratch, which is deleted with the case

  private:
    static constexpr const WCHAR* kScratch = TEXT("Software\\Conformance");
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
    ASSERT_EQ(Set(scratch, TEXT("Unended"), {'a', 0, 0, 0}, REG_MULTI_SZ), 0);
    ASSERT_EQ(Set(scratch, TEXT("Odd"), {'a', 0, 0, 0, 'b'}, REG_MULTI_SZ), 0);
    ASSERT_EQ(Set(scratch, TEXT("Empty"), {}, REG_MULTI_SZ), 0);
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
        {TEXT("Unended"),
         6,
         0,
         REG_MULTI_SZ,
         4,
         {'a', 0, 0, 0, 9, 9},
         "a list stays without its end"},
        {TEXT("Odd"), 6, 0, REG_MULTI_SZ, 5, {'a', 0, 0, 0, 'b', 9}, "and half a character stays"},
        {TEXT("Empty"), 6, 0, REG_MULTI_SZ, 0, {9, 9, 9, 9, 9, 9}, "no list at all"},
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
    EXPECT_EQ(All(&RegEnumKeyExW, scratch), (Names{TEXT("a"), TEXT("B0"), TEXT("ba"), TEXT("b_"),
                                                   TEXT("Z"), TEXT("\u00E9"), TEXT("\u00C9x")}));
    WCHAR name[3];
    DWORD length = 2;
    EXPECT_EQ(RegEnumKeyExW(scratch, 1, name, &length, nullptr, nullptr, nullptr, nullptr),
              ERROR_MORE_DATA)
        << "the terminator needs room, too";
}

TEST_F(RegistryTest, ValuesEnumerateAsTheyWereSet) {
    for (const WCHAR* name : {TEXT("z"), TEXT("a"), TEXT("m"), TEXT("A"), TEXT("")})
        ASSERT_EQ(Set(scratch, name), 0);
    EXPECT_EQ(All(&RegEnumValueW, scratch), (Names{TEXT("z"), TEXT("a"), TEXT("m"), TEXT("")}))
        << "the name keeps its case";
    EXPECT_EQ(RegDeleteValueW(scratch, TEXT("Z")), 0);
    EXPECT_EQ(RegDeleteValueW(scratch, TEXT("Z")), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(All(&RegEnumValueW, scratch), (Names{TEXT("a"), TEXT("m"), TEXT("")}));
}

TEST_F(RegistryTest, EachOfManyValuesIsFound) {
    for (int times = 0; times < 2; ++times) {
        for (std::size_t length = 1; length <= 100; ++length)
            EXPECT_EQ(Set(scratch, Text(length, TEXT('v')).c_str()), 0);
    }
    EXPECT_EQ(All(&RegEnumValueW, scratch).size(), 100u);
    for (std::size_t length = 1; length <= 100; length += 2)
        EXPECT_EQ(RegDeleteValueW(scratch, Text(length, TEXT('V')).c_str()), 0);
    for (std::size_t length = 1; length <= 100; ++length)
        EXPECT_EQ(Query(scratch, Text(length, TEXT('V')).c_str()),
                  length % 2 ? ERROR_FILE_NOT_FOUND : 0);
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
        EXPECT_EQ(All(&RegEnumKeyExW, key).empty(), !row.enumerate);
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
