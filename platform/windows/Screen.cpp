// The screen: 96 dots an inch, and nothing to see.

#include <windows.h>

#include <map>

#include "Call.h"

using namespace platform;

namespace {

constexpr const char* kKind = "device context";
constexpr int kDotsPerInch = 96;

struct Contexts : Part {
    std::map<HDC, std::unique_ptr<char>> open;
};

}  // namespace

// The whole screen's alone.
HDC WINAPI GetDC(HWND window) {
    Call call("GetDC");
    if (call.Failed() || window != nullptr) return nullptr;
    auto context = std::make_unique<char>();
    const HDC handle = reinterpret_cast<HDC>(context.get());
    call.machine.Get<Contexts>().open.emplace(handle, std::move(context));
    call.machine.ledger.Enter(kKind, handle, call.Name());
    return handle;
}

int WINAPI ReleaseDC(HWND, HDC context) {
    Call call("ReleaseDC");
    if (!call.machine.ledger.Strike(kKind, context)) return 0;
    call.machine.Get<Contexts>().open.erase(context);
    return 1;
}

int WINAPI GetDeviceCaps(HDC context, int index) {
    Call call("GetDeviceCaps");
    if (call.Failed() || !call.machine.Get<Contexts>().open.contains(context)) return 0;
    return index == LOGPIXELSX ? kDotsPerInch : 0;
}
