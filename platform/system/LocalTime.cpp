#include "LocalTime.h"

#include <chrono>

namespace platform {

std::optional<std::uint64_t> ParseTime(std::basic_string_view<WCHAR> text) {
    constexpr std::basic_string_view<WCHAR> pattern = TEXT("dddd-dd-dd dd:dd");
    if (text.size() != pattern.size()) return std::nullopt;
    unsigned fields[5] = {};  // year, month, day, hour, minute
    std::size_t field = 0;
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        const bool isDigit = text[i] >= TEXT('0') && text[i] <= TEXT('9');
        if (pattern[i] == TEXT('d') ? !isDigit : text[i] != pattern[i]) return std::nullopt;
        if (isDigit) {
            fields[field] = fields[field] * 10 + (text[i] - TEXT('0'));
        } else {
            ++field;
        }
    }
    using namespace std::chrono;
    const year_month_day date(year(static_cast<int>(fields[0])), month(fields[1]), day(fields[2]));
    if (!date.ok() || fields[0] < 1601 || fields[3] > 23 || fields[4] > 59) return std::nullopt;
    const auto since1601 =
        sys_days(date) - sys_days(year(1601) / January / 1) + hours(fields[3]) + minutes(fields[4]);
    return static_cast<std::uint64_t>(duration_cast<seconds>(since1601).count()) * 10'000'000;
}

}  // namespace platform
