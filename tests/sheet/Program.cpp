#include "Program.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <spawn.h>
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

Program::Result Program::RunWith(std::vector<std::string> arguments,
                                 const std::string& input) const {
    const std::string in = Write("standard-input", input);
    const std::string out = Path("standard-output");
    const std::string err = Path("standard-error");
    posix_spawn_file_actions_t streams;
    posix_spawn_file_actions_init(&streams);
    posix_spawn_file_actions_addopen(&streams, STDIN_FILENO, in.c_str(), O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&streams, STDOUT_FILENO, out.c_str(),
                                     O_WRONLY | O_CREAT | O_TRUNC, 0600);
    posix_spawn_file_actions_addopen(&streams, STDERR_FILENO, err.c_str(),
                                     O_WRONLY | O_CREAT | O_TRUNC, 0600);
    arguments.insert(arguments.begin(), SHEET_PROGRAM);
    std::vector<char*> words;
    for (std::string& argument : arguments)
        words.push_back(argument.data());
    words.push_back(nullptr);
    pid_t process = 0;
    const int error =
        posix_spawn(&process, SHEET_PROGRAM, &streams, nullptr, words.data(), environ);
    posix_spawn_file_actions_destroy(&streams);
    EXPECT_EQ(error, 0) << "the program doesn't start";
    int status = -1;
    if (error == 0) waitpid(process, &status, 0);
    EXPECT_TRUE(WIFEXITED(status)) << FileText(err);
    return {WEXITSTATUS(status), FileText(out), FileText(err)};
}

Program::Result Program::Run(const std::string& script, std::vector<std::string> more) const {
    more.insert(more.begin(), {Machine(), "--script", "-"});
    return RunWith(std::move(more), script);
}
