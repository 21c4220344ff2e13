#include "Volume.h"

#include <algorithm>
#include <map>

#include <winerror.h>

#include "Text.h"

namespace platform {
namespace {

using Bytes = std::shared_ptr<std::string>;

class MemoryContent : public FileContent {
  public:
    explicit MemoryContent(Bytes bytes) : m_bytes(std::move(bytes)) {}

    DWORD Read(std::uint64_t offset, void* buffer, std::size_t size, std::size_t& read) override {
        read = 0;
        if (offset >= m_bytes->size()) return ERROR_SUCCESS;
        read = m_bytes->copy(static_cast<char*>(buffer), size, static_cast<std::size_t>(offset));
        return ERROR_SUCCESS;
    }
    DWORD Write(std::uint64_t offset, const void* data, std::size_t size) override {
        if (size == 0) return ERROR_SUCCESS;
        if (offset > kLimit || size > kLimit - offset) return ERROR_DISK_FULL;
        const auto start = static_cast<std::size_t>(offset);
        if (m_bytes->size() < start + size) m_bytes->resize(start + size);
        m_bytes->replace(start, size, static_cast<const char*>(data), size);
        return ERROR_SUCCESS;
    }
    DWORD Size(std::uint64_t& size) override {
        size = m_bytes->size();
        return ERROR_SUCCESS;
    }

  private:
    static constexpr std::uint64_t kLimit = 1U << 30;  // so that a stray offset eats no memory
    Bytes m_bytes;
};

struct Node {
    Bytes bytes;  // null for a directory
    std::map<std::u16string, Node, LessNoCase> children;
};

class MemoryVolume : public Volume {
  public:
    DWORD Look(const VolumePath& path, Kind& kind) override {
        if (path.empty()) {
            kind = Kind::Directory;
            return ERROR_SUCCESS;
        }
        Node* parent = Parent(path);
        if (!parent) return ERROR_PATH_NOT_FOUND;
        const auto found = parent->children.find(path.back());
        if (found == parent->children.end()) return ERROR_FILE_NOT_FOUND;
        kind = found->second.bytes ? Kind::File : Kind::Directory;
        return ERROR_SUCCESS;
    }

    DWORD MakeDirectory(const VolumePath& path) override {
        if (path.empty()) return ERROR_ACCESS_DENIED;
        Node* parent = Parent(path);
        if (!parent) return ERROR_PATH_NOT_FOUND;
        return parent->children.try_emplace(path.back()).second ? ERROR_SUCCESS
                                                                : ERROR_ALREADY_EXISTS;
    }

    DWORD Open(const VolumePath& path, Request request,
               std::unique_ptr<FileContent>& file) override {
        if (path.empty()) return ERROR_ACCESS_DENIED;
        Node* parent = Parent(path);
        if (!parent) return ERROR_PATH_NOT_FOUND;
        auto found = parent->children.find(path.back());
        if (found == parent->children.end()) {
            if (!request.create) return ERROR_FILE_NOT_FOUND;
            found = parent->children.try_emplace(path.back()).first;
            found->second.bytes = std::make_shared<std::string>();
        }
        if (!found->second.bytes) return ERROR_ACCESS_DENIED;
        if (request.truncate) found->second.bytes->clear();
        file = std::make_unique<MemoryContent>(found->second.bytes);
        return ERROR_SUCCESS;
    }

    DWORD Remove(const VolumePath& path) override {
        Kind kind{};
        if (const DWORD error = Look(path, kind)) return error;
        if (kind == Kind::Directory) return ERROR_ACCESS_DENIED;
        Parent(path)->children.erase(path.back());
        return ERROR_SUCCESS;
    }

    DWORD List(const VolumePath& directory, std::vector<Entry>& entries) override {
        VolumePath below = directory;
        below.emplace_back();
        const Node* const node = Parent(below);
        if (!node) return ERROR_PATH_NOT_FOUND;
        for (const auto& [name, child] : node->children)
            entries.push_back({name, child.bytes ? Kind::File : Kind::Directory});
        return ERROR_SUCCESS;
    }

  private:
    Node* Parent(const VolumePath& path) {
        Node* node = &m_root;
        for (std::size_t i = 0; i + 1 < path.size(); ++i) {
            const auto found = node->children.find(path[i]);
            if (found == node->children.end() || found->second.bytes) return nullptr;
            node = &found->second;
        }
        return node;
    }

    Node m_root;
};

}  // namespace

std::unique_ptr<Volume> MakeMemoryVolume() {
    return std::make_unique<MemoryVolume>();
}

}  // namespace platform
