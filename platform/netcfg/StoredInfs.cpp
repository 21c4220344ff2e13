// What the system's store of INF files holds. It is read over the file API, so that this also
// serves a real Windows.

#include <algorithm>
#include <set>

#include "Call.h"
#include "InfFile.h"

namespace platform {
namespace {

// The sections that the lines of the Manufacturer section name, each once: "models" and, for a
// decoration that follows it, "models.decoration".
std::set<UINT> ModelsSections(const InfFile& file) {
    std::set<UINT> sections;
    const auto manufacturer = file.FindSection(TEXT("Manufacturer"));
    for (UINT line = 0; manufacturer && line < file.LineCount(*manufacturer); ++line) {
        InfFile::Text models;
        file.VisitFields(*manufacturer, line, [&](DWORD field, const InfFile::Text& text) {
            if (field == 0) return true;
            if (field == 1) models = text;
            InfFile::Text name = models;
            if (field > 1) name.append(TEXT(".")).append(text);
            if (const auto section = file.FindSection(name)) sections.insert(*section);
            return true;
        });
    }
    return sections;
}

void AddModels(const InfFile& file, std::vector<InfModel>& models) {
    for (const UINT section : ModelsSections(file)) {
        for (UINT line = 0; line < file.LineCount(section); ++line) {
            InfModel model;
            file.VisitFields(section, line, [&](DWORD field, const InfFile::Text& text) {
                if (field == 0) model.description = text;
                if (field == 2) model.componentId = text;
                return field < 2;
            });
            if (!model.componentId.empty()) models.push_back(std::move(model));
        }
    }
}

}  // namespace

InfFile::Text InfStorePath() {
    const QuietScope quiet;
    WCHAR directory[MAX_PATH] = {};
    GetWindowsDirectoryW(directory, MAX_PATH);
    return directory + InfFile::Text(TEXT("\\INF\\"));
}

std::vector<InfFile::Text> StoredInfNames() {
    const QuietScope quiet;
    std::vector<InfFile::Text> names;
    WIN32_FIND_DATAW found;
    const HANDLE search = FindFirstFileW((InfStorePath() + TEXT("*.inf")).c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) return names;
    for (BOOL isFound = TRUE; isFound; isFound = FindNextFileW(search, &found)) {
        if ((found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0)
            names.emplace_back(found.cFileName);
    }
    FindClose(search);
    std::ranges::sort(names, LessNoCase());
    return names;
}

std::vector<InfModel> StoredModels() {
    std::vector<InfModel> models;
    for (const InfFile::Text& name : StoredInfNames()) {
        InfFile file;
        UINT errorLine = 0;
        if (file.Read(InfStorePath() + name, errorLine) == ERROR_SUCCESS) AddModels(file, models);
    }
    return models;
}

}  // namespace platform
