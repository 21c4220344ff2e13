#include "Script.h"

#include "SheetText.h"
#include "Transcript.h"

namespace sheet {

namespace {

constexpr std::string_view kBlanks = " \t";
constexpr const char* kPrompt = "sheet> ";

// Cuts a comment that begins behind a blank; strict: only a # that stands alone is one.
std::string_view WithoutComment(std::string_view text, bool strict) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '#') continue;
        const bool begins = i == 0 || kBlanks.find(text[i - 1]) != std::string_view::npos;
        const bool alone =
            i + 1 == text.size() || kBlanks.find(text[i + 1]) != std::string_view::npos;
        if (begins && (alone || !strict)) return Trim(text.substr(0, i));
    }
    return text;
}

}  // namespace

Script::Script(std::istream& input, std::string name, Echo echo)
    : m_input(&input), m_name(std::move(name)), m_echo(echo) {}

Script::Script(Terminal& terminal) : m_terminal(&terminal) {}

bool Script::ReadLine(std::string& line, const Terminal::Completer& complete) {
    if (m_terminal != nullptr) {
        std::optional<std::string> typed = m_terminal->ReadLine(kPrompt, complete);
        if (!typed) return false;
        line = std::move(*typed);
        m_terminal->Remember(line);
        return true;
    }
    if (std::getline(*m_input, line)) return true;
    if (m_input->bad()) throw Refusal{"the next line can't be read"};
    return false;
}

std::optional<std::string> Script::Next(const Terminal::Completer& complete) {
    std::string line;
    while (ReadLine(line, complete)) {
        ++m_line;
        std::string_view text = line;
        if (m_line == 1 && text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
        if (text.ends_with('\r')) text.remove_suffix(1);
        text = Trim(text);
        const bool isCommand = !text.empty() && text.front() != '#';
        if (m_echo == Echo::Lines)
            Print((isCommand ? std::string(kPrompt) : "") + std::string(text) + "\n");
        if (isCommand) return std::string(text);
    }
    return std::nullopt;
}

std::optional<std::string> Script::Ask(const std::string& prompt,
                                       const std::vector<std::string>& answers) const {
    const auto complete = [&](const std::string& line) {
        std::vector<std::string> matching = answers;
        std::erase_if(matching,
                      [&](const std::string& answer) { return !answer.starts_with(line); });
        return matching;
    };
    const std::optional<std::string> line = m_terminal->ReadLine(prompt, complete);
    return line ? std::optional(std::string(Trim(*line))) : std::nullopt;
}

std::string Script::Place() const {
    return IsInteractive() ? std::string() : m_name + ":" + std::to_string(m_line);
}

FirstWord SplitFirst(std::string_view text) {
    text = Trim(text);
    const auto end = text.find_first_of(kBlanks);
    if (end == std::string_view::npos) return {text, {}};
    return {text.substr(0, end), Trim(text.substr(end))};
}

SplitLine SplitArguments(std::string_view text, Arguments form, std::size_t count) {
    text = Trim(text);
    const bool isLabel = form == Arguments::WordOrLabel && text.starts_with('"');
    const bool free = form == Arguments::Rest || form == Arguments::RestAndWord || isLabel;
    text = WithoutComment(text, free);
    std::vector<std::string> arguments;
    const std::size_t words = isLabel                          ? 0
                              : form == Arguments::Rest        ? count - 1
                              : form == Arguments::RestAndWord ? 1
                                                               : count;
    while (arguments.size() < words && !text.empty()) {
        const FirstWord first = SplitFirst(text);
        arguments.emplace_back(first.word);
        text = first.rest;
    }
    if (!free) return {arguments, text};
    if (form == Arguments::RestAndWord && !text.empty()) {
        const auto blank = text.find_last_of(kBlanks);
        arguments.emplace_back(Trim(text.substr(0, blank)));
        text = blank == std::string_view::npos ? std::string_view() : text.substr(blank + 1);
    } else if (const auto quote = text.rfind('"'); isLabel && quote != 0) {
        arguments.emplace_back(text.substr(0, quote + 1));
        return {arguments, Trim(text.substr(quote + 1))};
    }
    if (!text.empty()) arguments.emplace_back(text);
    return {arguments, {}};
}

std::optional<unsigned long long> ReadNumber(std::string_view text, unsigned long long limit) {
    if (text.empty()) return std::nullopt;
    unsigned long long number = 0;
    for (const char c : text) {
        if (c < '0' || c > '9') return std::nullopt;
        const auto digit = static_cast<unsigned long long>(c - '0');
        if (number > (limit - digit) / 10) return std::nullopt;
        number = number * 10 + digit;
    }
    return number;
}

}  // namespace sheet
