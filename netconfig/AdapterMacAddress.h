#pragma once
// The address of an adapter, as the system's interface table has it.

#include <windows.h>

// Copies the current address of the adapter to `buffer`, which has room for `*length` bytes;
// `*length` becomes the address's own length. 0x80070490 when the table doesn't have the adapter,
// 0x8007007A when the address is longer than the buffer.
HRESULT GetAdapterMacAddress(DWORD* length, BYTE* buffer, REFGUID guid);
