// The document object model, as the in-page help uses it.

#include "Conformance.h"

#include <msxml.h>
#include <objbase.h>

using std::string_literals::operator""s;

namespace {

using Texts = std::vector<Text>;

class XmlDocumentTest : public Conformance {
  protected:
    XmlDocumentTest() {
        const CLSID domDocument3 = {
            0xF5078F32, 0xC551, 0x11D3, {0x89, 0xB9, 0x00, 0x00, 0xF8, 0x1F, 0xE2, 0x21}};
        EXPECT_EQ(CoInitialize(nullptr), S_OK);
        void* object = nullptr;
        EXPECT_EQ(CoCreateInstance(domDocument3, nullptr, CLSCTX_INPROC_SERVER, IID_IXMLDOMDocument,
                                   &object),
                  S_OK);
        document = static_cast<IXMLDOMDocument*>(object);
        document->put_async(VARIANT_FALSE);
        document->put_validateOnParse(VARIANT_FALSE);
        document->put_resolveExternals(VARIANT_FALSE);
    }
    ~XmlDocumentTest() override {
        document->Release();
        CoUninitialize();
    }

    HRESULT Load(const std::string& bytes) {
        const Text path = here->folder + TEXT("help.xml");
        const HANDLE file =
            CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
        DWORD written = 0;
        EXPECT_TRUE(
            WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr));
        CloseHandle(file);
        return LoadPath(path);
    }
    // What it says of success must agree.
    HRESULT LoadPath(const Text& path) {
        VARIANT source;
        VariantInit(&source);
        source.vt = VT_BSTR;
        source.bstrVal = SysAllocString(path.c_str());
        VARIANT_BOOL loaded = VARIANT_TRUE;
        const HRESULT result = document->load(source, &loaded);
        VariantClear(&source);
        EXPECT_EQ(loaded == VARIANT_TRUE, result == S_OK);
        return result;
    }
    // The text of each element of that name.
    Texts TextsOf(const WCHAR* name) {
        Texts texts;
        IXMLDOMNodeList* list = nullptr;
        BSTR tag = SysAllocString(name);
        EXPECT_EQ(document->getElementsByTagName(tag, &list), S_OK);
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

    IXMLDOMDocument* document = nullptr;
};

TEST_F(XmlDocumentTest, FindsElementsWhereverTheyStand) {
    ASSERT_EQ(Load("<help><x><Topic>one</Topic></x><topic>two</topic><Topic>three"
                   "<Topic>four</Topic></Topic></help>"),
              S_OK);
    EXPECT_EQ(TextsOf(TEXT("Topic")), (Texts{TEXT("one"), TEXT("threefour"), TEXT("four")}));
    EXPECT_EQ(TextsOf(TEXT("Missing")), Texts{});
    EXPECT_EQ(TextsOf(TEXT("*")).size(), 6u);
}

TEST_F(XmlDocumentTest, TrimsTextAtItsEndsOnly) {
    const struct {
        const char* xml;
        Text text;
        const char* why;
    } cases[] = {
        {"<a>\r\n {\\rtf1 x\r\ny} \n</a>", TEXT("{\\rtf1 x\ny}"), "ends"},
        {"<a> <![CDATA[ q ]]> </a>", TEXT(" q "), "a CDATA section isn't trimmed"},
        {"<a> <!--c--> x</a>", TEXT("x"), "a comment isn't text"},
        {"<a><b>x</b>\n<b>y</b></a>", TEXT("x y"), "blanks between elements"},
        {"<a> <b> </b> </a>", TEXT(""), "nothing but blanks"},
        {"<!DOCTYPE a [<!ENTITY e 'in'>]><a>&lt;&#233;&e;</a>", TEXT("<\u00E9in"), "references"},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.why);
        document->put_preserveWhiteSpace(VARIANT_FALSE);
        ASSERT_EQ(Load(row.xml), S_OK);
        EXPECT_EQ(TextsOf(TEXT("a")), Texts{row.text});
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
        EXPECT_EQ(TextsOf(TEXT("a")), Texts{TEXT("\u00E9")}) << bytes;
    }
}

TEST_F(XmlDocumentTest, LoadsNothingOfABadFile) {
    for (const std::string& bad :
         {""s, "no xml"s, "<a>"s, "<a></b>"s, "<a/><b/>"s, "<a>&undefined;</a>"s, "<a>\xE9</a>"s,
          "<?xml version='1.0' encoding='x-none'?><a/>"s}) {
        ASSERT_EQ(Load("<a>before</a>"), S_OK);
        EXPECT_EQ(Load(bad), S_FALSE) << bad;
        EXPECT_EQ(TextsOf(TEXT("a")), Texts{}) << bad;
    }
    EXPECT_EQ(LoadPath(here->folder + TEXT("none.xml")), S_FALSE);
}

}  // namespace
