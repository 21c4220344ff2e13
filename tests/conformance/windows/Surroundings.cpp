// A case's surroundings on a Windows: the program itself, and a folder of its own.

#include "../Conformance.h"

namespace {

struct Program : Surroundings {
    Program() {
        module = GetModuleHandleW(nullptr);
        WCHAR path[MAX_PATH];
        folder.assign(path, GetTempPathW(MAX_PATH, path));
        folder += TEXT("conformance\\");
        CreateDirectoryW(folder.c_str(), nullptr);
    }
    ~Program() override {
        WIN32_FIND_DATAW found;
        const HANDLE search = FindFirstFileW((folder + TEXT("*")).c_str(), &found);
        do
            DeleteFileW((folder + found.cFileName).c_str());
        while (FindNextFileW(search, &found));
        FindClose(search);
        RemoveDirectoryW(folder.c_str());
    }
};

}  // namespace

std::unique_ptr<Surroundings> MakeSurroundings() {
    return std::make_unique<Program>();
}
