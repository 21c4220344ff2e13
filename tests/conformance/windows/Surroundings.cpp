// A case's surroundings on a Windows: the program itself, and a folder of its own.

#include <filesystem>

#include "../Conformance.h"

namespace {

struct Program : Surroundings {
    Program() {
        module = GetModuleHandleW(nullptr);
        folder = std::filesystem::temp_directory_path() /
                 ("conformance-" + std::to_string(GetCurrentProcessId())) / "";
        std::filesystem::create_directory(folder);
    }
    ~Program() override { std::filesystem::remove_all(folder); }
};

}  // namespace

std::unique_ptr<Surroundings> MakeSurroundings() {
    return std::make_unique<Program>();
}
