#pragma once
// Commands as they are read: one a line, from a file or a terminal, UTF-8.

#include <functional>
#include <istream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace sheet {

// A person who types at a prompt.
class Terminal {
  public:
    // What a line may become: whole lines that begin with it.
    using Completer = std::function<std::vector<std::string>(const std::string& line)>;

    virtual ~Terminal() = default;
    // The next line, without its end; nothing when there is none any more.
    virtual std::optional<std::string> ReadLine(const std::string& prompt,
                                                const Completer& complete) = 0;
    // Keeps a line for the person to find again.
    virtual void Remember(const std::string& line) = 0;
};

class Script {
  public:
    enum class Echo { None, Lines };

    // input: borrowed. name: for messages, such as the file's. echo: each line, comments too, can
    // be printed as it is read.
    Script(std::istream& input, std::string name, Echo echo);
    // The commands of a person. terminal: borrowed.
    explicit Script(Terminal& terminal);

    // The next line that holds a command, without blanks around it; nothing at the end. Empty lines
    // and lines that begin with # are passed over. complete: for a person. Refusal: the input can't
    // be read.
    std::optional<std::string> Next(const Terminal::Completer& complete);
    // Where the line given last stands: "NAME:LINE"; empty on a terminal.
    std::string Place() const;
    bool IsInteractive() const { return m_terminal != nullptr; }
    // Asks the person for something else than a command, of whom there must be one. answers: what
    // can be completed. The line, without blanks around it; nothing at the end of the input.
    std::optional<std::string> Ask(const std::string& prompt,
                                   const std::vector<std::string>& answers) const;

  private:
    bool ReadLine(std::string& line, const Terminal::Completer& complete);

    std::istream* m_input = nullptr;  // one of the two
    Terminal* m_terminal = nullptr;
    std::string m_name;
    Echo m_echo = Echo::None;
    int m_line = 0;
};

// How a command's arguments are parted.
enum class Arguments {
    None,
    Words,        // the given number of words
    Rest,         // words, then the rest of the line as one argument, which may hold blanks
    RestAndWord,  // a word, then everything up to the last word, then that word
    WordOrLabel   // a word, or everything from a double quote to the last one, both included
};

struct SplitLine {
    std::vector<std::string> arguments;
    std::string_view excess;  // what follows them
};

// Parts what follows a command's name into its arguments, count or fewer. A comment ends the line:
// " #" behind words; in front of a blank or at the end also behind a rest, which may itself hold
// "#2".
SplitLine SplitArguments(std::string_view text, Arguments form, std::size_t count);

// The first word, and what follows it without blanks around.
struct FirstWord {
    std::string_view word;
    std::string_view rest;
};
FirstWord SplitFirst(std::string_view text);

// A decimal number without sign, up to limit; nothing when it isn't all digits.
std::optional<unsigned long long> ReadNumber(std::string_view text, unsigned long long limit);

}  // namespace sheet
