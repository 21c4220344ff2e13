#pragma once
// Shows the wait cursor as long as it lives.

#include <windows.h>

class WaitCursor {
  public:
    WaitCursor() : m_previous(SetCursor(LoadCursorW(nullptr, IDC_WAIT))) {}
    ~WaitCursor() { SetCursor(m_previous); }
    WaitCursor(const WaitCursor&) = delete;
    WaitCursor& operator=(const WaitCursor&) = delete;

  private:
    HCURSOR m_previous;
};
