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
    : m_input(input), m_name(std::move(name)), m_echo(echo) {}

std::optional<std::string> Script::Next() {
    std::string line;
    for (;;) {
        if (m_echo == Echo::Prompt) Print(kPrompt);
        if (!std::getline(m_input, line)) return std::nullopt;
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

std::optional<std::vector<std::string>> SplitArguments(std::string_view text, Arguments form,
                                                       std::size_t count) {
    const bool free = form == Arguments::Rest || form == Arguments::RestAndWord;
    text = WithoutComment(Trim(text), free);
    std::vector<std::string> arguments;
    const std::size_t words = form == Arguments::Words  ? count
                              : form == Arguments::Rest ? count - 1
                              : form == Arguments::None ? 0
                                                        : 1;
    while (arguments.size() < words) {
        const FirstWord first = SplitFirst(text);
        if (first.word.empty()) return std::nullopt;
        arguments.emplace_back(first.word);
        text = first.rest;
    }
    if (!free) {
        if (!text.empty()) return std::nullopt;
        return arguments;
    }
    if (form == Arguments::RestAndWord) {
        const auto last = text.find_last_of(kBlanks);
        if (last == std::string_view::npos) return std::nullopt;
        arguments.emplace_back(Trim(text.substr(0, last)));
        text = text.substr(last + 1);
    }
    arguments.emplace_back(text);
    return arguments;
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
