#pragma once
// INF files, and the system's store of them.
//
// A file is read over the file API, so that this also serves a real Windows. Reading is quiet. Any
// thread; a file that has been read doesn't change.

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <windows.h>

#include "Text.h"

namespace platform {

class InfFile {
  public:
    using Text = std::basic_string<WCHAR>;
    using TextView = std::basic_string_view<WCHAR>;

    InfFile() = default;
    InfFile(const InfFile&) = delete;
    InfFile& operator=(const InfFile&) = delete;

    // Reads a file of the current INF style, which its Version section says: UTF-16 or UTF-8 with a
    // byte-order mark, else UTF-8 where it is well-formed, else the ANSI code page. 0 or the error
    // of SetupOpenInfFileW; errorLine: of a syntax error the line from 1, of a wrong style 0. To be
    // called once.
    DWORD Read(const Text& path, UINT& errorLine);

    // Sections and lines count from 0. Sections of one name are one, names compare without regard
    // to case.
    std::optional<UINT> FindSection(TextView name) const;
    UINT LineCount(UINT section) const;

    // Gives the fields of a line one after the other, with their numbers, until the visitor returns
    // false. 0 is the key; a line without a key has none, but for one of a single field, which
    // serves as its key, too. Texts of the form %name% are replaced from the Strings section.
    using Visitor = std::function<bool(DWORD field, const Text& text)>;
    void VisitFields(UINT section, UINT line, const Visitor& visit) const;
    // Nothing when the line has no such field.
    std::optional<Text> Field(UINT section, UINT line, DWORD field) const;
    // The first line of a section with that key.
    std::optional<UINT> FindLine(UINT section, TextView key) const;

  private:
    DWORD FindLines(UINT& errorLine);
    bool IsOfCurrentStyle() const;
    void ReadStrings();
    void VisitRawFields(UINT section, UINT line, const Visitor& visit) const;
    Text Expand(TextView text) const;

    Text m_text;
    std::vector<std::vector<UINT>> m_sections;  // where the lines of each start in the text
    std::map<Text, UINT, LessNoCase> m_sectionNumbers;
    std::map<Text, Text, LessNoCase> m_strings;
};

// Reads a whole file. 0 or the error.
DWORD ReadFileBytes(const InfFile::Text& path, std::string& bytes);

// The system's store, C:\Windows\INF, with a backslash at its end.
InfFile::Text InfStorePath();
// The names of the files in it that end in .inf, sorted.
std::vector<InfFile::Text> StoredInfNames();

// A line of a models section.
struct InfModel {
    std::basic_string<WCHAR> description;
    std::basic_string<WCHAR> componentId;
};
// The models of every INF file in the system's store, in the order of the files' names. Files that
// can't be read have none.
std::vector<InfModel> StoredModels();

}  // namespace platform
