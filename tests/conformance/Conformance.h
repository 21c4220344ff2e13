#pragma once
// What the library relies on of Windows, as cases in plain Windows code that are compiled twice:
// into the host's unit tests, where each case runs on a fresh machine of the stand-in, and as a
// program that runs on a Windows.

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <windows.h>
#include <commctrl.h>

#include "ConformanceDialogs.h"

using Text = std::basic_string<WCHAR>;

// Where the cases of a build run. Each build has its own; it goes with the case.
struct Surroundings {
    virtual ~Surroundings() = default;
    HMODULE module = nullptr;  // has the dialogs of Conformance.rc
    Text folder;               // of the case's files, with a backslash at its end
};
std::unique_ptr<Surroundings> MakeSurroundings();

class Conformance : public testing::Test {
  protected:
    Conformance();
    ~Conformance() override;

    // A file of that name with these bytes, deleted with the case; gives its path.
    Text Put(const WCHAR* name, const std::string& bytes);

    const std::unique_ptr<Surroundings> here = MakeSurroundings();
    HKEY scratch = nullptr;  // HKEY_CURRENT_USER\Software\Conformance, empty; deleted with the case
    static constexpr const WCHAR* kScratch = TEXT("Software\\Conformance");
};

// The error of a call that failed; 0 of one that gave TRUE or a handle.
template <class Result>
DWORD ErrorOf(Result result) {
    return result ? 0 : GetLastError();
}

// A thread at work. The owner waits for its end.
class Worker {
  public:
    explicit Worker(std::function<void()> work);
    ~Worker();
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

  private:
    static DWORD WINAPI Body(LPVOID work);
    const std::function<void()> m_work;
    const HANDLE m_thread;
};

// A dialog of Conformance.rc, which asks `on` about each message.
class DialogCase : public Conformance {
  protected:
    using Handler = std::function<INT_PTR(HWND, UINT, WPARAM, LPARAM)>;
    DialogCase();
    ~DialogCase() override;

    // Makes a dialog; it is destroyed with the case.
    HWND Open(int id, HWND owner = nullptr);
    HWND Item(int id) const { return GetDlgItem(dialog, id); }
    LRESULT Send(int id, UINT message, WPARAM wParam = 0, LPARAM lParam = 0) const;
    LRESULT Send(int id, UINT message, WPARAM wParam, const void* pointer) const {
        return Send(id, message, wParam, reinterpret_cast<LPARAM>(pointer));
    }
    static Text TextOf(HWND window);
    static INT_PTR CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

    HWND dialog = nullptr;  // the last one
    Handler on;             // may be empty

  private:
    static inline DialogCase* s_case = nullptr;
    std::vector<HWND> m_windows;
};
