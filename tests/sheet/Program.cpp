#include "Program.h"

#include <gtest/gtest.h>

#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <sstream>

std::string FileText(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

std::vector<std::string> Program::Result::Lines() const {
    std::vector<std::string> lines;
    std::istringstream text(out);
    for (std::string line; std::getline(text, line);)
        lines.push_back(line);
    return lines;
}

Program::Program(const Sample& sample) {
    std::string folder = (std::filesystem::temp_directory_path() / "sheet-test-XXXXXX").string();
    if (mkdtemp(folder.data()) == nullptr) throw std::runtime_error("no temporary folder");
    m_folder = folder;
    Write("machine.reg", sample.Text());
}

Program::~Program() {
    std::error_code ignored;
    std::filesystem::remove_all(m_folder, ignored);
}

std::string Program::Write(const std::string& name, const std::string& bytes) const {
    const std::filesystem::path path = m_folder / name;
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << bytes;
    return path.string();
}

std::string Program::Read(const std::string& name) const {
    return FileText(m_folder / name);
}

std::string Program::Drive() const {
    const std::filesystem::path drive = m_folder / "drive";
    std::filesystem::remove_all(drive);
    std::filesystem::copy(SOURCE_DIR "/samples/drive", drive,
                          std::filesystem::copy_options::recursive);
    return drive.string();
}

Program::Result Program::RunWith(const std::vector<std::string>& arguments,
                                 const std::string& input, const std::string& output) const {
    const std::string in = Write("standard-input", input);
    const std::string out = output.empty() ? Path("standard-output") : output;
    const std::string err = Path("standard-error");
    const auto quoted = [](const std::string& word) { return " '" + word + "'"; };
    // The samples' scripts name files from the root of the tree.
    std::string command = "cd" + quoted(SOURCE_DIR) + " &&" + quoted(SHEET_PROGRAM);
    for (const std::string& argument : arguments)
        command += quoted(argument);
    command += " <" + quoted(in) + " >" + quoted(out) + " 2>" + quoted(err);
    const int status = std::system(command.c_str());
    EXPECT_TRUE(WIFEXITED(status)) << FileText(err);
    return {WEXITSTATUS(status), output.empty() ? FileText(out) : std::string(), FileText(err)};
}

namespace {

// Adds what comes from the terminal, up to the next prompt or the program's end.
void ReadToPrompt(int terminal, std::string& shown) {
    constexpr int kLongestPause = 120'000;  // milliseconds
    pollfd waiting = {terminal, POLLIN, 0};
    char piece[4096];
    do {
        if (poll(&waiting, 1, kLongestPause) <= 0) throw std::runtime_error("no prompt\n" + shown);
        const ssize_t count = read(terminal, piece, sizeof(piece));
        if (count <= 0) return;
        shown.append(piece, static_cast<std::size_t>(count));
    } while (!shown.ends_with("> "));
}

}  // namespace

Program::Result Program::AtTerminal(const std::vector<std::string>& lines) const {
    const std::string machine = Machine();
    int terminal = -1;
    const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
    if (child == 0) {
        setenv("TERM", "dumb", 1);
        execl(SHEET_PROGRAM, "sheet", machine.c_str(), nullptr);
        _exit(127);
    }
    Result result = {};
    for (const std::string& line : lines) {
        ReadToPrompt(terminal, result.out);
        const std::string typed = line + "\n";
        EXPECT_EQ(write(terminal, typed.data(), typed.size()), static_cast<ssize_t>(typed.size()));
    }
    ReadToPrompt(terminal, result.out);
    int status = 0;
    waitpid(child, &status, 0);
    close(terminal);
    result.code = WEXITSTATUS(status);
    std::erase(result.out, '\r');
    return result;
}

Program::Result Program::Run(const std::string& script, std::vector<std::string> more) const {
    more.insert(more.begin(), {Machine(), "--script", "-"});
    return RunWith(more, script);
}
