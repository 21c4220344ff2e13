// The devices of network adapters, beside the system's own devices and files. The handle of one is
// that of an object of the system, so that no other thing has the same.

#include <map>

#include <windows.h>

#include "Call.h"
#include "Miniports.h"

using namespace platform;

namespace {

struct Devices : Part {
    std::map<HANDLE, std::shared_ptr<Miniport>> open;
};

std::shared_ptr<Miniport> Find(HANDLE device) {
    const QuietScope quiet;
    const auto& open = Machine::Current().Get<Devices>().open;
    const auto found = open.find(device);
    return found == open.end() ? nullptr : found->second;
}

BOOL Finish(DWORD error) {
    if (error != ERROR_SUCCESS) Call::SetLast(error);
    return error == ERROR_SUCCESS;
}

}  // namespace

extern "C" HANDLE WINAPI LentCreateFileW(LPCWSTR path, DWORD access, DWORD shareMode,
                                         LPSECURITY_ATTRIBUTES security, DWORD disposition,
                                         DWORD flags, HANDLE model) {
    if (path != nullptr) {
        const Call call("CreateFileW", path);
        if (auto miniport = OpenMiniport(path)) {
            const HANDLE device = CreateEventW(nullptr, TRUE, FALSE, nullptr);
            if (device == nullptr) return INVALID_HANDLE_VALUE;
            call.machine.Get<Devices>().open.insert_or_assign(device, std::move(miniport));
            return device;
        }
    }
    return CreateFileW(path, access, shareMode, security, disposition, flags, model);
}

extern "C" BOOL WINAPI LentCloseHandle(HANDLE object) {
    {
        const Call call("CloseHandle");
        call.machine.Get<Devices>().open.erase(object);
    }
    return CloseHandle(object);
}

extern "C" BOOL WINAPI LentDeviceIoControl(HANDLE device, DWORD code, LPVOID input, DWORD inputSize,
                                           LPVOID output, DWORD outputSize, LPDWORD returned,
                                           LPOVERLAPPED overlapped) {
    const auto miniport = Find(device);
    if (!miniport) {
        return DeviceIoControl(device, code, input, inputSize, output, outputSize, returned,
                               overlapped);
    }
    const Call call("DeviceIoControl");
    if (!returned || overlapped || (!output && outputSize != 0))
        return Finish(ERROR_INVALID_PARAMETER);
    *returned = 0;
    return Finish(miniport->Control(code, input, inputSize, output, outputSize, *returned));
}
