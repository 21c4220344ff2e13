#include "Clock.h"

#include <utility>

#include "Call.h"
#include "Carrier.h"
#include "Facts.h"
#include "IbAccessLayer.h"
#include "LocalTime.h"

namespace platform {

ULONGLONG Clock::Look() {
    LookAtDoorbells();
    const ULONGLONG before = std::exchange(system, GetTickCount64());
    if (!isHeld && charged == 0) now += system - before;
    now += std::exchange(charged, 0);
    return now;
}

void ChargeClock(DWORD milliseconds) {
    Machine::Current().Get<Clock>().charged += milliseconds;
}

}  // namespace platform

using namespace platform;

extern "C" DWORD WINAPI LentGetTickCount() {
    const Call call("GetTickCount");
    return static_cast<DWORD>(call.machine.Get<Clock>().Look());
}

extern "C" void WINAPI LentGetLocalTime(LPSYSTEMTIME time) {
    const Call call("GetLocalTime");
    const auto text = FactText({}, TEXT("Time"));
    const auto start = text ? ParseTime(*text) : std::nullopt;
    if (!start) return GetLocalTime(time);
    Clock& clock = call.machine.Get<Clock>();
    ULARGE_INTEGER now;
    now.QuadPart = *start + (clock.Look() - clock.start) * 10'000;
    const FILETIME fileTime = {now.LowPart, now.HighPart};
    FileTimeToSystemTime(&fileTime, time);
}
