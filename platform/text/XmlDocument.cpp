// The XML document class of the system, as far as the in-page help needs it: a document that loads
// a file, lists of its elements by name, and the elements.

#include <utility>

#include <fileapi.h>
#include <msxml.h>

#include "XmlStubs.h"
#include "XmlTree.h"

// {2933BF80-7B36-11D2-B20E-00C04F983E60} and the ids next to it
extern const IID IID_IXMLDOMNode = {
    0x2933BF80, 0x7B36, 0x11D2, {0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60}};
extern const IID IID_IXMLDOMDocument = {
    0x2933BF81, 0x7B36, 0x11D2, {0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60}};
extern const IID IID_IXMLDOMNodeList = {
    0x2933BF82, 0x7B36, 0x11D2, {0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60}};
extern const IID IID_IXMLDOMElement = {
    0x2933BF86, 0x7B36, 0x11D2, {0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60}};

namespace platform {
namespace {

// {F5078F32-C551-11D3-89B9-0000F81FE221}
constexpr CLSID documentClass = {
    0xF5078F32, 0xC551, 0x11D3, {0x89, 0xB9, 0x00, 0x00, 0xF8, 0x1F, 0xE2, 0x21}};

constexpr auto outOfMemory = static_cast<DWORD>(E_OUTOFMEMORY);
constexpr auto unspecified = static_cast<DWORD>(E_FAIL);

using Tree = std::shared_ptr<const XmlTree>;

HRESULT GiveText(const Call& call, std::u16string_view text, BSTR* given) {
    const HRESULT begun = BeginOut(call, given, E_INVALIDARG);
    if (begun != S_OK) return begun;
    *given = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
    return *given != nullptr ? S_OK : E_OUTOFMEMORY;
}

class XmlElement final
    : public ComObject<
          ComInterface<XmlElementStub, IID_IXMLDOMElement, IID_IXMLDOMNode, IID_IDispatch>> {
  public:
    XmlElement(const char* call, Tree tree, std::size_t place)
        : ComObject(call), m_tree(std::move(tree)), m_place(place) {}

    HRESULT STDMETHODCALLTYPE get_nodeName(BSTR* name) override {
        const Call call("IXMLDOMNode::get_nodeName", nullptr, outOfMemory);
        return GiveText(call, m_tree->Nodes()[m_place].text, name);
    }
    HRESULT STDMETHODCALLTYPE get_text(BSTR* text) override {
        const Call call("IXMLDOMNode::get_text", nullptr, outOfMemory);
        return GiveText(call, m_tree->Text(m_place), text);
    }

  private:
    Tree m_tree;
    std::size_t m_place;
};

class XmlList final
    : public ComObject<
          ComInterface<DispatchStub<IXMLDOMNodeList>, IID_IXMLDOMNodeList, IID_IDispatch>> {
  public:
    XmlList(const char* call, Tree tree, std::vector<std::size_t> places)
        : ComObject(call), m_tree(std::move(tree)), m_places(std::move(places)) {}

    HRESULT STDMETHODCALLTYPE get_item(LONG index, IXMLDOMNode** item) override {
        const Call call("IXMLDOMNodeList::get_item", nullptr, unspecified);
        const HRESULT begun = BeginOut(call, item, E_INVALIDARG);
        if (begun != S_OK) return begun;
        if (index < 0 || static_cast<std::size_t>(index) >= m_places.size()) return S_FALSE;
        *item = new XmlElement(call.Name(), m_tree, m_places[static_cast<std::size_t>(index)]);
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE get_length(LONG* length) override {
        const Call call("IXMLDOMNodeList::get_length", nullptr, unspecified);
        const HRESULT begun = BeginOut(call, length, E_INVALIDARG);
        if (begun != S_OK) return begun;
        *length = static_cast<LONG>(m_places.size());
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE nextNode(IXMLDOMNode**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE reset() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get__newEnum(IUnknown**) override { return E_NOTIMPL; }

  private:
    Tree m_tree;
    std::vector<std::size_t> m_places;
};

// The document that stands in the file, or null: no such file, or not well-formed.
Tree ReadTree(LPCWSTR path, bool keepBlanks) {
    const HANDLE file = CreateFileW(path, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return nullptr;
    XmlReader reader(keepBlanks);
    std::string buffer(0x10000, '\0');
    DWORD read = 0;
    bool good = true;
    do {
        good = ReadFile(file, buffer.data(), static_cast<DWORD>(buffer.size()), &read, nullptr) &&
               reader.Feed(std::string_view(buffer.data(), read));
    } while (good && read != 0);
    CloseHandle(file);
    return good ? reader.Finish() : nullptr;
}

// It loads at once, doesn't validate and reads nothing else: the switches for that can only be off.
class XmlDocument final
    : public ComObject<
          ComInterface<XmlDocumentStub, IID_IXMLDOMDocument, IID_IXMLDOMNode, IID_IDispatch>> {
  public:
    explicit XmlDocument(const char* call) : ComObject(call) {}

    HRESULT STDMETHODCALLTYPE put_async(VARIANT_BOOL value) override {
        return SwitchOff("IXMLDOMDocument::put_async", value);
    }
    HRESULT STDMETHODCALLTYPE put_validateOnParse(VARIANT_BOOL value) override {
        return SwitchOff("IXMLDOMDocument::put_validateOnParse", value);
    }
    HRESULT STDMETHODCALLTYPE put_resolveExternals(VARIANT_BOOL value) override {
        return SwitchOff("IXMLDOMDocument::put_resolveExternals", value);
    }
    HRESULT STDMETHODCALLTYPE put_preserveWhiteSpace(VARIANT_BOOL value) override {
        const Call call("IXMLDOMDocument::put_preserveWhiteSpace", nullptr, unspecified);
        if (call.Failed()) return call.Result();
        m_keepBlanks = value != VARIANT_FALSE;
        return S_OK;
    }

    HRESULT STDMETHODCALLTYPE load(VARIANT source, VARIANT_BOOL* loaded) override {
        const bool isPath = source.vt == VT_BSTR && source.bstrVal != nullptr;
        const Call call("IXMLDOMDocument::load", isPath ? source.bstrVal : nullptr, unspecified);
        const HRESULT begun = BeginOut(call, loaded, E_INVALIDARG);
        if (begun != S_OK) return begun;
        if (!isPath) return E_INVALIDARG;
        m_tree = ReadTree(source.bstrVal, m_keepBlanks);
        if (m_tree == nullptr) return S_FALSE;
        *loaded = VARIANT_TRUE;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE getElementsByTagName(BSTR name, IXMLDOMNodeList** list) override {
        const Call call("IXMLDOMDocument::getElementsByTagName", name, outOfMemory);
        if (name == nullptr) return E_INVALIDARG;
        const HRESULT begun = BeginOut(call, list, E_INVALIDARG);
        if (begun != S_OK) return begun;
        std::vector<std::size_t> places;
        if (m_tree != nullptr) places = m_tree->Find(name);
        *list = new XmlList(call.Name(), m_tree, std::move(places));
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE get_documentElement(IXMLDOMElement** element) override {
        const Call call("IXMLDOMDocument::get_documentElement", nullptr, unspecified);
        const HRESULT begun = BeginOut(call, element, E_INVALIDARG);
        if (begun != S_OK) return begun;
        if (m_tree == nullptr) return S_FALSE;
        *element = new XmlElement(call.Name(), m_tree, 0);
        return S_OK;
    }

  private:
    static HRESULT SwitchOff(const char* name, VARIANT_BOOL value) {
        const Call call(name, nullptr, unspecified);
        if (call.Failed()) return call.Result();
        return value == VARIANT_FALSE ? S_OK : E_NOTIMPL;
    }

    Tree m_tree;  // null until a document is loaded
    bool m_keepBlanks = false;
};

HRESULT CreateDocument(REFIID id, void** object) {
    return HandOut(new XmlDocument("CoCreateInstance"), id, object);
}

const ComClass registered(documentClass, &CreateDocument);

}  // namespace

}  // namespace platform
