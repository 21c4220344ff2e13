#pragma once
// The XML document class of the system, as far as the in-page help needs it: it loads a file and
// finds elements by name.

#include <msxml.h>

namespace platform {

// {F5078F32-C551-11D3-89B9-0000F81FE221}
inline constexpr CLSID xmlDocumentClass = {
    0xF5078F32, 0xC551, 0x11D3, {0x89, 0xB9, 0x00, 0x00, 0xF8, 0x1F, 0xE2, 0x21}};

// A new, empty document, owned by the caller; E_NOINTERFACE when it doesn't have that interface.
HRESULT CreateXmlDocument(REFIID id, void** object);

}  // namespace platform
