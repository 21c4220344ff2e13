#pragma once
// Owners of handles, references and blocks. Each closes what it holds when it goes, and nothing
// else closes it. Not for use by two threads at a time.

#include <windows.h>
#include <oleauto.h>
#include <setupapi.h>
#include <cassert>

#include "Diagnostics.h"

// A failed close is a programming error: it ends a debug build, a release build notes it.
inline void CheckClosed(LONG win32Status) {
    assert(win32Status == ERROR_SUCCESS);
    if (win32Status != ERROR_SUCCESS)
        PrintError("close failed: %d\n", static_cast<int>(win32Status));
}

// Owns one handle. Traits name the handle's type, the value that stands for none, and the closer.
template <class Traits>
class Scoped {
  public:
    using Handle = typename Traits::Handle;

    Scoped() = default;
    explicit Scoped(Handle handle) : m_handle(handle) {}
    Scoped(Scoped&& other) noexcept : m_handle(other.Release()) {}
    Scoped& operator=(Scoped&& other) noexcept {
        if (this != &other) Reset(other.Release());
        return *this;
    }
    Scoped(const Scoped&) = delete;
    Scoped& operator=(const Scoped&) = delete;
    ~Scoped() { Reset(); }

    Handle Get() const { return m_handle; }
    explicit operator bool() const { return m_handle != Traits::none; }
    // Closes what is held and takes over the handle.
    void Reset(Handle handle = Traits::none) {
        const Handle old = m_handle;
        m_handle = handle;
        if (old != Traits::none) Traits::Close(old);
    }
    // Gives the handle away.
    [[nodiscard]] Handle Release() {
        const Handle handle = m_handle;
        m_handle = Traits::none;
        return handle;
    }
    // For an out parameter: closes what is held, and owns what is stored there.
    Handle* Receive() {
        Reset();
        return &m_handle;
    }

  private:
    Handle m_handle = Traits::none;
};

struct RegKeyTraits {
    using Handle = HKEY;
    static constexpr Handle none = nullptr;
    static void Close(Handle key) { CheckClosed(RegCloseKey(key)); }
};
using ScopedRegKey = Scoped<RegKeyTraits>;

struct FileTraits {
    using Handle = HANDLE;
    static inline const Handle none = INVALID_HANDLE_VALUE;
    static void Close(Handle file) {
        CheckClosed(CloseHandle(file) ? ERROR_SUCCESS : static_cast<LONG>(GetLastError()));
    }
};
using ScopedFile = Scoped<FileTraits>;

// For the kernel objects whose "none" is null: threads, events, mutexes, tokens.
struct KernelHandleTraits {
    using Handle = HANDLE;
    static constexpr Handle none = nullptr;
    static void Close(Handle handle) { FileTraits::Close(handle); }
};
using ScopedHandle = Scoped<KernelHandleTraits>;

struct ScreenTraits {
    using Handle = HDC;
    static constexpr Handle none = nullptr;
    static void Close(Handle context) {
        CheckClosed(ReleaseDC(nullptr, context) ? ERROR_SUCCESS : ERROR_INVALID_HANDLE);
    }
};
// The screen's device context.
using ScopedScreen = Scoped<ScreenTraits>;

struct ModuleTraits {
    using Handle = HMODULE;
    static constexpr Handle none = nullptr;
    static void Close(Handle module) {
        CheckClosed(FreeLibrary(module) ? ERROR_SUCCESS : static_cast<LONG>(GetLastError()));
    }
};
using ScopedModule = Scoped<ModuleTraits>;

struct BstrTraits {
    using Handle = BSTR;
    static constexpr Handle none = nullptr;
    static void Close(Handle text) { SysFreeString(text); }
};
// A counted string.
using ScopedBstr = Scoped<BstrTraits>;

struct DeviceInfoListTraits {
    using Handle = HDEVINFO;
    static inline const Handle none = INVALID_HANDLE_VALUE;
    static void Close(Handle list) {
        CheckClosed(SetupDiDestroyDeviceInfoList(list) ? ERROR_SUCCESS
                                                       : static_cast<LONG>(GetLastError()));
    }
};
using ScopedDeviceInfoList = Scoped<DeviceInfoListTraits>;

// A block from LocalAlloc.
template <class T>
struct LocalTraits {
    using Handle = T*;
    static constexpr Handle none = nullptr;
    static void Close(Handle block) {
        CheckClosed(LocalFree(block) == nullptr ? ERROR_SUCCESS
                                                : static_cast<LONG>(GetLastError()));
    }
};
template <class T>
using ScopedLocal = Scoped<LocalTraits<T>>;

// A reference to a COM object, released when the owner goes.
template <class T>
struct ReferenceTraits {
    using Handle = T*;
    static constexpr Handle none = nullptr;
    static void Close(Handle object) { object->Release(); }
};
template <class T>
class ScopedReference : public Scoped<ReferenceTraits<T>> {
  public:
    using Scoped<ReferenceTraits<T>>::Scoped;
    T* operator->() const { return this->Get(); }
};
