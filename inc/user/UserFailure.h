#pragma once
// A failure that the user is told of by whoever can show it.

#include <windows.h>

struct UserFailure {
    UINT message = 0;  // id of the message table; 0: no failure
    DWORD error = 0;   // the system's error, for the message's %1

    explicit operator bool() const { return message != 0; }
};
