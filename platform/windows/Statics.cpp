// The Static class: texts and bitmaps.

#include "Desktop.h"
#include "Resources.h"

namespace platform {
namespace {

class Static : public Window {
  public:
    void OnCreate(const Creation& creation) override;
    LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override;

  private:
    LRESULT m_image = 0;
};

// The bitmap that the template names by number. What it shows is of no matter, so its resource
// stands for the bitmap's handle.
void Static::OnCreate(const Creation& creation) {
    if (!creation.textOrdinal || (style & SS_TYPEMASK) != SS_BITMAP) return;
    const Resource* bitmap = FindResourceOf(creation.instance, MAKEINTRESOURCEW(2),
                                            MAKEINTRESOURCEW(*creation.textOrdinal));
    m_image = reinterpret_cast<LRESULT>(bitmap);
}

LRESULT Static::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case STM_GETIMAGE:
            return m_image;
        case STM_SETIMAGE:
            return std::exchange(m_image, lParam);
        case WM_GETDLGCODE:
            return DLGC_STATIC;
        default:
            return Window::OnMessage(message, wParam, lParam);
    }
}

}  // namespace

void AddStaticClass(Desktop& desktop) {
    desktop.AddClass(u"Static", [] { return std::shared_ptr<Window>(new Static); });
}

}  // namespace platform
