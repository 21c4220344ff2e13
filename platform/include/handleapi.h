#pragma once
// Handles of kernel objects.

#include <minwindef.h>

#define INVALID_HANDLE_VALUE (reinterpret_cast<HANDLE>(static_cast<LONG_PTR>(-1)))

BOOL WINAPI CloseHandle(HANDLE object);
