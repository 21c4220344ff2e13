#pragma once
// What makes one registry of another, as a machine file.

#include <optional>
#include <string>
#include <string_view>

#include "RegistryTree.h"

namespace platform {

// The text of a machine file (UTF-8, LF) that, merged into the first registry, makes the second of
// it: keys, values, their types, the case of names and the order of values. The header alone when
// they don't differ. Keys stand in the order of their names, a deleted one without what was in it.
// Nothing when a name that it has to mention can't be written in a text to be printed, since the
// format has no escapes: one with half a surrogate pair or a control character. A link that only
// the second has isn't made. leftOut: the path, with the root's name, of a key that counts on
// neither side, with all below it.
std::optional<std::string> FormatChanges(const RegistryTree& from, const RegistryTree& to,
                                         std::u16string_view leftOut);

}  // namespace platform
