#pragma once
// The reading of a registry export, apart from what becomes of it.

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "MachineFile.h"

namespace platform {

// Receives what a file says, in its order. Each gives a message to refuse it, which ends the
// reading. Texts and data are good until the next call.
class MachineFileSink {
  public:
    using Refusal = std::optional<std::string>;

    virtual ~MachineFileSink() = default;
    // path: below the root, without empty parts; every part and the depth are within the limits.
    virtual Refusal OpenKey(RegistryRoot root, std::u16string_view path) = 0;
    // Not asked to delete a root.
    virtual Refusal DeleteKey(RegistryRoot root, std::u16string_view path) = 0;
    // In the key that was opened last; name: empty for the default value, within the limit.
    virtual Refusal SetValue(std::u16string_view name, DWORD type, std::span<const BYTE> data) = 0;
    virtual Refusal DeleteValue(std::u16string_view name) = 0;
};

// Reads it through; gives the first thing that is wrong with it.
std::optional<MachineFileError> ReadMachineFile(std::string_view bytes, MachineFileSink& sink);

}  // namespace platform
