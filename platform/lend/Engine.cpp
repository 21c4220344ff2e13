// The network configuration engine, as a class of the system's COM, and its carrier.

#include <algorithm>

#include <windows.h>
#include <objbase.h>

#include "Call.h"
#include "Clock.h"
#include "NetCfgCarrier.h"
#include "NetCfgObjects.h"
#include "Waits.h"

namespace platform {

std::uint64_t GuidSeed() {
    return Machine::Current().seed;
}

std::uint64_t EngineTime() {
    const Call call("GetTickCount");
    Clock& clock = call.machine.Get<Clock>();
    return clock.Look() - clock.start;
}

bool WaitForEngine(const char*, const std::function<bool()>& ready,
                   std::optional<std::uint64_t> due) {
    DWORD milliseconds = INFINITE;
    if (due) {
        const std::uint64_t now = EngineTime();
        milliseconds =
            static_cast<DWORD>(std::min<std::uint64_t>(*due - std::min(*due, now), INFINITE - 1));
    }
    return WaitUntil(ready, milliseconds);
}

}  // namespace platform

extern "C" HRESULT WINAPI LentCoCreateInstance(REFCLSID classId, LPUNKNOWN outer, DWORD context,
                                               REFIID id, LPVOID* object) {
    const bool isEngine = classId == CLSID_CNetCfg && (context & CLSCTX_INPROC_SERVER) != 0;
    if (!isEngine || object == nullptr)
        return CoCreateInstance(classId, outer, context, id, object);
    *object = nullptr;
    APTTYPE type = APTTYPE_CURRENT;
    APTTYPEQUALIFIER qualifier = APTTYPEQUALIFIER_NONE;
    if (FAILED(CoGetApartmentType(&type, &qualifier))) return CO_E_NOTINITIALIZED;
    if (outer != nullptr) return CLASS_E_NOAGGREGATION;
    const platform::Call call("CoCreateInstance");
    return platform::CreateNetCfg(id, object);
}
