#pragma once
// Fixed-size types of the SDK. Pointer-sized ones are long long, as on 64-bit Windows.

using INT8 = signed char;
using UINT8 = unsigned char;
using INT16 = short;
using UINT16 = unsigned short;
using INT32 = int;
using UINT32 = unsigned int;
using INT64 = long long;
using UINT64 = unsigned long long;
using LONG32 = int;
using ULONG32 = unsigned int;
using DWORD32 = unsigned int;
using LONG64 = long long;
using ULONG64 = unsigned long long;
using DWORD64 = unsigned long long;
using INT_PTR = long long;
using UINT_PTR = unsigned long long;
using LONG_PTR = long long;
using ULONG_PTR = unsigned long long;
using DWORD_PTR = unsigned long long;
using SIZE_T = unsigned long long;
using SSIZE_T = long long;
using KAFFINITY = ULONG_PTR;
