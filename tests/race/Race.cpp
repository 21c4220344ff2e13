// A program with a race that the thread sanitizer must find, though only one thread ever runs at a
// time; with the argument "guarded", the same without the race, of which it must say nothing.

#include <windows.h>

#include <cstring>

#include "Machine.h"

namespace {

struct Work {
    HANDLE mutex;  // null: nothing guards the number
    int number = 0;
};

void Count(Work& work) {
    for (int i = 0; i < 100; ++i) {
        if (work.mutex) WaitForSingleObject(work.mutex, INFINITE);
        ++work.number;
        if (work.mutex) ReleaseMutex(work.mutex);
        Sleep(0);  // where the other may go on
    }
}

DWORD WINAPI Body(LPVOID work) {
    Count(*static_cast<Work*>(work));
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    const bool guarded = argc > 1 && std::strcmp(argv[1], "guarded") == 0;
    platform::Machine machine(1);
    Work work{guarded ? CreateMutexW(nullptr, FALSE, nullptr) : nullptr};
    const HANDLE thread = CreateThread(nullptr, 0, Body, &work, 0, nullptr);
    Count(work);
    WaitForSingleObject(thread, INFINITE);
    CloseHandle(thread);
    if (guarded) CloseHandle(work.mutex);
    return work.number == 200 ? 0 : 1;
}
