// The document object model over a file of the machine's drive.

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include <windows.h>
#include <msxml.h>
#include <objbase.h>

#include "Call.h"
#include "Drive.h"
#include "Machine.h"
#include "Text.h"
#include "XmlDocument.h"

using namespace platform;
using std::string_literals::operator""s;

namespace {

const WCHAR kPath[] = u"C:\\Help\\help.xml";

using Texts = std::vector<std::u16string>;

class XmlDocumentTest : public testing::Test {
  protected:
    XmlDocumentTest() {
        EXPECT_EQ(CoInitialize(nullptr), S_OK);
        void* object = nullptr;
        EXPECT_EQ(CoCreateInstance(xmlDocumentClass, nullptr, CLSCTX_INPROC_SERVER,
                                   IID_IXMLDOMDocument, &object),
                  S_OK);
        m_document = static_cast<IXMLDOMDocument*>(object);
    }
    ~XmlDocumentTest() override {
        m_document->Release();
        CoUninitialize();
        EXPECT_TRUE(m_machine.ledger.Open().empty());
    }

    // Result and success of a load of these bytes.
    std::pair<HRESULT, bool> Load(const std::string& bytes) {
        EXPECT_TRUE(m_machine.Get<Drive>().WriteWholeFile(kPath, bytes));
        return LoadPath(kPath);
    }

    std::pair<HRESULT, bool> LoadPath(const WCHAR* path) {
        VARIANT source;
        VariantInit(&source);
        source.vt = VT_BSTR;
        source.bstrVal = SysAllocString(path);
        VARIANT_BOOL loaded = VARIANT_TRUE;
        const HRESULT result = m_document->load(source, &loaded);
        VariantClear(&source);
        return {result, loaded == VARIANT_TRUE};
    }

    // The text of each element of that name.
    Texts TextsOf(const WCHAR* name) {
        Texts texts;
        IXMLDOMNodeList* list = nullptr;
        BSTR tag = SysAllocString(name);
        EXPECT_EQ(m_document->getElementsByTagName(tag, &list), S_OK);
        SysFreeString(tag);
        LONG length = 0;
        EXPECT_EQ(list->get_length(&length), S_OK);
        IXMLDOMNode* node = nullptr;
        for (LONG at = 0; at < length; ++at) {
            EXPECT_EQ(list->get_item(at, &node), S_OK);
            BSTR text = nullptr;
            EXPECT_EQ(node->get_text(&text), S_OK);
            texts.emplace_back(text, SysStringLen(text));
            SysFreeString(text);
            node->Release();
        }
        EXPECT_EQ(list->get_item(length, &node), S_FALSE);
        EXPECT_EQ(node, nullptr);
        list->Release();
        return texts;
    }

    Machine m_machine;
    IXMLDOMDocument* m_document = nullptr;
};

TEST_F(XmlDocumentTest, FindsElementsWhereverTheyStand) {
    ASSERT_EQ(Load("<help><x><Topic>one</Topic></x><topic>two</topic><Topic>three"
                   "<Topic>four</Topic></Topic></help>"),
              std::pair(S_OK, true));
    EXPECT_EQ(TextsOf(u"Topic"), (Texts{u"one", u"threefour", u"four"}));
    EXPECT_EQ(TextsOf(u"topic"), Texts{u"two"});
    EXPECT_EQ(TextsOf(u"Missing"), Texts{});
    EXPECT_EQ(TextsOf(u"*").size(), 6u);
    IXMLDOMElement* root = nullptr;
    ASSERT_EQ(m_document->get_documentElement(&root), S_OK);
    BSTR name = nullptr;
    EXPECT_EQ(root->get_nodeName(&name), S_OK);
    EXPECT_EQ(std::u16string(name), u"help");
    SysFreeString(name);
    root->Release();
}

TEST_F(XmlDocumentTest, TrimsTextAtItsEndsOnly) {
    const struct {
        std::string xml;
        std::u16string text;
        std::u16string kept;  // with preserveWhiteSpace
        const char* why;
    } cases[] = {
        {"<a>\r\n {\\rtf1 x\r\ny} \n</a>", u"{\\rtf1 x\ny}", u"\n {\\rtf1 x\ny} \n", "ends"},
        {"<a> <![CDATA[ q ]]> </a>", u" q ", u"  q  ", "a CDATA section isn't trimmed"},
        {"<a>x<!--c--> y</a>", u"x y", u"x y", "a comment isn't text"},
        {"<a> <!--c--> x</a>", u"x", u"  x", "blanks before a comment"},
        {"<a><b>x</b>\n<b>y</b></a>", u"x y", u"x\ny", "blanks between elements part them"},
        {"<a> <b> </b> </a>", u"", u"   ", "nothing but blanks"},
        {"<a>&lt;&#233;&amp;</a>", u"<\u00E9&", u"<\u00E9&", "references"},
        {"<!DOCTYPE a [<!ENTITY e 'in'>]><a>&e;</a>", u"in", u"in", "an entity of its own"},
        {"<a/>", u"", u"", "empty"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(m_document->put_preserveWhiteSpace(VARIANT_FALSE), S_OK);
        ASSERT_EQ(Load(c.xml), std::pair(S_OK, true)) << c.why;
        EXPECT_EQ(TextsOf(u"a").at(0), c.text) << c.why;
        EXPECT_EQ(m_document->put_preserveWhiteSpace(VARIANT_TRUE), S_OK);
        ASSERT_EQ(Load(c.xml), std::pair(S_OK, true)) << c.why;
        EXPECT_EQ(TextsOf(u"a").at(0), c.kept) << c.why;
    }
}

TEST_F(XmlDocumentTest, ReadsTheEncodingsOfHelpFiles) {
    const std::string utf16 = "\xFF\xFE<\0a\0>\0\xE9\0<\0/\0a\0>\0"s;
    const struct {
        std::string bytes;
        std::u16string text;
    } cases[] = {
        {"<a>\xC3\xA9</a>", u"\u00E9"},
        {"\xEF\xBB\xBF<?xml version='1.0' encoding='UTF-8'?><a>\xC3\xA9</a>", u"\u00E9"},
        {"<?xml version='1.0' encoding='ISO-8859-1'?><a>\xE9</a>", u"\u00E9"},
        {"<?xml version='1.0' encoding='Windows-1252'?><a>\x96\x80</a>", u"\u2013\u20AC"},
        {utf16, u"\u00E9"},
    };
    for (const auto& c : cases) {
        ASSERT_EQ(Load(c.bytes), std::pair(S_OK, true)) << c.bytes;
        EXPECT_EQ(TextsOf(u"a"), Texts{c.text}) << c.bytes;
    }
}

TEST_F(XmlDocumentTest, LoadsNothingOfABadFile) {
    std::string bomb = "<!DOCTYPE a [<!ENTITY e0 'xxxxxxxxxxxxxxxxxxxx'>";
    for (int level = 1; level < 12; ++level) {
        const std::string inner = "&e" + std::to_string(level - 1) + ";";
        bomb += "<!ENTITY e" + std::to_string(level) + " '";
        for (int time = 0; time < 10; ++time)
            bomb += inner;
        bomb += "'>";
    }
    bomb += "]><a>&e11;</a>";
    for (const std::string& bad :
         {""s, "no xml"s, "<a>"s, "<a></b>"s, "<a/><b/>"s, "<a>&undefined;</a>"s, "<a>\xE9</a>"s,
          "<?xml version='1.0' encoding='x-none'?><a/>"s, bomb}) {
        ASSERT_EQ(Load("<a>before</a>"), std::pair(S_OK, true));
        EXPECT_EQ(Load(bad), std::pair(S_FALSE, false)) << bad.substr(0, 50);
        EXPECT_EQ(TextsOf(u"a"), Texts{}) << bad.substr(0, 50);
    }
    EXPECT_EQ(LoadPath(u"C:\\Help\\none.xml"), std::pair(S_FALSE, false));
}

TEST_F(XmlDocumentTest, DeepAndLargeDocumentsAreNoTrouble) {
    std::string deep = "<help>";
    for (int level = 0; level < 100'000; ++level)
        deep += "<d>";
    deep += "<a>in</a>";
    for (int level = 0; level < 100'000; ++level)
        deep += "</d>";
    ASSERT_EQ(Load(deep + "</help>"), std::pair(S_OK, true));
    EXPECT_EQ(TextsOf(u"a"), Texts{u"in"});
    ASSERT_EQ(Load("<a>" + std::string(3'000'000, 'x') + "</a>"), std::pair(S_OK, true));
    EXPECT_EQ(TextsOf(u"a").at(0).size(), 3'000'000u);
}

TEST_F(XmlDocumentTest, ObjectsOutliveTheirDocumentAndKnowTheirInterfaces) {
    ASSERT_EQ(Load("<a>text</a>"), std::pair(S_OK, true));
    IXMLDOMElement* element = nullptr;
    ASSERT_EQ(m_document->get_documentElement(&element), S_OK);
    ASSERT_EQ(Load("<b/>"), std::pair(S_OK, true));
    void* node = nullptr;
    EXPECT_EQ(element->QueryInterface(IID_IXMLDOMDocument, &node), E_NOINTERFACE);
    EXPECT_EQ(node, nullptr);
    ASSERT_EQ(element->QueryInterface(IID_IXMLDOMNode, &node), S_OK);
    element->Release();
    BSTR text = nullptr;
    EXPECT_EQ(static_cast<IXMLDOMNode*>(node)->get_text(&text), S_OK);
    EXPECT_EQ(std::u16string(text), u"text");
    SysFreeString(text);
    static_cast<IXMLDOMNode*>(node)->Release();
}

TEST_F(XmlDocumentTest, FaultsLeaveNothingBehind) {
    m_machine.faults.FailCalls("IXMLDOMDocument::load", kPath, static_cast<DWORD>(E_ACCESSDENIED),
                               1, 1);
    EXPECT_EQ(Load("<a>x</a>"), std::pair(E_ACCESSDENIED, false));
    ASSERT_EQ(Load("<a>x</a>"), std::pair(S_OK, true));
    m_machine.faults.FailCalls("IXMLDOMDocument::getElementsByTagName", u"a", 8, 1, 1);
    BSTR tag = SysAllocString(u"a");
    IXMLDOMNodeList* list = nullptr;
    EXPECT_EQ(m_document->getElementsByTagName(tag, &list), static_cast<HRESULT>(0x80070008));
    EXPECT_EQ(list, nullptr);
    SysFreeString(tag);
    EXPECT_EQ(TextsOf(u"a"), Texts{u"x"});
}

}  // namespace
