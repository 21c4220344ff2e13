#pragma once
// The XML document object model, as far as the in-page help needs it. All methods stand in
// published order.

#include <oleauto.h>

struct IXMLDOMAttribute;
struct IXMLDOMCDATASection;
struct IXMLDOMComment;
struct IXMLDOMDocument;
struct IXMLDOMDocumentFragment;
struct IXMLDOMDocumentType;
struct IXMLDOMElement;
struct IXMLDOMEntityReference;
struct IXMLDOMImplementation;
struct IXMLDOMNamedNodeMap;
struct IXMLDOMNode;
struct IXMLDOMNodeList;
struct IXMLDOMParseError;
struct IXMLDOMProcessingInstruction;
struct IXMLDOMText;

enum DOMNodeType {
    NODE_INVALID,
    NODE_ELEMENT,
    NODE_ATTRIBUTE,
    NODE_TEXT,
    NODE_CDATA_SECTION,
    NODE_ENTITY_REFERENCE,
    NODE_ENTITY,
    NODE_PROCESSING_INSTRUCTION,
    NODE_COMMENT,
    NODE_DOCUMENT,
    NODE_DOCUMENT_TYPE,
    NODE_DOCUMENT_FRAGMENT,
    NODE_NOTATION,
};

extern const IID IID_IXMLDOMNode;

struct IXMLDOMNode : IDispatch {
    virtual HRESULT STDMETHODCALLTYPE get_nodeName(BSTR* name) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_nodeValue(VARIANT* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE put_nodeValue(VARIANT value) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_nodeType(DOMNodeType* type) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_parentNode(IXMLDOMNode** parent) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_childNodes(IXMLDOMNodeList** childList) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_firstChild(IXMLDOMNode** firstChild) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_lastChild(IXMLDOMNode** lastChild) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_previousSibling(IXMLDOMNode** previousSibling) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_nextSibling(IXMLDOMNode** nextSibling) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_attributes(IXMLDOMNamedNodeMap** attributeMap) = 0;
    virtual HRESULT STDMETHODCALLTYPE insertBefore(IXMLDOMNode* newChild, VARIANT refChild,
                                                   IXMLDOMNode** outNewChild) = 0;
    virtual HRESULT STDMETHODCALLTYPE replaceChild(IXMLDOMNode* newChild, IXMLDOMNode* oldChild,
                                                   IXMLDOMNode** outOldChild) = 0;
    virtual HRESULT STDMETHODCALLTYPE removeChild(IXMLDOMNode* childNode,
                                                  IXMLDOMNode** oldChild) = 0;
    virtual HRESULT STDMETHODCALLTYPE appendChild(IXMLDOMNode* newChild,
                                                  IXMLDOMNode** outNewChild) = 0;
    virtual HRESULT STDMETHODCALLTYPE hasChildNodes(VARIANT_BOOL* hasChild) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_ownerDocument(IXMLDOMDocument** DOMDocument) = 0;
    virtual HRESULT STDMETHODCALLTYPE cloneNode(VARIANT_BOOL deep, IXMLDOMNode** cloneRoot) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_nodeTypeString(BSTR* nodeType) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_text(BSTR* text) = 0;
    virtual HRESULT STDMETHODCALLTYPE put_text(BSTR text) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_specified(VARIANT_BOOL* isSpecified) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_definition(IXMLDOMNode** definitionNode) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_nodeTypedValue(VARIANT* typedValue) = 0;
    virtual HRESULT STDMETHODCALLTYPE put_nodeTypedValue(VARIANT typedValue) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_dataType(VARIANT* dataTypeName) = 0;
    virtual HRESULT STDMETHODCALLTYPE put_dataType(BSTR dataTypeName) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_xml(BSTR* xmlString) = 0;
    virtual HRESULT STDMETHODCALLTYPE transformNode(IXMLDOMNode* stylesheet, BSTR* xmlString) = 0;
    virtual HRESULT STDMETHODCALLTYPE selectNodes(BSTR queryString,
                                                  IXMLDOMNodeList** resultList) = 0;
    virtual HRESULT STDMETHODCALLTYPE selectSingleNode(BSTR queryString,
                                                       IXMLDOMNode** resultNode) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_parsed(VARIANT_BOOL* isParsed) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_namespaceURI(BSTR* namespaceURI) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_prefix(BSTR* prefixString) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_baseName(BSTR* nameString) = 0;
    virtual HRESULT STDMETHODCALLTYPE transformNodeToObject(IXMLDOMNode* stylesheet,
                                                            VARIANT outputObject) = 0;

  protected:
    ~IXMLDOMNode() = default;
};

extern const IID IID_IXMLDOMDocument;

struct IXMLDOMDocument : IXMLDOMNode {
    virtual HRESULT STDMETHODCALLTYPE get_doctype(IXMLDOMDocumentType** documentType) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_implementation(IXMLDOMImplementation** impl) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_documentElement(IXMLDOMElement** DOMElement) = 0;
    virtual HRESULT STDMETHODCALLTYPE putref_documentElement(IXMLDOMElement* DOMElement) = 0;
    virtual HRESULT STDMETHODCALLTYPE createElement(BSTR tagName, IXMLDOMElement** element) = 0;
    virtual HRESULT STDMETHODCALLTYPE createDocumentFragment(IXMLDOMDocumentFragment** docFrag) = 0;
    virtual HRESULT STDMETHODCALLTYPE createTextNode(BSTR data, IXMLDOMText** text) = 0;
    virtual HRESULT STDMETHODCALLTYPE createComment(BSTR data, IXMLDOMComment** comment) = 0;
    virtual HRESULT STDMETHODCALLTYPE createCDATASection(BSTR data,
                                                         IXMLDOMCDATASection** cdata) = 0;
    virtual HRESULT STDMETHODCALLTYPE
    createProcessingInstruction(BSTR target, BSTR data, IXMLDOMProcessingInstruction** pi) = 0;
    virtual HRESULT STDMETHODCALLTYPE createAttribute(BSTR name, IXMLDOMAttribute** attribute) = 0;
    virtual HRESULT STDMETHODCALLTYPE createEntityReference(BSTR name,
                                                            IXMLDOMEntityReference** entityRef) = 0;
    virtual HRESULT STDMETHODCALLTYPE getElementsByTagName(BSTR tagName,
                                                           IXMLDOMNodeList** resultList) = 0;
    virtual HRESULT STDMETHODCALLTYPE createNode(VARIANT Type, BSTR name, BSTR namespaceURI,
                                                 IXMLDOMNode** node) = 0;
    virtual HRESULT STDMETHODCALLTYPE nodeFromID(BSTR idString, IXMLDOMNode** node) = 0;
    virtual HRESULT STDMETHODCALLTYPE load(VARIANT xmlSource, VARIANT_BOOL* isSuccessful) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_readyState(LONG* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_parseError(IXMLDOMParseError** errorObj) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_url(BSTR* urlString) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_async(VARIANT_BOOL* isAsync) = 0;
    virtual HRESULT STDMETHODCALLTYPE put_async(VARIANT_BOOL isAsync) = 0;
    virtual HRESULT STDMETHODCALLTYPE abort() = 0;
    virtual HRESULT STDMETHODCALLTYPE loadXML(BSTR bstrXML, VARIANT_BOOL* isSuccessful) = 0;
    virtual HRESULT STDMETHODCALLTYPE save(VARIANT destination) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_validateOnParse(VARIANT_BOOL* isValidating) = 0;
    virtual HRESULT STDMETHODCALLTYPE put_validateOnParse(VARIANT_BOOL isValidating) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_resolveExternals(VARIANT_BOOL* isResolving) = 0;
    virtual HRESULT STDMETHODCALLTYPE put_resolveExternals(VARIANT_BOOL isResolving) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_preserveWhiteSpace(VARIANT_BOOL* isPreserving) = 0;
    virtual HRESULT STDMETHODCALLTYPE put_preserveWhiteSpace(VARIANT_BOOL isPreserving) = 0;
    virtual HRESULT STDMETHODCALLTYPE put_onreadystatechange(VARIANT readystatechangeSink) = 0;
    virtual HRESULT STDMETHODCALLTYPE put_ondataavailable(VARIANT ondataavailableSink) = 0;
    virtual HRESULT STDMETHODCALLTYPE put_ontransformnode(VARIANT ontransformnodeSink) = 0;

  protected:
    ~IXMLDOMDocument() = default;
};

extern const IID IID_IXMLDOMElement;

struct IXMLDOMElement : IXMLDOMNode {
    virtual HRESULT STDMETHODCALLTYPE get_tagName(BSTR* tagName) = 0;
    virtual HRESULT STDMETHODCALLTYPE getAttribute(BSTR name, VARIANT* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE setAttribute(BSTR name, VARIANT value) = 0;
    virtual HRESULT STDMETHODCALLTYPE removeAttribute(BSTR name) = 0;
    virtual HRESULT STDMETHODCALLTYPE getAttributeNode(BSTR name,
                                                       IXMLDOMAttribute** attributeNode) = 0;
    virtual HRESULT STDMETHODCALLTYPE setAttributeNode(IXMLDOMAttribute* DOMAttribute,
                                                       IXMLDOMAttribute** attributeNode) = 0;
    virtual HRESULT STDMETHODCALLTYPE removeAttributeNode(IXMLDOMAttribute* DOMAttribute,
                                                          IXMLDOMAttribute** attributeNode) = 0;
    virtual HRESULT STDMETHODCALLTYPE getElementsByTagName(BSTR tagName,
                                                           IXMLDOMNodeList** resultList) = 0;
    virtual HRESULT STDMETHODCALLTYPE normalize() = 0;

  protected:
    ~IXMLDOMElement() = default;
};

extern const IID IID_IXMLDOMNodeList;

struct IXMLDOMNodeList : IDispatch {
    virtual HRESULT STDMETHODCALLTYPE get_item(LONG index, IXMLDOMNode** listItem) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_length(LONG* listLength) = 0;
    virtual HRESULT STDMETHODCALLTYPE nextNode(IXMLDOMNode** nextItem) = 0;
    virtual HRESULT STDMETHODCALLTYPE reset() = 0;
    virtual HRESULT STDMETHODCALLTYPE get__newEnum(IUnknown** ppUnk) = 0;

  protected:
    ~IXMLDOMNodeList() = default;
};
