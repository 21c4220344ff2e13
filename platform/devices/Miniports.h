#pragma once
// The device objects of network adapters. Their drivers answer object identifiers as the facts say;
// the MUX driver answers for installed teams that the facts don't describe.

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include <windows.h>

#include "Handles.h"

namespace platform {

class Miniport : public KernelObject {
  public:
    // name: the GUID string of the adapter.
    explicit Miniport(std::basic_string<WCHAR> name) : m_name(std::move(name)) {}

    // DeviceIoControl for this device: gives 0 with the size of the answer, or an error. The output
    // buffer may also hold what is asked.
    DWORD Control(DWORD code, const void* input, DWORD inputSize, void* output, DWORD capacity,
                  DWORD& returned) const;

  private:
    std::basic_string<WCHAR> m_name;
};

// The device of that path, which begins with `\\.\`. Null when no driver has it.
std::shared_ptr<Miniport> OpenMiniport(std::basic_string_view<WCHAR> path);
// The object identifier that a query passes, or nothing when it passes none.
std::optional<DWORD> ReadOid(const void* input, DWORD size);

}  // namespace platform
