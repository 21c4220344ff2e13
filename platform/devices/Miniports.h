#pragma once
// The device objects of network adapters. Their drivers answer object identifiers as the facts say.

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include <windows.h>

#include "Handles.h"

namespace platform {

class Miniport : public KernelObject {
  public:
    // path: of the key with its answers.
    explicit Miniport(std::basic_string<WCHAR> path) : m_path(std::move(path)) {}

    // DeviceIoControl for this device: gives 0 with the size of the answer, or an error.
    DWORD Control(DWORD code, const void* input, DWORD inputSize, void* output, DWORD capacity,
                  DWORD& returned) const;

  private:
    std::basic_string<WCHAR> m_path;
};

// The device of that path, which begins with `\\.\`. Null when no driver has it.
std::shared_ptr<Miniport> OpenMiniport(std::basic_string_view<WCHAR> path);
// The object identifier that a query passes, or nothing when it passes none.
std::optional<DWORD> ReadOid(const void* input, DWORD size);

}  // namespace platform
