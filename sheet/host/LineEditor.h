#pragma once
// The terminal that the program was started at. One at a time.

#include "../Script.h"

namespace sheet {

// Lines are edited, with a history and completion, when what is printed goes to that terminal too.
class LineEditor : public Terminal {
  public:
    LineEditor();

    // Whether standard input is a terminal.
    static bool IsAtTerminal();

    std::optional<std::string> ReadLine(const std::string& prompt,
                                        const Completer& complete) override;
    void Remember(const std::string& line) override;

  private:
    bool m_edits;
};

}  // namespace sheet
