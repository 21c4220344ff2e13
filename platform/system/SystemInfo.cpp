// The system's version, clock and directories.

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

#include <windows.h>

#include "IbAccessLayer.h"
#include "Call.h"
#include "Facts.h"
#include "Text.h"

using namespace platform;

namespace {

constexpr const WCHAR* kCurrentVersion = TEXT("SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion");
constexpr const WCHAR* kProductOptions = TEXT("SYSTEM\\CurrentControlSet\\Control\\ProductOptions");
constexpr DWORD kPlatformNt = 2;
constexpr std::u16string_view kWindowsDirectory = u"C:\\Windows";

struct Version {
    DWORD major = 6;
    DWORD minor = 2;
};

// "6.2", with whatever further fields.
std::optional<Version> ParseVersion(const std::u16string& text) {
    const std::vector<std::u16string> fields = SplitFields(text, TEXT('.'));
    if (fields.size() < 2) return std::nullopt;
    const auto major = ParseNumber(fields[0]);
    const auto minor = ParseNumber(fields[1]);
    const auto fits = [](const std::optional<long long>& number) {
        return number && *number >= 0 && *number <= 0xFFFF;
    };
    if (!fits(major) || !fits(minor)) return std::nullopt;
    return Version{static_cast<DWORD>(*major), static_cast<DWORD>(*minor)};
}

// Nothing when the text that counts can't be read.
std::optional<Version> CurrentVersion() {
    if (const auto text = FactText({}, TEXT("Version"))) return ParseVersion(*text);
    if (const auto major = MachineNumber(kCurrentVersion, TEXT("CurrentMajorVersionNumber"))) {
        const auto minor = MachineNumber(kCurrentVersion, TEXT("CurrentMinorVersionNumber"));
        return Version{*major, minor.value_or(0)};
    }
    if (const auto text = MachineText(kCurrentVersion, TEXT("CurrentVersion")))
        return ParseVersion(*text);
    return Version{};
}

DWORD CurrentBuild() {
    const auto text = MachineText(kCurrentVersion, TEXT("CurrentBuildNumber"));
    const auto number = text ? ParseNumber(*text) : std::nullopt;
    return number && *number >= 0 && *number <= 0xFFFFFFFF ? static_cast<DWORD>(*number) : 0;
}

BYTE ProductType() {
    if (const auto type = FactNumber({}, TEXT("ProductType"))) {
        const bool isKnown = *type == VER_NT_WORKSTATION || *type == VER_NT_DOMAIN_CONTROLLER;
        return isKnown ? static_cast<BYTE>(*type) : BYTE{VER_NT_SERVER};
    }
    const auto text = MachineText(kProductOptions, TEXT("ProductType"));
    if (text && EqualNoCase(*text, TEXT("LanmanNT"))) return VER_NT_DOMAIN_CONTROLLER;
    if (text && EqualNoCase(*text, TEXT("ServerNT"))) return VER_NT_SERVER;
    return VER_NT_WORKSTATION;
}

// Milliseconds since the machine's start, with what has been measured meanwhile.
Scheduler::Milliseconds LookAtClock(const Call& call) {
    LookAtDoorbells();
    return call.machine.scheduler.Now();
}

SYSTEMTIME ToSystemTime(std::uint64_t fileTime) {
    using namespace std::chrono;
    constexpr sys_days kStart = year{1601} / January / 1;
    const milliseconds since(fileTime / 10000);
    const days whole = floor<days>(since);
    const year_month_day date(kStart + whole);
    const hh_mm_ss<milliseconds> time(since - whole);
    const auto word = [](auto number) { return static_cast<WORD>(number); };
    return {word(static_cast<int>(date.year())),
            word(static_cast<unsigned>(date.month())),
            word(weekday(kStart + whole).c_encoding()),
            word(static_cast<unsigned>(date.day())),
            word(time.hours().count()),
            word(time.minutes().count()),
            word(time.seconds().count()),
            word(time.subseconds().count())};
}

}  // namespace

BOOL WINAPI GetVersionExW(LPOSVERSIONINFOW information) {
    Call call("GetVersionExW", nullptr, ERROR_INSUFFICIENT_BUFFER);
    if (call.Failed()) return call.With(FALSE);
    const DWORD size = information ? information->dwOSVersionInfoSize : 0;
    if (size != sizeof(OSVERSIONINFOW) && size != sizeof(OSVERSIONINFOEXW)) {
        Call::SetLast(ERROR_INSUFFICIENT_BUFFER);
        return FALSE;
    }
    const std::optional<Version> version = CurrentVersion();
    if (!version) {
        Call::SetLast(ERROR_INVALID_DATA);
        return FALSE;
    }
    *information = {size, version->major, version->minor, CurrentBuild(), kPlatformNt, {}};
    if (size == sizeof(OSVERSIONINFOEXW)) {
        auto* const extended = reinterpret_cast<OSVERSIONINFOEXW*>(information);
        extended->wServicePackMajor = 0;
        extended->wServicePackMinor = 0;
        extended->wSuiteMask = 0;
        extended->wProductType = ProductType();
        extended->wReserved = 0;
    }
    return TRUE;
}

DWORD WINAPI GetTickCount() {
    Call call("GetTickCount");
    return static_cast<DWORD>(LookAtClock(call));
}

ULONGLONG WINAPI GetTickCount64() {
    Call call("GetTickCount64");
    return LookAtClock(call);
}

void WINAPI GetLocalTime(LPSYSTEMTIME time) {
    Call call("GetLocalTime");
    LookAtClock(call);
    if (time) *time = ToSystemTime(call.machine.scheduler.LocalFileTime());
}

UINT WINAPI GetWindowsDirectoryW(LPWSTR buffer, UINT size) {
    Call call("GetWindowsDirectoryW");
    if (call.Failed()) return call.With(UINT{0});
    const auto length = static_cast<UINT>(kWindowsDirectory.size());
    if (!buffer || size <= length) return length + 1;
    kWindowsDirectory.copy(buffer, length);
    buffer[length] = u'\0';
    return length;
}
