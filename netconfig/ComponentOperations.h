#pragma once
// Small operations on one network component, each in an engine session of its own. The calling
// thread has COM initialised. guid: the component's instance GUID as text, in braces.

#include <windows.h>
#include <cstddef>

// Sets the name that is shown for the component. S_FALSE when there is no such component;
// NETCFG_E_NO_WRITE_LOCK when another program holds the lock.
HRESULT RenameComponent(LPCWSTR guid, LPCWSTR displayName);

// The device instance id of the component, into `buffer` of `capacity` characters, which stays as
// it is when none is found.
void GetAdapterDevNodeId(LPCWSTR guid, LPWSTR buffer, size_t capacity);
template <size_t N>
void GetAdapterDevNodeId(LPCWSTR guid, WCHAR (&buffer)[N]) {
    GetAdapterDevNodeId(guid, buffer, N);
}

// Whether the component exists and its device has a status.
bool IsComponentUsable(LPCWSTR guid);
