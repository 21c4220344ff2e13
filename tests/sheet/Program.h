#pragma once
// Runs the program that plays the device manager, as its user does: files in, transcript out.

#include <filesystem>
#include <string>
#include <vector>

#include "Sample.h"

// A folder of one test, with the program's input and output; gone with the test.
class Program {
  public:
    struct Result {
        int code;
        std::string out;
        std::string err;
        std::vector<std::string> Lines() const;
    };

    // Writes the sample's machine file.
    explicit Program(const Sample& sample = Sample());
    ~Program();
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    // A file in the folder; gives its path.
    std::string Write(const std::string& name, const std::string& bytes) const;
    std::string Path(const std::string& name) const { return (m_folder / name).string(); }
    std::string Read(const std::string& name) const;
    std::string Machine() const { return Path("machine.reg"); }
    // A new drive C: as the driver package's installation leaves it; gives its path, for --files.
    std::string Drive() const;

    // With these arguments and that standard input; output goes to that file, or into the result.
    Result RunWith(const std::vector<std::string>& arguments, const std::string& input = "",
                   const std::string& output = "") const;
    // With the machine file, at a terminal: each line is typed when the program prompts for it.
    // Gives what the terminal shows.
    Result AtTerminal(const std::vector<std::string>& lines) const;
    // With the machine file, the script as standard input, and further arguments.
    Result Run(const std::string& script, std::vector<std::string> more = {}) const;

  private:
    std::filesystem::path m_folder;
};

std::string FileText(const std::filesystem::path& path);

inline bool Has(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}
