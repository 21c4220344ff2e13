// What is asked of device objects.

#include <cstdio>

#include <windows.h>
#include <ioapiset.h>

#include "Call.h"
#include "Miniports.h"
#include "Text.h"

using namespace platform;

namespace {

std::u16string OidText(std::optional<DWORD> oid) {
    char text[11] = {};
    if (oid) std::snprintf(text, sizeof(text), "0x%08X", *oid);
    return FromUtf8(text);
}

BOOL Finish(DWORD error) {
    if (error != ERROR_SUCCESS) Call::SetLast(error);
    return error == ERROR_SUCCESS;
}

}  // namespace

// The argument for faults and traces is the object identifier, as in 0xFFA0C915.
BOOL WINAPI DeviceIoControl(HANDLE device, DWORD code, LPVOID input, DWORD inputSize, LPVOID output,
                            DWORD outputSize, LPDWORD returned, LPOVERLAPPED overlapped) {
    Call call("DeviceIoControl", OidText(ReadOid(input, inputSize)).c_str(), ERROR_GEN_FAILURE);
    if (returned) *returned = 0;
    if (call.Failed()) return call.With(FALSE);
    if (!returned || overlapped || (!output && outputSize != 0))
        return Finish(ERROR_INVALID_PARAMETER);
    const auto object = call.machine.Get<Handles>().Find(device);
    if (!object) return Finish(ERROR_INVALID_HANDLE);
    const auto miniport = std::dynamic_pointer_cast<Miniport>(object);
    return Finish(miniport
                      ? miniport->Control(code, input, inputSize, output, outputSize, *returned)
                      : DWORD{ERROR_INVALID_FUNCTION});
}
