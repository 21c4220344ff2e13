#pragma once
// An XML document as parsed: a flat list of its elements and texts, without levels of recursion.

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

class XmlTree {
  public:
    struct Node {
        enum class Kind { Element, Text, CData, Blank } kind;
        std::u16string text;  // an element's name, or the text
        std::size_t end;      // of an element: the place after its last descendant
    };

    // In document order; the first is the document element. A text of nothing but white space is
    // a Blank, of one space, unless blanks are kept.
    const std::vector<Node>& Nodes() const { return m_nodes; }

    // The places of the elements of that name, in document order. "*": all.
    std::vector<std::size_t> Find(std::u16string_view name) const;
    // All text within an element. Unless blanks are kept, white space at its ends is dropped, but
    // not that of a CDATA section.
    std::u16string Text(std::size_t element) const;

  private:
    friend class XmlReader;
    bool m_keepBlanks = false;
    std::vector<Node> m_nodes;
};

// Takes a document piece by piece. Encodings: UTF-8, UTF-16, ISO-8859-1, US-ASCII and windows-1252.
// External entities aren't read.
class XmlReader {
  public:
    // keepBlanks: white space stays as it is.
    explicit XmlReader(bool keepBlanks);
    ~XmlReader();
    XmlReader(const XmlReader&) = delete;
    XmlReader& operator=(const XmlReader&) = delete;

    // False when the document isn't well-formed so far.
    bool Feed(std::string_view piece);
    // The tree of a document that is complete and well-formed; else null.
    std::shared_ptr<const XmlTree> Finish();

  private:
    struct State;
    std::unique_ptr<State> m_state;
};

}  // namespace platform
