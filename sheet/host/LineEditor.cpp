#include "LineEditor.h"

#include <unistd.h>

#include <editline/readline.h>

#include <clocale>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <memory>

#include "../Transcript.h"

namespace sheet {

namespace {

// What the library's callbacks work with while a line is read.
const Terminal::Completer* g_complete = nullptr;
std::vector<std::string> g_candidates;
std::size_t g_next = 0;

char* NextCandidate(const char*, int state) {
    if (state == 0) g_next = 0;
    return g_next < g_candidates.size() ? strdup(g_candidates[g_next++].c_str()) : nullptr;
}

char** CompleteLine(const char* line, int, int) {
    rl_attempted_completion_over = 1;  // no names of files
    if (g_complete == nullptr) return nullptr;
    g_candidates = (*g_complete)(line);
    return rl_completion_matches(line, NextCandidate);
}

}  // namespace

LineEditor::LineEditor() : m_edits(isatty(STDOUT_FILENO) != 0) {
    // Lines are UTF-8 whatever the locale says.
    if (std::setlocale(LC_CTYPE, "C.UTF-8") == nullptr) std::setlocale(LC_CTYPE, "");
    static char program[] = "sheet";
    static char noBreaks[] = "";
    rl_readline_name = program;
    // The whole line is completed, since titles and labels hold blanks.
    rl_basic_word_break_characters = noBreaks;
    rl_completer_word_break_characters = noBreaks;
    rl_completion_append_character = 0;
    rl_attempted_completion_function = CompleteLine;
}

bool LineEditor::IsAtTerminal() {
    return isatty(STDIN_FILENO) != 0;
}

std::optional<std::string> LineEditor::ReadLine(const std::string& prompt,
                                                const Completer& complete) {
    if (!m_edits) {
        PrintError(prompt);
        std::string line;
        return std::getline(std::cin, line) ? std::optional(line) : std::nullopt;
    }
    g_complete = &complete;
    const std::unique_ptr<char, decltype(&std::free)> line(readline(prompt.c_str()), std::free);
    g_complete = nullptr;
    if (!line) {
        Print("\n");
        return std::nullopt;
    }
    return std::string(line.get());
}

void LineEditor::Remember(const std::string& line) {
    if (m_edits && !line.empty()) add_history(line.c_str());
}

}  // namespace sheet
