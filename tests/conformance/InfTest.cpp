// INF files and the system's store of them.

#include <setupapi.h>

#include "Conformance.h"

namespace {

const std::string kVersion = "[Version]\r\nSignature=\"$Windows NT$\"\r\n";
constexpr DWORD kField = 512;  // characters of a field, with its terminator

class InfTest : public Conformance {
  protected:
    Text Write(const std::string& content, const WCHAR* name = TEXT("case.inf")) const {
        const Text path = here->folder + name;
        DWORD written = 0;
        const HANDLE file =
            CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
        EXPECT_TRUE(
            WriteFile(file, content.data(), static_cast<DWORD>(content.size()), &written, nullptr));
        CloseHandle(file);
        return path;
    }
    // The error of opening; 0 when it opened.
    static DWORD TryOpen(const Text& path, UINT* line = nullptr) {
        const HINF inf = SetupOpenInfFileW(path.c_str(), nullptr, INF_STYLE_WIN4, line);
        if (inf == INVALID_HANDLE_VALUE) return GetLastError();
        SetupCloseInfFile(inf);
        return 0;
    }
    // "key: first|second", with "-" for no key.
    static Text Fields(INFCONTEXT line) {
        WCHAR field[kField];
        Text all = TEXT("-");
        if (SetupGetStringFieldW(&line, 0, field, kField, nullptr)) all = field;
        all += TEXT(':');
        for (DWORD i = 1; SetupGetStringFieldW(&line, i, field, kField, nullptr); ++i)
            all += (i == 1 ? TEXT(" ") : TEXT("|")) + Text(field);
        return all;
    }
    // The fields of a file's line that is the first one of its section.
    Text FieldsOf(const std::string& line) const {
        const Text path = Write(
            kVersion + "[Strings]\ncvt=Corvanta\nnested=\"%cvt% 2\"\n[Lines]\n" + line + "\n");
        const HINF inf = SetupOpenInfFileW(path.c_str(), nullptr, INF_STYLE_WIN4, nullptr);
        EXPECT_NE(inf, INVALID_HANDLE_VALUE);
        INFCONTEXT found;
        const BOOL isFound = SetupFindFirstLineW(inf, TEXT("lINES"), nullptr, &found);
        EXPECT_TRUE(isFound || GetLastError() == ERROR_LINE_NOT_FOUND);
        const Text fields = isFound ? Fields(found) : TEXT("none");
        SetupCloseInfFile(inf);
        return fields;
    }
};

TEST_F(InfTest, LinesHaveKeysAndFields) {
    const struct {
        std::string line;
        const WCHAR* fields;
        const char* why;
    } cases[] = {
        {"; a\n\n \t\n\tkey\t= a b ,c ; d\r", TEXT("key: a b|c"), "blanks and comments"},
        {"alone", TEXT("alone: alone"), "one field is its own key"},
        {"a, b = c", TEXT("-: a|b = c"), "several have none"},
        {"a = b = c", TEXT("a: b = c"), "the first equals sign"},
        {"empty=", TEXT("empty: "), "an empty field"},
        {"= ,a,", TEXT(": |a|"), "more of them"},
        {R"("k = ;" = " a, ""b"" ",  "c" d "e" )", TEXT("k = ;:  a, \"b\" |c d e"), "quotes"},
        {"a = \"b ; c\nd = e", TEXT("a: b ; c"), "a quote ends with its line"},
        {"a = b \\ ; c\n  d, \\\n[e]", TEXT("a: bd|[e]"), "a line goes on behind a backslash"},
        {R"(a = b\c, "d\)", TEXT("a: b\\c|d\\"), "other backslashes"},
        {"a = b\\", TEXT("a: b"), "nothing to go on with"},
        {"%CVT% = \"%cvt%\", %nested%", TEXT("Corvanta: Corvanta|%cvt% 2"), "texts"},
        {"a = %%, %%cvt%%, %cvt %, %cvt", TEXT("a: %|%cvt%|%cvt %|%cvt"), "no texts"},
        {"[Other]\na=b\n[Lines] x\nc=d", TEXT("c: d"), "a section has several parts"},
        {"\x1A\na=b", TEXT("none"), "the end of the file"},
        {"[lines ]\na=b", TEXT("none"), "blanks are of the section's name"},
    };
    for (const auto& row : cases)
        EXPECT_EQ(FieldsOf(row.line), row.fields) << row.why;
    EXPECT_EQ(FieldsOf("a=" + std::string(600, 'b')), TEXT("a: ") + Text(511, TEXT('b')))
        << "what is too long is cut off";
}

TEST_F(InfTest, WhatIsNoInfDoesNotOpen) {
    const struct {
        std::string content;
        DWORD error;
        UINT line;
    } cases[] = {
        {kVersion, 0, 0},
        {"\n[vERSION]\nsIGNATURE = $chicago$\n", 0, 0},
        {"\xEF\xBB\xBF" + kVersion, 0, 0},
        {"", ERROR_FILE_INVALID, 0},
        {"; nothing\n", ERROR_WRONG_INF_STYLE, 0},
        {"[Version]\nSignature=\"$Other$\"\n", ERROR_WRONG_INF_STYLE, 0},
        {"[Version]\nClass=Net\n", ERROR_WRONG_INF_STYLE, 0},
        {"\n; text\ntext\n" + kVersion, ERROR_EXPECTED_SECTION_NAME, 3},
        {kVersion + "[Section\n]\n", ERROR_BAD_SECTION_NAME_LINE, 3},
        {kVersion + "[" + std::string(256, 's') + "]\n", ERROR_SECTION_NAME_TOO_LONG, 3},
    };
    for (const auto& row : cases) {
        UINT line = 0;
        EXPECT_EQ(TryOpen(Write(row.content), &line), row.error) << &row - cases;
        EXPECT_EQ(line, row.line) << &row - cases;
    }
    EXPECT_EQ(TryOpen(here->folder + TEXT("none.inf")), DWORD{ERROR_FILE_NOT_FOUND});
    EXPECT_EQ(TryOpen(here->folder + TEXT("none\\none.inf")), DWORD{ERROR_PATH_NOT_FOUND});
}

TEST_F(InfTest, FieldsAndLinesAreLookedFor) {
    const Text path = Write(kVersion + "[A]\nx=1\ny=2,three\n[B]\n");
    const HINF inf = SetupOpenInfFileW(path.c_str(), nullptr, INF_STYLE_WIN4, nullptr);
    ASSERT_NE(inf, INVALID_HANDLE_VALUE);
    INFCONTEXT line;
    for (const auto* section : {TEXT("B"), TEXT("C")}) {
        EXPECT_FALSE(SetupFindFirstLineW(inf, section, nullptr, &line));
        EXPECT_EQ(GetLastError(), ERROR_LINE_NOT_FOUND);
    }
    ASSERT_TRUE(SetupFindFirstLineW(inf, TEXT("a"), TEXT("Y"), &line));
    DWORD required = 0;
    EXPECT_TRUE(SetupGetStringFieldW(&line, 2, nullptr, 0, &required));
    EXPECT_EQ(required, 6u);
    WCHAR text[6] = {TEXT('-')};
    EXPECT_FALSE(SetupGetStringFieldW(&line, 2, text, 5, &required));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INSUFFICIENT_BUFFER});
    EXPECT_EQ(text[0], TEXT('-'));
    EXPECT_TRUE(SetupGetStringFieldW(&line, 2, text, 6, nullptr));
    EXPECT_EQ(Text(text), TEXT("three"));
    EXPECT_FALSE(SetupGetStringFieldW(&line, 3, text, 6, nullptr));
    SetupCloseInfFile(inf);
}

// The system's store. The names that it gives aren't the same everywhere.
class InfStoreTest : public InfTest {
  protected:
    struct Copy {
        DWORD error;  // 0: copied
        Text name;    // in the store; empty when none is given
    };
    static Copy TryCopy(const Text& path, DWORD style, DWORD capacity = MAX_PATH) {
        WCHAR stored[MAX_PATH] = {};
        PWSTR name = nullptr;
        DWORD required = 0;
        const BOOL isCopied = SetupCopyOEMInfW(path.c_str(), nullptr, SPOST_PATH, style, stored,
                                               capacity, &required, &name);
        if (!isCopied) return {GetLastError(), name ? name : TEXT("")};
        EXPECT_EQ(required, Text(stored).size() + 1);
        return {0, name};
    }
    static DWORD TryUninstall(const Text& name) {
        return SetupUninstallOEMInfW(name.c_str(), SUOI_FORCEDELETE, nullptr) ? 0 : GetLastError();
    }
};

TEST_F(InfStoreTest, ACopyKeepsItsNameAndIsTakenOut) {
    const Text first = Write(kVersion, TEXT("conform1.inf"));
    const Text second = Write(kVersion + "[A]\n", TEXT("conform2.inf"));
    const Text name = TryCopy(first, 0).name;
    EXPECT_NE(name, TEXT(""));
    const Text other = TryCopy(second, 0).name;
    EXPECT_NE(other, name);
    EXPECT_EQ(TryCopy(first, 0).name, name) << "the same content";
    EXPECT_EQ(TryCopy(first, SP_COPY_REPLACEONLY).name, name);
    const Copy cut = TryCopy(first, 0, 5);
    EXPECT_EQ(cut.error, DWORD{ERROR_INSUFFICIENT_BUFFER});
    EXPECT_EQ(cut.name, TEXT(""));
    EXPECT_TRUE(
        SetupCopyOEMInfW(first.c_str(), nullptr, SPOST_PATH, 0, nullptr, 0, nullptr, nullptr))
        << "nobody need ask for the name";
    EXPECT_EQ(TryUninstall(name), 0u);
    EXPECT_EQ(TryUninstall(name), DWORD{ERROR_FILE_NOT_FOUND});
    EXPECT_EQ(TryUninstall(other), 0u);
}

TEST_F(InfStoreTest, WhatIsNoInfIsNotCopied) {
    EXPECT_EQ(TryCopy(here->folder + TEXT("none.inf"), 0).error, DWORD{ERROR_FILE_NOT_FOUND});
    EXPECT_EQ(TryCopy(Write("text"), 0).error, ERROR_EXPECTED_SECTION_NAME);
    EXPECT_EQ(TryCopy(Write("[A]\n"), 0).error, ERROR_WRONG_INF_STYLE);
}

TEST_F(InfStoreTest, OnlyWhatIsThereIsReplaced) {
    const Copy copy = TryCopy(Write(kVersion, TEXT("conform3.inf")), SP_COPY_REPLACEONLY);
    EXPECT_EQ(copy.error, DWORD{ERROR_FILE_NOT_FOUND});
    EXPECT_EQ(copy.name, TEXT(""));
}

}  // namespace
