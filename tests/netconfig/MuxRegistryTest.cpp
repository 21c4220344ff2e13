// The lists of bindings, and what hostile ones do.

#include "MuxRegistry.h"

#include "List.h"
#include "NetConfigTest.h"

namespace {

constexpr WCHAR kName[] = u"\\Device\\{A}";
const std::u16string kZ(1, u'\0');  // a terminator

RegistryKey EntryKey() {
    RegistryKey key;
    EXPECT_EQ(key.Open(Wide(kTree + "X").c_str(), KEY_ALL_ACCESS), ERROR_SUCCESS);
    return key;
}

std::string HexValue(DWORD type, const std::u16string& characters, bool isOdd = false) {
    std::string line = "\"UpperBindings\"=hex(" + std::to_string(type) + "):";
    auto bytes = Value(type, characters).second;
    if (isOdd) bytes.pop_back();
    for (const BYTE byte : bytes) {
        const char digits[] = "0123456789abcdef";
        line += {digits[byte / 16], digits[byte % 16], ','};
    }
    if (line.ends_with(',')) line.pop_back();
    return line;
}

TEST(MuxRegistry, BindingsArePutInFrontAndTakenOut) {
    const std::u16string a = kName + kZ;
    const std::u16string b = u"\\Device\\{B}" + kZ;
    const std::u16string lower = u"\\dEVICE\\{a}" + kZ;
    const struct {
        const char* reason;
        std::string line;  // of the value; empty: there is none
        LONG added;
        std::u16string withName;
        LONG removed;
        std::u16string without;  // empty: no value
    } rows[] = {
        {"absent", "", 0, a + kZ, 2, u""},
        {"no data", HexValue(7, u""), 0, a + kZ, 0, u""},
        {"another", HexValue(7, b + kZ), 0, a + b + kZ, 0, b + kZ},
        {"there already", HexValue(7, b + a + kZ), 0, a + b + a + kZ, 0, b + kZ},
        {"in another case", HexValue(7, lower + b + lower + kZ), 0, a + lower + b + lower + kZ, 0,
         b + kZ},
        {"alone", HexValue(7, a + kZ), 0, a + a + kZ, 0, u""},
        {"no end of the list", HexValue(7, b + a), 0, a + b + a, 0, b + kZ},
        {"no end of the text", HexValue(7, b + kName), 0, a + b + kName, 0, b + kZ},
        {"data behind the end", HexValue(7, a + b + kZ + a + kZ), 0, a + a + b + kZ + a + kZ, 0,
         b + std::u16string(a.size() + 2, 0)},
        {"not there, without an end", HexValue(7, b), 0, a + b, 0, b},
        {"of another type", HexValue(1, b), 0, a + b, 0, b},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.reason);
        const auto sample = Sample().With(kTree + "X", row.line);
        const auto value = [](const LayerMachine& test) {
            const auto bytes = test.Entry(u"X", u"UpperBindings");
            return bytes ? bytes->second : std::vector<BYTE>();
        };
        {
            LayerMachine test(sample);
            EXPECT_EQ(HrPrependUpperBinding(EntryKey(), kName), row.added);
            EXPECT_EQ(value(test), Value(7, row.withName).second);
            EXPECT_EQ(test.Entry(u"X", u"UpperBindings")->first, DWORD{REG_MULTI_SZ});
        }
        LayerMachine test(sample);
        EXPECT_EQ(HrRemoveUpperBinding(EntryKey(), kName), row.removed);
        EXPECT_EQ(value(test), Value(7, row.without).second);
    }
    LayerMachine odd(Sample().With(kTree + "X", HexValue(7, u"\\Device\\{A}xy", true)));
    EXPECT_EQ(HrRemoveUpperBinding(EntryKey(), u"\\Device\\{A}xy"), 0);
    EXPECT_FALSE(odd.Entry(u"X", u"UpperBindings"));
}

TEST(MuxRegistry, AFailureLeavesTheListAsItWas) {
    const auto before = Value(7, kName + kZ + kZ);
    const struct {
        std::string fault;
        LONG prepended;
        LONG removed;
    } rows[] = {
        {"RegQueryValueExW=5,1", 5, 5}, {"RegQueryValueExW=5,2", 5, 5},
        {"operator new=8,1", 8, 8},     {"operator new=8,2", 8, 8},
        {"RegSetValueExW=5,1", 5, 0},   {"RegDeleteValueW=5,1", 0, 5},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.fault << row.prepended);
        for (const bool prepends : {true, false}) {
            LayerMachine test(Sample().With(kTree + "X", HexValue(7, kName + kZ + kZ)));
            const RegistryKey key = EntryKey();
            test.Fail(row.fault);
            const LONG expected = prepends ? row.prepended : row.removed;
            EXPECT_EQ(
                prepends ? HrPrependUpperBinding(key, kName) : HrRemoveUpperBinding(key, kName),
                expected);
            if (expected != 0) {
                EXPECT_EQ(test.Entry(u"X", u"UpperBindings"), before);
            }
        }
    }
}

TEST(MuxRegistry, DeviceNamesAreMadeAndTakenApart) {
    LayerMachine test;
    EXPECT_EQ(MakeDeviceName(kA.c_str()).get(), u"\\Device\\" + kA);
    EXPECT_EQ(GuidStringFromDeviceName(u"\\Device\\{A}"), std::u16string(u"{A}"));
    EXPECT_EQ(GuidStringFromDeviceName(u"\\"), std::u16string());
    EXPECT_EQ(GuidStringFromDeviceName(u"{A}"), nullptr);
    test.Fail("operator new=8");
    EXPECT_EQ(MakeDeviceName(kA.c_str()), nullptr);
}

TEST(MuxRegistry, ListsFindTheNewestFirst) {
    constexpr HRESULT kNone = R(0x80070490);
    LayerMachine test;
    List<int, GUID> list;
    int item = 0;
    EXPECT_EQ(list.RemoveFirst(item), kNone);
    for (const int number : {1, 2, 3, 2})
        EXPECT_EQ(list.Insert(10 * number, GUID{static_cast<DWORD>(number), 0, 0, {}}), S_OK);
    EXPECT_EQ(list.Find(1, item), S_OK);
    EXPECT_EQ(item, 30);
    EXPECT_EQ(list.Find(4, item), kNone);
    EXPECT_EQ(list.Remove(GUID{2, 0, 0, {}}, &item), S_OK);
    EXPECT_EQ(list.Remove(GUID{9, 0, 0, {}}), kNone);
    std::string all;
    for (const int each : list)
        all += std::to_string(each) + " ";
    EXPECT_EQ(all, "30 20 10 ");
    test.Fail("operator new=8");
    EXPECT_EQ(list.Insert(4, GUID{}), R(0x80070008));
    EXPECT_EQ(list.Count(), 3U);
}

}  // namespace
