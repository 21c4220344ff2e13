#pragma once
// Initialisation of COM, making of objects, task memory, and GUIDs as text.

#include <unknwn.h>

enum COINIT {
    COINIT_MULTITHREADED = 0x0,
    COINIT_APARTMENTTHREADED = 0x2,
    COINIT_DISABLE_OLE1DDE = 0x4,
    COINIT_SPEED_OVER_MEMORY = 0x8,
};

// Each but a failure is owed a CoUninitialize on the same thread.
HRESULT WINAPI CoInitialize(LPVOID reserved);
HRESULT WINAPI CoInitializeEx(LPVOID reserved, DWORD model);
void WINAPI CoUninitialize();

HRESULT WINAPI CoCreateInstance(REFCLSID classId, LPUNKNOWN outer, DWORD context,
                                REFIID interfaceId, LPVOID* object);

LPVOID WINAPI CoTaskMemAlloc(SIZE_T bytes);
void WINAPI CoTaskMemFree(LPVOID block);

// Gives the number of characters written with the terminator, or 0 when `capacity` is below 39.
int WINAPI StringFromGUID2(REFGUID guid, LPOLESTR text, int capacity);
HRESULT WINAPI CLSIDFromString(LPCOLESTR text, LPCLSID id);
