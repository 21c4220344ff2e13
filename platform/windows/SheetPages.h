#pragma once
// Property sheet pages, from CreatePropertySheetPageW to their release.

#include <prsht.h>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Dialogs.h"
#include "Machine.h"

namespace platform {

class SheetPage {
  public:
    // Copies the description, whose dwSize is one that IsDescription has accepted.
    explicit SheetPage(const PROPSHEETPAGEW& given);
    static bool IsDescription(const PROPSHEETPAGEW* given);

    PROPSHEETPAGEW& Data() { return *reinterpret_cast<PROPSHEETPAGEW*>(m_copy.data()); }
    const PROPSHEETPAGEW& Data() const {
        return *reinterpret_cast<const PROPSHEETPAGEW*>(m_copy.data());
    }
    // The page's dialog template, made a child; nothing when it can't be had.
    std::optional<DialogTemplate> Template() const;
    // Its own, or the template's.
    std::u16string Title() const;
    // The page's callback; 1 for a page without one.
    UINT Call(HWND window, UINT code);

  private:
    // The description as the caller gave it, with all that it appended.
    std::vector<std::uint64_t> m_copy;
    std::u16string m_templateName;
    std::u16string m_title;
};

class SheetPages : public Part {
  public:
    // Tells the page's callback that it is there.
    HPROPSHEETPAGE Add(const PROPSHEETPAGEW& given);
    // Null when there is no such page.
    std::shared_ptr<SheetPage> Find(HPROPSHEETPAGE page) const;
    // Tells the page's callback that it goes. False when there is no such page.
    bool Release(HPROPSHEETPAGE page);

    static constexpr const char* kind = "property sheet page";

  private:
    std::map<HPROPSHEETPAGE, std::shared_ptr<SheetPage>> m_pages;
};

// A text given by address, or by number from the module's strings. Empty for null.
std::u16string TextOrResource(HINSTANCE instance, const char16_t* given);

}  // namespace platform
