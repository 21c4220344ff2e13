#pragma once
// Queries of the adapter's miniport driver through its device object. Any thread.

#include <windows.h>

// Asks for an object identifier. `deviceName` is the adapter's GUID text, `size` the buffer's
// bytes,
// `*returned` the bytes of the answer. 0, or the system's error.
DWORD QueryAdapterOid(LPCWSTR deviceName, DWORD oid, void* buffer, DWORD size, DWORD* returned);
