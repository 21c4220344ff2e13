#pragma once
// What all stand-in functions share. Each one opens with a Call, before it touches any state:
//
//     LSTATUS WINAPI RegDeleteValueW(HKEY key, LPCWSTR name) {
//         Call call("RegDeleteValueW", name);
//         if (call.Failed()) return call.Status();
//         return call.machine.Get<Registry>().DeleteValue(key, name);
//     }
//
// A call is counted (traced, liable to faults, able to pass the baton on) when the library makes
// it. It isn't when another stand-in function makes it, or the machine's user, or the program that
// plays the device manager: then the thread is in quiet mode. Whatever the stand-in calls back
// (entry point, dialog procedure, page callback, thread procedure) opens a CallbackScope, in which
// calls count again.

#include "Machine.h"

namespace platform {

class Call {
  public:
    // argument: the text that tells this call from others of its name (a value, a path), or null.
    // ordinary: the error with which it fails when a fault names none.
    explicit Call(const char* name, const WCHAR* argument = nullptr, DWORD ordinary = 31);
    ~Call();
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;

    bool Failed() const { return m_failed; }
    DWORD Error() const { return m_error; }
    // The forms in which functions give a laid-over failure.
    LSTATUS Status() const { return static_cast<LSTATUS>(m_error); }
    HRESULT Result() const;  // without its top bit an error becomes 0x8007xxxx
    // Sets the thread's last error and gives back `result`.
    template <class T>
    T With(T result) const {
        SetLast(m_error);
        return result;
    }
    const char* Name() const { return m_name; }

    // The calling thread's last error, without a call of its own.
    static void SetLast(DWORD error);
    static DWORD GetLast();

    Machine& machine;

  private:
    const char* m_name;
    bool m_failed = false;
    DWORD m_error = 0;
};

// True when calls of this thread don't count at present.
bool IsQuiet();

// Calls within don't count.
class QuietScope {
  public:
    QuietScope();
    ~QuietScope();
    QuietScope(const QuietScope&) = delete;
    QuietScope& operator=(const QuietScope&) = delete;
};

// Calls within count, whatever stands around it. Wraps every call from the stand-in into the
// library.
class CallbackScope {
  public:
    CallbackScope();
    ~CallbackScope();
    CallbackScope(const CallbackScope&) = delete;
    CallbackScope& operator=(const CallbackScope&) = delete;

  private:
    int m_saved;
};

}  // namespace platform
