#include "XmlTree.h"

#include <algorithm>

#include <expat.h>

#include "CodePages.h"
#include "Text.h"

namespace platform {
namespace {

bool IsBlank(char16_t unit) {
    return unit == u' ' || unit == u'\t' || unit == u'\r' || unit == u'\n';
}

// How many blanks the text begins with.
std::size_t LeadingBlanks(std::u16string_view text) {
    return static_cast<std::size_t>(std::find_if_not(text.begin(), text.end(), IsBlank) -
                                    text.begin());
}

std::size_t TrailingBlanks(std::u16string_view text) {
    return static_cast<std::size_t>(std::find_if_not(text.rbegin(), text.rend(), IsBlank) -
                                    text.rbegin());
}

}  // namespace

std::vector<std::size_t> XmlTree::Find(std::u16string_view name) const {
    std::vector<std::size_t> found;
    for (std::size_t at = 0; at < m_nodes.size(); ++at) {
        const Node& node = m_nodes[at];
        if (node.kind == Node::Kind::Element && (name == u"*" || node.text == name))
            found.push_back(at);
    }
    return found;
}

std::u16string XmlTree::Text(std::size_t element) const {
    std::u16string text;
    std::size_t filled = 0;  // up to the last piece that isn't blank
    bool trimEnd = false;
    for (std::size_t at = element + 1; at < m_nodes[element].end; ++at) {
        const Node& node = m_nodes[at];
        if (node.kind == Node::Kind::Element) continue;
        const bool trims = node.kind == Node::Kind::Text && !m_keepBlanks;
        const bool atStart = filled == 0;
        if (node.kind == Node::Kind::Blank) {
            if (!atStart) text += node.text;
            continue;
        }
        text += node.text.substr(atStart && trims ? LeadingBlanks(node.text) : 0);
        filled = text.size();
        trimEnd = trims;
    }
    text.resize(filled);
    if (trimEnd) text.resize(text.size() - TrailingBlanks(text));
    return text;
}

struct XmlReader::State {
    XML_Parser parser = XML_ParserCreate(nullptr);
    std::shared_ptr<XmlTree> tree = std::make_shared<XmlTree>();
    std::vector<std::size_t> open;  // places of the elements around the present one
    std::string text;               // run of characters not yet in the tree
    bool inCData = false;
    bool valid = true;

    // Puts the run of characters into the tree as one text.
    void EndText() {
        std::u16string run = FromUtf8(text);
        text.clear();
        if (run.empty()) return;
        using Kind = XmlTree::Node::Kind;
        const bool blank = !inCData && !tree->m_keepBlanks && LeadingBlanks(run) == run.size();
        if (blank)
            tree->m_nodes.push_back({Kind::Blank, u" ", 0});
        else
            tree->m_nodes.push_back({inCData ? Kind::CData : Kind::Text, std::move(run), 0});
    }

    static void XMLCALL OnStart(void* user, const XML_Char* name, const XML_Char**) {
        auto& state = *static_cast<State*>(user);
        state.EndText();
        state.open.push_back(state.tree->m_nodes.size());
        state.tree->m_nodes.push_back({XmlTree::Node::Kind::Element, FromUtf8(name), 0});
    }

    static void XMLCALL OnEnd(void* user, const XML_Char*) {
        auto& state = *static_cast<State*>(user);
        state.EndText();
        state.tree->m_nodes[state.open.back()].end = state.tree->m_nodes.size();
        state.open.pop_back();
    }

    static void XMLCALL OnText(void* user, const XML_Char* text, int length) {
        static_cast<State*>(user)->text.append(text, static_cast<std::size_t>(length));
    }

    static void XMLCALL OnCDataStart(void* user) {
        auto& state = *static_cast<State*>(user);
        state.EndText();
        state.inCData = true;
    }

    static void XMLCALL OnCDataEnd(void* user) {
        auto& state = *static_cast<State*>(user);
        state.EndText();
        state.inCData = false;
    }

    static void XMLCALL OnComment(void* user, const XML_Char*) {
        static_cast<State*>(user)->EndText();
    }

    static void XMLCALL OnInstruction(void* user, const XML_Char*, const XML_Char*) {
        static_cast<State*>(user)->EndText();
    }

    static int XMLCALL OnUnknownEncoding(void*, const XML_Char* name, XML_Encoding* encoding) {
        if (!EqualNoCase(FromUtf8(name), u"windows-1252")) return XML_STATUS_ERROR;
        for (int byte = 0; byte < 256; ++byte)
            encoding->map[byte] = FromAnsi(static_cast<char>(byte));
        encoding->data = nullptr;
        encoding->convert = nullptr;
        encoding->release = nullptr;
        return XML_STATUS_OK;
    }
};

XmlReader::XmlReader(bool keepBlanks) : m_state(std::make_unique<State>()) {
    m_state->tree->m_keepBlanks = keepBlanks;
    XML_Parser parser = m_state->parser;
    XML_SetUserData(parser, m_state.get());
    XML_SetElementHandler(parser, &State::OnStart, &State::OnEnd);
    XML_SetCharacterDataHandler(parser, &State::OnText);
    XML_SetCdataSectionHandler(parser, &State::OnCDataStart, &State::OnCDataEnd);
    XML_SetCommentHandler(parser, &State::OnComment);
    XML_SetProcessingInstructionHandler(parser, &State::OnInstruction);
    XML_SetUnknownEncodingHandler(parser, &State::OnUnknownEncoding, nullptr);
}

XmlReader::~XmlReader() {
    XML_ParserFree(m_state->parser);
}

bool XmlReader::Feed(std::string_view piece) {
    constexpr std::size_t most = 0x100000;  // the parser counts in int
    while (m_state->valid && !piece.empty()) {
        const std::string_view part = piece.substr(0, most);
        piece.remove_prefix(part.size());
        m_state->valid = XML_Parse(m_state->parser, part.data(), static_cast<int>(part.size()),
                                   XML_FALSE) == XML_STATUS_OK;
    }
    return m_state->valid;
}

std::shared_ptr<const XmlTree> XmlReader::Finish() {
    if (m_state->valid)
        m_state->valid = XML_Parse(m_state->parser, "", 0, XML_TRUE) == XML_STATUS_OK;
    return m_state->valid ? m_state->tree : nullptr;
}

}  // namespace platform
