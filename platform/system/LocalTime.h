#pragma once
// Times as a machine file writes them.

#include <cstdint>
#include <optional>
#include <string_view>

#include <windows.h>

namespace platform {

// "YYYY-MM-DD HH:MM" in 100 ns units since 1601 (FILETIME), or nothing.
std::optional<std::uint64_t> ParseTime(std::basic_string_view<WCHAR> text);

}  // namespace platform
