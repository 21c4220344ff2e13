#include "HelpDocument.h"

#include <utility>

#include "RegistryKey.h"
#include "RegistryPaths.h"

#include <strsafe.h>

namespace {

// The DOMDocument class of MSXML 3. The header's own constant names the version-independent class.
constexpr CLSID kDomDocument3 = {
    0xF5078F32, 0xC551, 0x11D3, {0x89, 0xB9, 0x00, 0x00, 0xF8, 0x1F, 0xE2, 0x21}};

constexpr WCHAR kHelpFile[] = TEXT("Documentation\\help.xml");

// The path of the help file. Null when it isn't known, or when memory runs out: the library also
// loads without its help.
ScopedBstr FindHelpFile() {
    RegistryKey key;
    // One more than the value's limit, for the terminator that it may lack.
    WCHAR directory[MAX_PATH + 1];
    if (key.Open(TEXT("SOFTWARE\\Corvanta\\"), KEY_READ) != ERROR_SUCCESS ||
        key.ReadText(kInstalledPath, directory, MAX_PATH * sizeof(WCHAR)) != ERROR_SUCCESS)
        return {};
    WCHAR path[ARRAYSIZE(directory) + ARRAYSIZE(kHelpFile)];
    if (FAILED(StringCchPrintfW(path, ARRAYSIZE(path), TEXT("%s%s"), directory, kHelpFile)))
        return {};
    return ScopedBstr(SysAllocString(path));
}

bool ReadDocument(IXMLDOMDocument* document, const ScopedBstr& path) {
    VARIANT source = {};
    source.vt = VT_BSTR;
    source.bstrVal = path.Get();
    VARIANT_BOOL loaded = VARIANT_FALSE;
    return SUCCEEDED(document->load(source, &loaded)) && loaded != VARIANT_FALSE;
}

}  // namespace

void LoadHelpDocument(HelpDocument& help) {
    if (FAILED(help.com.Initialise())) return;

    ScopedReference<IXMLDOMDocument> document;
    if (FAILED(CoCreateInstance(kDomDocument3, nullptr, CLSCTX_INPROC_SERVER, IID_IXMLDOMDocument,
                                reinterpret_cast<void**>(document.Receive()))))
        return;
    document->put_async(VARIANT_FALSE);
    document->put_validateOnParse(VARIANT_FALSE);
    document->put_resolveExternals(VARIANT_FALSE);
    document->put_preserveWhiteSpace(VARIANT_FALSE);

    const ScopedBstr path = FindHelpFile();
    if (path && ReadDocument(document.Get(), path)) help.document = std::move(document);
}
