#pragma once
// Commands as they are read: one a line, from a file or a terminal, UTF-8.

#include <istream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace sheet {

class Script {
  public:
    enum class Echo { None, Prompt, Lines };

    // input: borrowed. name: for messages, such as the file's. echo: a terminal is prompted; of any
    // other script each line, comments too, can be printed as it is read.
    Script(std::istream& input, std::string name, Echo echo);

    // The next line that holds a command, without blanks around it; nothing at the end. Empty lines
    // and lines that begin with # are passed over.
    std::optional<std::string> Next();
    // Where the line given last stands: "NAME:LINE"; empty on a terminal.
    std::string Place() const;
    bool IsInteractive() const { return m_echo == Echo::Prompt; }

  private:
    std::istream& m_input;
    std::string m_name;
    Echo m_echo;
    int m_line = 0;
};

// How a command's arguments are parted.
enum class Arguments {
    None,
    Words,        // the given number of words
    Rest,         // words, then the rest of the line as one argument, which may hold blanks
    RestAndWord,  // a word, then everything up to the last word, then that word
};

// Parts what follows a command's name into exactly count arguments; nothing when there are more or
// fewer. A comment ends the line: " #" behind words; in front of a blank or at the end also behind
// a rest, which may itself hold "#2".
std::optional<std::vector<std::string>> SplitArguments(std::string_view text, Arguments form,
                                                       std::size_t count);

// The first word, and what follows it without blanks around.
struct FirstWord {
    std::string_view word;
    std::string_view rest;
};
FirstWord SplitFirst(std::string_view text);

// A decimal number without sign, up to limit; nothing when it isn't all digits.
std::optional<unsigned long long> ReadNumber(std::string_view text, unsigned long long limit);

}  // namespace sheet
