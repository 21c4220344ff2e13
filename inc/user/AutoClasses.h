#pragma once
// Owners of handles, references and blocks. Each closes what it holds when it goes, and nothing
// else closes it. Not for use by two threads at a time.

#include <windows.h>
#include <objbase.h>
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

// A block that a COM interface has handed out.
template <class T>
struct TaskMemoryTraits {
    using Handle = T*;
    static constexpr Handle none = nullptr;
    static void Close(Handle block) { CoTaskMemFree(block); }
};
template <class T>
using ScopedTaskMemory = Scoped<TaskMemoryTraits<T>>;

// Ownership of a mutex that a wait has given; released when the owner goes. Not the handle.
struct MutexOwnershipTraits {
    using Handle = HANDLE;
    static constexpr Handle none = nullptr;
    static void Close(Handle mutex) {
        CheckClosed(ReleaseMutex(mutex) ? ERROR_SUCCESS : static_cast<LONG>(GetLastError()));
    }
};
using ScopedMutexOwnership = Scoped<MutexOwnershipTraits>;

// A reference to a COM object, released when the owner goes. A copy is a reference of its own.
template <class T>
struct ReferenceTraits {
    using Handle = T*;
    static constexpr Handle none = nullptr;
    static void Close(Handle object) { object->Release(); }
};
template <class T>
class ScopedReference : public Scoped<ReferenceTraits<T>> {
  public:
    using Base = Scoped<ReferenceTraits<T>>;

    ScopedReference() = default;
    // Takes over a reference.
    explicit ScopedReference(T* object) : Base(object) {}
    ScopedReference(ScopedReference&&) noexcept = default;
    ScopedReference& operator=(ScopedReference&&) noexcept = default;
    ScopedReference(const ScopedReference& other) : Base(other.Get()) {
        if (other) other->AddRef();
    }
    ScopedReference& operator=(const ScopedReference& other) {
        return *this = ScopedReference(other);
    }
    ~ScopedReference() = default;

    T* operator->() const { return this->Get(); }
    // Asks the object for another interface. A failure leaves `other` null.
    template <class Other>
    HRESULT Query(REFIID id, ScopedReference<Other>& other) const {
        return this->Get()->QueryInterface(id, reinterpret_cast<void**>(other.Receive()));
    }
};

// COM on the thread that made it, which also ends it. Uninitialises only what it has initialised
// itself: not where the thread had COM before.
class ScopedCom {
  public:
    ScopedCom() = default;
    ScopedCom(const ScopedCom&) = delete;
    ScopedCom& operator=(const ScopedCom&) = delete;
    ~ScopedCom() {
        if (m_isOwed) CoUninitialize();
    }

    // Whether COM can be used: also when it was initialised before, in whatever way.
    HRESULT Initialise() {
        const HRESULT result = CoInitialize(nullptr);
        if (result == S_OK) m_isOwed = true;
        return result == RPC_E_CHANGED_MODE ? S_FALSE : result;
    }

  private:
    bool m_isOwed = false;
};
