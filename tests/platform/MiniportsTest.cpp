// Queries of a network adapter's driver through its device object.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <windows.h>

#include "FactsMachine.h"

namespace {

constexpr DWORD kQueryGlobalStats = 0x170002;
constexpr char16_t kDevice[] = u"\\\\.\\{11111111-2222-3333-4444-555555555555}";

std::string Answers(const std::string& values) {
    return FactLines("Miniports\\{11111111-2222-3333-4444-555555555555}", values);
}

HANDLE Open(const char16_t* path) {
    return CreateFileW(path, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
}

struct Outcome {
    DWORD error;
    std::vector<BYTE> bytes;
    bool operator==(const Outcome&) const = default;
};

Outcome Ask(HANDLE device, DWORD oid, DWORD capacity, DWORD code = kQueryGlobalStats,
            DWORD inputSize = sizeof(DWORD)) {
    std::vector<BYTE> buffer(capacity + 1, 0xEE);
    DWORD returned = 77;
    const BOOL ok =
        DeviceIoControl(device, code, &oid, inputSize, buffer.data(), capacity, &returned, nullptr);
    EXPECT_EQ(buffer[capacity], 0xEE) << "behind the buffer";
    EXPECT_TRUE(ok || returned == 0);
    return {ok ? 0 : GetLastError(), {buffer.begin(), buffer.begin() + returned}};
}

TEST(Miniports, AnswerFromTheirFacts) {
    FactsMachine machine(Answers("\"0xffa0c915\"=hex:01,02,03\n\"0x10208\"=hex:\n\"text\"=hex:09"));
    const struct {
        DWORD oid;
        DWORD capacity;
        Outcome outcome;
        const char* reason;
    } cases[] = {
        {0xFFA0C915, 3, {0, {1, 2, 3}}, "as large as the buffer"},
        {0xFFA0C915, 8, {0, {1, 2, 3}}, "shorter than the buffer"},
        {0xFFA0C915, 2, {ERROR_INSUFFICIENT_BUFFER, {}}, "longer than the buffer"},
        {0xFFA0C915, 0, {ERROR_INSUFFICIENT_BUFFER, {}}, "no buffer"},
        {0x00010208, 8, {0, {}}, "an empty answer, its number written shorter"},
        {0x01010101, 8, {ERROR_NOT_SUPPORTED, {}}, "no answer"},
    };
    const HANDLE device = Open(kDevice);
    ASSERT_NE(device, INVALID_HANDLE_VALUE);
    for (const auto& c : cases) {
        SCOPED_TRACE(c.reason);
        EXPECT_EQ(Ask(device, c.oid, c.capacity), c.outcome);
    }
    machine.Merge(Answers("\"0xFFA0C915\"=hex:07"));
    EXPECT_EQ(Ask(device, 0xFFA0C915, 8), (Outcome{0, {7}})) << "as the facts are now";
    CloseHandle(device);
}

TEST(Miniports, OpenOnlyWhereADriverHasTheName) {
    FactsMachine machine(Answers(""));
    for (const char16_t* path : {u"\\\\.\\", u"\\\\.\\{00000000-0000-0000-0000-000000000000}",
                                 u"\\\\.\\{11111111-2222-3333-4444-555555555555}\\x",
                                 u"\\\\.\\..\\Miniports", u"\\\\.\\C:"}) {
        EXPECT_EQ(Open(path), INVALID_HANDLE_VALUE);
        EXPECT_EQ(GetLastError(), DWORD{ERROR_FILE_NOT_FOUND});
    }
}

}  // namespace
