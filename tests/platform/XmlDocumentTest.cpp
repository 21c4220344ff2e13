// The document object model over a file of the machine's drive.

#include <string>
#include <vector>

#include <windows.h>
#include <msxml.h>
#include <objbase.h>

#include "Drive.h"
#include "FactsMachine.h"
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
    }

    // The result of loading these bytes; what it says of success must agree.
    HRESULT Load(const std::string& bytes) {
        EXPECT_TRUE(m_facts.machine.Get<Drive>().WriteWholeFile(kPath, bytes));
        return LoadPath(kPath);
    }
    HRESULT LoadPath(const WCHAR* path) {
        VARIANT source;
        VariantInit(&source);
        source.vt = VT_BSTR;
        source.bstrVal = SysAllocString(path);
        VARIANT_BOOL loaded = VARIANT_TRUE;
        const HRESULT result = m_document->load(source, &loaded);
        VariantClear(&source);
        EXPECT_EQ(loaded == VARIANT_TRUE, result == S_OK);
        return result;
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

    FactsMachine m_facts;
    IXMLDOMDocument* m_document = nullptr;
};

TEST_F(XmlDocumentTest, FindsElementsWhereverTheyStand) {
    ASSERT_EQ(Load("<help><x><Topic>one</Topic></x><topic>two</topic><Topic>three"
                   "<Topic>four</Topic></Topic></help>"),
              S_OK);
    EXPECT_EQ(TextsOf(u"Topic"), (Texts{u"one", u"threefour", u"four"}));
    EXPECT_EQ(TextsOf(u"Missing"), Texts{});
    EXPECT_EQ(TextsOf(u"*").size(), 6u);
}

TEST_F(XmlDocumentTest, TrimsTextAtItsEndsOnly) {
    const struct {
        const char* xml;
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
    };
    for (const auto& c : cases) {
        for (const bool keep : {false, true}) {
            m_document->put_preserveWhiteSpace(keep ? VARIANT_TRUE : VARIANT_FALSE);
            ASSERT_EQ(Load(c.xml), S_OK) << c.why;
            EXPECT_EQ(TextsOf(u"a").at(0), keep ? c.kept : c.text) << c.why;
        }
    }
}

TEST_F(XmlDocumentTest, ReadsTheEncodingsOfHelpFiles) {
    for (const std::string& bytes : {
             "<a>\xC3\xA9</a>"s,
             "\xEF\xBB\xBF<?xml version='1.0' encoding='UTF-8'?><a>\xC3\xA9</a>"s,
             "<?xml version='1.0' encoding='ISO-8859-1'?><a>\xE9</a>"s,
             "<?xml version='1.0' encoding='Windows-1252'?><a>\xE9</a>"s,
             "\xFF\xFE<\0a\0>\0\xE9\0<\0/\0a\0>\0"s,
         }) {
        ASSERT_EQ(Load(bytes), S_OK) << bytes;
        EXPECT_EQ(TextsOf(u"a"), Texts{u"\u00E9"}) << bytes;
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
        ASSERT_EQ(Load("<a>before</a>"), S_OK);
        EXPECT_EQ(Load(bad), S_FALSE) << bad.substr(0, 50);
        EXPECT_EQ(TextsOf(u"a"), Texts{}) << bad.substr(0, 50);
    }
    EXPECT_EQ(LoadPath(u"C:\\Help\\none.xml"), S_FALSE);
}

TEST_F(XmlDocumentTest, DeepAndLargeDocumentsAreNoTrouble) {
    std::string open, close;
    for (int level = 0; level < 100'000; ++level) {
        open += "<d>";
        close += "</d>";
    }
    ASSERT_EQ(Load(open + "<a>" + std::string(3'000'000, 'x') + "</a>" + close), S_OK);
    EXPECT_EQ(TextsOf(u"a").at(0).size(), 3'000'000u);
}

}  // namespace
