#pragma once
// The one place through which a tab's commands do what may take long: changes of the network
// configuration, installations, restarts of devices.

#include <windows.h>
#include <type_traits>

// Does the work and returns when it is done. work: touches no window and shows no box. window: of
// the tab or dialog whose command it is.
void RunLongWork(HWND window, void (*work)(void* argument), void* argument);

// The same for a callable without arguments, whose result it gives.
template <class Work>
std::invoke_result_t<Work&> RunLongWork(HWND window, Work work) {
    using Result = std::invoke_result_t<Work&>;
    if constexpr (std::is_void_v<Result>) {
        RunLongWork(
            window, [](void* argument) { (*static_cast<Work*>(argument))(); }, &work);
    } else {
        struct {
            Work& work;
            Result result;
        } call = {work, {}};
        RunLongWork(
            window,
            [](void* argument) {
                auto& made = *static_cast<decltype(call)*>(argument);
                made.result = made.work();
            },
            &call);
        return call.result;
    }
}
