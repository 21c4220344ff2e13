#include "BindingPath.h"

#include <algorithm>

#include "Facts.h"
#include "Text.h"

namespace platform {

std::optional<BindingPath> ParseBindingPath(std::basic_string_view<WCHAR> value) {
    const auto fields = SplitFields(value, TEXT(';'));
    if (fields.size() != 2) return std::nullopt;
    BindingPath path;
    path.uppers = SplitFields(fields[0], TEXT(','));
    path.isEnabled = EqualNoCase(fields[1], kPathEnabled);
    const bool isForm = !path.uppers.empty() &&
                        std::ranges::none_of(path.uppers, &std::basic_string<WCHAR>::empty) &&
                        (path.isEnabled || EqualNoCase(fields[1], kPathDisabled));
    return isForm ? std::optional(path) : std::nullopt;
}

}  // namespace platform
