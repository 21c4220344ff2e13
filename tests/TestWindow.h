#pragma once
// A top-level window of some class, for a test that needs one and no dialog.

#include <gtest/gtest.h>

#include <string>

#include <winuser.h>

#include "Call.h"
#include "Desktop.h"

class TestWindow {
  public:
    TestWindow(const char16_t* className, DWORD style) {
        const platform::QuietScope quiet;
        platform::Creation creation;
        creation.className = className;
        creation.style = WS_POPUP | style;
        m_handle = platform::TheDesktop().Create(creation);
        EXPECT_NE(m_handle, nullptr);
    }
    ~TestWindow() {
        const platform::QuietScope quiet;
        platform::TheDesktop().Destroy(m_handle);
    }
    TestWindow(const TestWindow&) = delete;
    TestWindow& operator=(const TestWindow&) = delete;

    HWND Handle() const { return m_handle; }
    void SetText(const char16_t* text) const {
        const platform::QuietScope quiet;
        SetWindowTextW(m_handle, text);
    }
    std::u16string Text() const {
        const platform::QuietScope quiet;
        std::u16string text(static_cast<std::size_t>(GetWindowTextLengthW(m_handle)) + 1, u'\0');
        GetWindowTextW(m_handle, text.data(), static_cast<int>(text.size()));
        text.pop_back();
        return text;
    }

  private:
    HWND m_handle;
};
