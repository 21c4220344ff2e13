#include "Commands.h"

#include <algorithm>

#include <windows.h>

#include "Call.h"
#include "Facts.h"
#include "Text.h"

using namespace platform;

namespace {

// Above it WinExec reports success.
constexpr UINT kLastFailure = 31;
constexpr UINT kStarted = 33;
constexpr UINT kMinusOne = ~UINT{0};

// What the n-th start gives, from 0 on: its field of the fact, the last one for all further.
UINT ResultOf(std::size_t n) {
    const auto text = FactText({}, TEXT("NetshResult"));
    if (!text) return kStarted;
    const std::vector<std::basic_string<WCHAR>> fields = SplitFields(*text, TEXT(','));
    if (fields.empty()) return kStarted;
    const auto result = ParseNumber(fields[std::min(n, fields.size() - 1)]);
    if (!result || *result < -1 || *result > 0x7FFFFFFF) return ERROR_INVALID_DATA;
    return static_cast<UINT>(*result);
}

}  // namespace

UINT WINAPI WinExec(LPCSTR commandLine, UINT) {
    const std::string_view line = commandLine ? commandLine : "";
    Call call("WinExec", FromUtf8(line).c_str(), ERROR_FILE_NOT_FOUND);
    if (call.Failed()) {
        const UINT result = call.With(call.Error());
        return result <= kLastFailure || result == kMinusOne ? result : kLastFailure;
    }
    Commands& commands = call.machine.Get<Commands>();
    const UINT result = ResultOf(commands.lines.size());
    commands.lines.emplace_back(line);
    return result;
}
