#include "Resources.h"

#include <libloaderapi.h>
#include <winerror.h>
#include <winuser.h>
#include <algorithm>
#include <map>
#include <memory>

#include "Call.h"
#include "Desktop.h"
#include "Modules.h"
#include "Text.h"

namespace platform {
namespace {

constexpr std::size_t kStringsInBlock = 16;

// The resource tables read so far, by the bytes they were read from.
class ResourceTables : public Part {
  public:
    const std::vector<Resource>& Of(std::span<const BYTE> file) {
        auto& table = m_tables[file.data()];
        if (!table) table = std::make_unique<std::vector<Resource>>(ParseResources(file));
        return *table;
    }
    // The resource that a handle stands for, or null.
    const Resource* Known(const void* handle) const {
        for (const auto& [file, table] : m_tables) {
            for (const Resource& resource : *table) {
                if (&resource == handle) return &resource;
            }
        }
        return nullptr;
    }

  private:
    std::map<const BYTE*, std::unique_ptr<std::vector<Resource>>> m_tables;
};

// A name as the functions take it: a number in place of a pointer, "#" and digits, or a text.
ResourceName GivenName(const char16_t* name) {
    if (IS_INTRESOURCE(name)) return static_cast<WORD>(reinterpret_cast<ULONG_PTR>(name));
    std::u16string text = name;
    if (text.size() < 2 || text[0] != u'#') return text;
    unsigned number = 0;
    for (const char16_t digit : text.substr(1)) {
        if (digit < u'0' || digit > u'9' || number > 0xFFFF) return text;
        number = number * 10 + (digit - u'0');
    }
    return static_cast<WORD>(number);
}

bool SameName(const ResourceName& a, const ResourceName& b) {
    const auto* textA = std::get_if<std::u16string>(&a);
    const auto* textB = std::get_if<std::u16string>(&b);
    return textA && textB ? EqualNoCase(*textA, *textB) : a == b;
}

// For faults and traces.
std::u16string Shown(const char16_t* name) {
    const ResourceName given = GivenName(name);
    if (const auto* text = std::get_if<std::u16string>(&given)) return *text;
    return u"#" + FromUtf8(std::to_string(std::get<WORD>(given)));
}

}  // namespace

WORD ResourceReader::Word() {
    const std::span<const BYTE> bytes = Bytes(2);
    return bytes.empty() ? WORD{0} : static_cast<WORD>(bytes[0] | bytes[1] << 8);
}

DWORD ResourceReader::Dword() {
    const DWORD low = Word();
    return low | static_cast<DWORD>(Word()) << 16;
}

std::u16string ResourceReader::Text() {
    std::u16string text;
    for (char16_t unit = Word(); m_good && unit != 0; unit = Word())
        text.push_back(unit);
    return text;
}

std::u16string ResourceReader::Text(std::size_t length) {
    std::u16string text;
    for (std::size_t i = 0; m_good && i < length; ++i)
        text.push_back(Word());
    return text;
}

ResourceName ResourceReader::Name() {
    const std::size_t start = m_position;
    if (Word() == 0xFFFF) return Word();
    m_position = std::min(start, m_data.size());
    return Text();
}

std::span<const BYTE> ResourceReader::Bytes(std::size_t count) {
    if (!m_good || count > m_data.size() - m_position) {
        m_good = false;
        return {};
    }
    m_position += count;
    return m_data.subspan(m_position - count, count);
}

void ResourceReader::Align(std::size_t boundary) {
    const std::size_t past = m_position % boundary;
    if (past != 0) m_position = std::min(m_data.size(), m_position + boundary - past);
}

std::vector<Resource> ParseResources(std::span<const BYTE> file) {
    std::vector<Resource> found;
    ResourceReader reader(file);
    while (true) {
        const std::size_t start = reader.Position();
        const DWORD dataSize = reader.Dword();
        const DWORD headerSize = reader.Dword();
        Resource resource;
        resource.type = reader.Name();
        resource.name = reader.Name();
        reader.Align(4);
        reader.Dword();  // data version
        reader.Word();   // memory flags
        resource.language = reader.Word();
        reader.Dword();  // version
        reader.Dword();  // characteristics
        if (reader.Position() - start != headerSize) break;
        resource.data = reader.Bytes(dataSize);
        if (!reader.Good()) break;
        reader.Align(4);
        // The file begins with an empty entry, which tells its form.
        if (resource.type != ResourceName(WORD{0})) found.push_back(std::move(resource));
    }
    return found;
}

const Resource* FindResourceOf(HMODULE module, const char16_t* type, const char16_t* name) {
    Machine& machine = Machine::Current();
    const ModuleImage* image = machine.Get<Modules>().Find(module);
    if (!image || image->resources.empty()) {
        Call::SetLast(ERROR_RESOURCE_DATA_NOT_FOUND);
        return nullptr;
    }
    const ResourceName givenType = GivenName(type);
    const ResourceName givenName = GivenName(name);
    bool typeSeen = false;
    for (const Resource& resource : machine.Get<ResourceTables>().Of(image->resources)) {
        if (!SameName(resource.type, givenType)) continue;
        typeSeen = true;
        if (SameName(resource.name, givenName)) return &resource;
    }
    Call::SetLast(typeSeen ? ERROR_RESOURCE_NAME_NOT_FOUND : ERROR_RESOURCE_TYPE_NOT_FOUND);
    return nullptr;
}

std::optional<std::u16string_view> FindString(HMODULE module, UINT id) {
    const auto block = static_cast<WORD>(id / kStringsInBlock + 1);
    const Resource* resource = FindResourceOf(module, RT_STRING, MAKEINTRESOURCEW(block));
    if (!resource) return std::nullopt;
    ResourceReader reader(resource->data);
    for (UINT skipped = 0; skipped < id % kStringsInBlock; ++skipped)
        reader.Bytes(std::size_t{reader.Word()} * 2);
    const std::size_t length = reader.Word();
    const std::span<const BYTE> text = reader.Bytes(length * 2);
    if (text.empty()) {
        Call::SetLast(ERROR_RESOURCE_NAME_NOT_FOUND);
        return std::nullopt;
    }
    return std::u16string_view(reinterpret_cast<const char16_t*>(text.data()), length);
}

}  // namespace platform

using platform::Call;
using platform::Resource;

HRSRC WINAPI FindResourceW(HMODULE module, LPCWSTR name, LPCWSTR type) {
    Call call("FindResourceW", platform::Shown(name).c_str(), ERROR_RESOURCE_NAME_NOT_FOUND);
    if (call.Failed()) return call.With<HRSRC>(nullptr);
    const Resource* resource = platform::FindResourceOf(module, type, name);
    return reinterpret_cast<HRSRC>(const_cast<Resource*>(resource));
}

HGLOBAL WINAPI LoadResource(HMODULE, HRSRC handle) {
    Call call("LoadResource");
    if (call.Failed()) return call.With<HGLOBAL>(nullptr);
    const Resource* resource = call.machine.Get<platform::ResourceTables>().Known(handle);
    return const_cast<Resource*>(resource);
}

LPVOID WINAPI LockResource(HGLOBAL handle) {
    Call call("LockResource");
    if (call.Failed()) return nullptr;
    const Resource* resource = call.machine.Get<platform::ResourceTables>().Known(handle);
    return resource ? const_cast<BYTE*>(resource->data.data()) : nullptr;
}

DWORD WINAPI SizeofResource(HMODULE, HRSRC handle) {
    Call call("SizeofResource");
    if (call.Failed()) return call.With(0U);
    const Resource* resource = call.machine.Get<platform::ResourceTables>().Known(handle);
    return resource ? static_cast<DWORD>(resource->data.size()) : 0;
}

int WINAPI LoadStringW(HINSTANCE instance, UINT id, LPWSTR text, int capacity) {
    Call call("LoadStringW", platform::FromUtf8(std::to_string(id)).c_str(),
              ERROR_RESOURCE_NAME_NOT_FOUND);
    if (call.Failed()) return call.With(0);
    const auto found = platform::FindString(instance, id);
    if (!found || capacity < 0) return 0;
    if (capacity != 0) return platform::CopyText(*found, text, capacity);
    // Without a capacity `text` is where the address of the resource itself goes.
    *reinterpret_cast<const char16_t**>(text) = found->data();
    return static_cast<int>(found->size());
}
