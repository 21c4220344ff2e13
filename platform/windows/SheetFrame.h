#pragma once
// The frame of a property sheet: its tabs and buttons, and what it tells its pages.

#include <prsht.h>
#include <string>
#include <vector>

#include "SheetPages.h"

namespace platform {

class SheetFrame : public Window {
  public:
    // Takes the pages over.
    SheetFrame(const PROPSHEETHEADERW& header, const std::vector<HPROPSHEETPAGE>& pages);
    LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override;

    // Makes the frame's controls.
    void AddControls();
    // Makes the page active, or else the next one that can be. False when none can.
    bool Enter(int index);
    bool Closed() const { return m_closed || destroyed; }
    INT_PTR Result() const { return m_result; }
    SIZE FrameSize() const;

  private:
    struct Entry {
        HPROPSHEETPAGE page;
        HWND window = nullptr;  // once it has been shown
        bool changed = false;
    };

    int Count() const { return static_cast<int>(m_entries.size()); }
    Entry* At(WPARAM index) { return index < m_entries.size() ? &m_entries[index] : nullptr; }
    HWND ActivePage();
    int IndexOf(HPROPSHEETPAGE page) const;
    int IndexOf(HWND window) const;
    int IndexOfTemplate(LRESULT number) const;
    RECT PageRect() const;
    void AddButton(const char16_t* caption, int buttonId, int place);
    bool MakePage(int index);
    void RemovePage(int index);
    void ShowActive();
    LRESULT Tell(HWND page, UINT code, LPARAM parameter = 0) const;
    bool Select(int index);
    void MarkChanged(HWND page, bool changed);
    bool Apply(bool closing);
    void Ok();
    void Cancel(bool byFrame);
    void Close(INT_PTR result);
    void Press(WPARAM button);
    void OnButton(int button);
    void ReleasePages();

    std::vector<Entry> m_entries;
    SIZE m_pageSize = {};
    DWORD m_flags;
    HWND m_tab = nullptr;
    int m_active = -1;
    bool m_entering = false;
    bool m_saved = false;
    bool m_closed = false;
    INT_PTR m_result = 0;
};

}  // namespace platform
