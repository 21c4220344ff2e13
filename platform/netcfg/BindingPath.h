#pragma once
// The form of a binding path's value: "<upper component id>,...;enabled" or ";disabled".

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <windows.h>

namespace platform {

inline constexpr WCHAR kPathEnabled[] = TEXT("enabled");
inline constexpr WCHAR kPathDisabled[] = TEXT("disabled");

struct BindingPath {
    std::basic_string<WCHAR> lower;  // the component's GUID
    std::basic_string<WCHAR> token;
    std::vector<std::basic_string<WCHAR>> uppers;  // component ids, from the top of the path down
    bool isEnabled = false;
};

// A path's value without its place, or nothing when it has another form.
std::optional<BindingPath> ParseBindingPath(std::basic_string_view<WCHAR> value);

}  // namespace platform
