#include "StandInForm.h"

#include <algorithm>
#include <numeric>

#include <winnt.h>

#include "BindingPath.h"
#include "Facts.h"
#include "Faults.h"
#include "IpAddresses.h"
#include "LocalTime.h"
#include "MachineFile.h"
#include "Text.h"

namespace platform {
namespace {

using TextView = std::u16string_view;

bool IsNumber(TextView text, long long least, long long most) {
    const auto number = ParseNumber(text);
    return number && *number >= least && *number <= most;
}

bool IsHex(TextView text, std::size_t digits) {
    return text.size() == digits && ParseNumber(u"0x" + std::u16string(text)).has_value();
}

// Between `least` and `most` fields, each of which fits.
template <class Fits>
bool IsList(TextView text, char16_t separator, std::size_t least, std::size_t most,
            const Fits& fits) {
    const auto fields = SplitFields(text, separator);
    return fields.size() >= least && fields.size() <= most && std::ranges::all_of(fields, fits);
}

constexpr std::size_t anyCount = ~std::size_t{0};
constexpr long long maxWord = 0xFFFF;
constexpr long long maxDword = 0xFFFFFFFF;

bool IsVersion(TextView text) {
    return IsList(text, u'.', 2, anyCount,
                  [](TextView field) { return IsNumber(field, 0, maxWord); });
}

bool IsTime(TextView text) {
    return ParseTime(text).has_value();
}

bool IsWinExecResults(TextView text) {
    return IsList(text, u',', 0, anyCount,
                  [](TextView field) { return IsNumber(field, -1, 0x7FFFFFFF); });
}

bool IsGroupSizes(TextView text) {
    return IsList(text, u',', 1, anyCount, [](TextView field) { return IsNumber(field, 1, 64); });
}

bool IsNodes(TextView text) {
    return IsList(text, u',', 0, anyCount,
                  [](TextView field) { return field == u"-" || IsNumber(field, 0, maxWord); });
}

bool IsPhysicalAddress(TextView text) {
    return IsList(text, u'-', 0, 32, [](TextView field) { return IsHex(field, 2); });
}

bool IsIpAddresses(TextView text) {
    return IsList(text, u';', 0, anyCount,
                  [](TextView field) { return ParseIpAddress(ToUtf8(field)).has_value(); });
}

bool IsPortGuid(TextView text) {
    return IsHex(text, 16);
}

bool IsPortGuids(TextView text) {
    return IsList(text, u';', 0, 255, IsPortGuid);
}

bool IsTicks(TextView text) {
    return IsList(text, u',', 0, anyCount,
                  [](TextView field) { return IsNumber(field, 0, maxDword); });
}

// Three parts between backslashes.
bool IsInstanceId(TextView text) {
    const bool hasEmptyPart =
        text.starts_with(u'\\') || text.ends_with(u'\\') || text.find(u"\\\\") != TextView::npos;
    return !hasEmptyPart && std::ranges::count(text, u'\\') == 2;
}

bool IsInstanceIds(TextView text) {
    return IsList(text, u';', 0, anyCount, IsInstanceId);
}

bool IsBindingPath(TextView text) {
    return ParseBindingPath(text).has_value();
}

bool IsFault(TextView text) {
    return FaultPlan().SetRows({{u"Call", std::u16string(text)}});
}

bool IsGuid(TextView text) {
    constexpr TextView pattern = u"{xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx}";
    return std::ranges::equal(text, pattern, [](char16_t unit, char16_t wanted) {
        return wanted == u'x' ? IsHex({&unit, 1}, 1) : unit == wanted;
    });
}

// A number, which another one may follow behind a slash.
bool IsOid(TextView text) {
    return IsList(text, u'/', 1, 2, [](TextView field) { return IsNumber(field, 0, maxDword); });
}

bool IsPathToken(TextView text) {
    return !text.empty();
}

// The name of a function or, as in IXMLDOMDocument::load, of a method; behind a blank an argument.
bool IsCall(TextView text) {
    const std::size_t blank = text.find(u' ');
    const TextView call = text.substr(0, blank);
    const auto isLetter = [](char16_t unit) {
        return (unit >= u'a' && unit <= u'z') || (unit >= u'A' && unit <= u'Z');
    };
    const auto isOfName = [&](char16_t unit) {
        return isLetter(unit) || (unit >= u'0' && unit <= u'9') || unit == u'_' || unit == u':';
    };
    return !call.empty() && isLetter(call.front()) && std::ranges::all_of(call, isOfName) &&
           blank != text.size() - 1;
}

// Names that aren't fixed, in the table between angle brackets.
constexpr struct {
    TextView name;
    bool (*fits)(TextView text);
    const char* example;
} patterns[] = {
    {u"<GUID>", IsGuid, "{6B29FC40-CA47-4067-B31D-00DD010662DA}"},
    {u"<card GUID>", IsPortGuid, "0002c90300a5b6c0"},
    {u"<OID>", IsOid, "0xFFA0C915"},
    {u"<instance id>", IsInstanceId, "PCI\\\\VEN_1C57&DEV_1A20\\\\4&1D8E6F20&0&0018"},
    {u"<path token>", IsPathToken, "ms_tcpip->{6B29FC40-CA47-4067-B31D-00DD010662DA}"},
    {u"<call>", IsCall, "RegOpenKeyExW SOFTWARE\\\\Corvanta"},
};

bool Fits(TextView pattern, TextView name) {
    for (const auto& known : patterns) {
        if (known.name == pattern) return known.fits(name);
    }
    return EqualNames(pattern, name);
}

bool IsPattern(TextView name) {
    return name.starts_with(u'<');
}

// The name, or an example of it.
std::string Shown(TextView name) {
    for (const auto& known : patterns) {
        if (known.name == name) return "\"" + std::string(known.example) + "\"";
    }
    return "\"" + ToUtf8(name) + "\"";
}

// How many characters must be put in, left out or changed to make one of the other, apart from
// case.
std::size_t Distance(TextView a, TextView b) {
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < a.size(); ++i) {
        std::size_t diagonal = row[0]++;
        for (std::size_t j = 0; j < b.size(); ++j) {
            const std::size_t changed = diagonal + (UpCase(a[i]) != UpCase(b[j]));
            diagonal = row[j + 1];
            row[j + 1] = std::min({changed, row[j] + 1, row[j + 1] + 1});
        }
    }
    return row.back();
}

// "unknown value ...", with the nearest of the known names or, when none is near, with all of them.
std::string Unknown(const std::string& kind, TextView name, const std::u16string& place,
                    const std::vector<TextView>& known) {
    std::string message =
        "unknown " + kind + " " + FormatValueName(name) + " below " + ToUtf8(place) + "; ";
    if (known.empty()) return message + "there are no " + kind + "s";
    const TextView nearest =
        *std::ranges::min_element(known, {}, [&](TextView other) { return Distance(name, other); });
    if (!IsPattern(nearest) && Distance(name, nearest) <= nearest.size() / 2)
        return message + "did you mean " + Shown(nearest) + "?";
    message += IsPattern(known.front()) ? "a name is one like " : "known is ";
    for (const TextView& other : known) {
        if (&other != &known.front()) message += ", ";
        message += Shown(other);
    }
    return message;
}

bool IsOfType(DWORD type, std::span<const BYTE> data, DWORD wanted) {
    return type == wanted && (wanted != REG_DWORD || data.size() == sizeof(DWORD));
}

}  // namespace

struct StandInForm::Row {
    TextView key;                   // below StandIn, by parts; a pattern is a whole part
    TextView name;                  // of the value, or a pattern
    DWORD type;                     // REG_SZ, REG_DWORD or REG_BINARY
    bool (*isForm)(TextView text);  // null: any data of the type
    const char* example;            // as it is written behind the '='
};

namespace {

constexpr StandInForm::Row rows[] = {
    {u"", u"Version", REG_SZ, IsVersion, R"("6.2")"},
    {u"", u"ProductType", REG_DWORD, nullptr, "dword:1"},
    {u"", u"Time", REG_SZ, IsTime, R"("2026-11-19 08:05", a date and time of day that exist)"},
    {u"", u"NetshResult", REG_SZ, IsWinExecResults, R"("33,2", each from -1 to 2147483647)"},
    {u"Processors", u"Groups", REG_SZ, IsGroupSizes, R"("8,8", each from 1 to 64)"},
    {u"Processors", u"Nodes", REG_SZ, IsNodes, R"("0,0,1,1", each from 0 to 65535, or -)"},
    {u"Processors", u"HighestNode", REG_DWORD, nullptr, "dword:1"},
    {u"DeviceTree", u"<instance id>", REG_SZ, IsInstanceIds,
     R"("TSR4\\Tessaron-ETH26_Eth\\6&2A9F31C7&0&01;TSR4\\Tessaron-ETH26_Eth\\6&2A9F31C7&0&02")"},
    {u"Interfaces\\<GUID>", u"Alias", REG_SZ, nullptr, R"("Local Area Connection 3")"},
    {u"Interfaces\\<GUID>", u"Description", REG_SZ, nullptr,
     R"("Corvanta Tessaron Ethernet Adapter")"},
    {u"Interfaces\\<GUID>", u"PermanentAddress", REG_SZ, IsPhysicalAddress,
     R"("00-02-C9-11-22-33")"},
    {u"Interfaces\\<GUID>", u"CurrentAddress", REG_SZ, IsPhysicalAddress, R"("00-02-C9-11-22-33")"},
    {u"Interfaces\\<GUID>", u"Up", REG_DWORD, nullptr, "dword:1"},
    {u"Interfaces\\<GUID>", u"Addresses", REG_SZ, IsIpAddresses, R"("fe80::1;192.168.7.10")"},
    {u"Interfaces\\<GUID>", u"Hidden", REG_DWORD, nullptr, "dword:1"},
    {u"Cards\\<card GUID>", u"Ports", REG_SZ, IsPortGuids,
     R"("0202c9fffe112233;0202c9fffe112234")"},
    {u"Cards\\<card GUID>", u"DoorbellTicks", REG_SZ, IsTicks, R"("90,40", in milliseconds)"},
    {u"Miniports\\<GUID>", u"<OID>", REG_BINARY, nullptr, "hex:01"},
    {u"NetCfg", u"LockedBy", REG_SZ, nullptr, R"("another program")"},
    {u"NetCfg", u"LockedFor", REG_DWORD, nullptr, "dword:1b58"},
    {u"NetCfg", u"TakenFor", REG_DWORD, nullptr, "dword:1b58"},
    {u"NetCfg", u"TakenAt", REG_DWORD, nullptr, "dword:1"},
    {u"NetCfg", u"ApplyResult", REG_DWORD, nullptr, "dword:0004a020"},
    {u"NetCfg\\Bindings\\<GUID>", u"<path token>", REG_SZ, IsBindingPath,
     R"("ms_tcpip;enabled", or several component ids between commas, or disabled)"},
    {u"Faults", u"<call>", REG_SZ, IsFault, R"("5,1,2", an error, the first call and the count)"},
    {u"Restarts", u"Reboots", REG_DWORD, nullptr, "dword:1"},
    {u"Restarts", u"<instance id>", REG_DWORD, nullptr, "dword:1"},
};

}  // namespace

StandInForm::Refusal StandInForm::OpenKey(RegistryRoot root, std::u16string_view path) {
    TextView rest = path;
    m_isInside = root == RegistryRoot::LocalMachine &&
                 EqualNames(NextPathPart(rest), u"SOFTWARE") &&
                 EqualNames(NextPathPart(rest), u"StandIn");
    if (!m_isInside) return std::nullopt;

    m_place = u"StandIn";
    m_candidates.clear();
    for (const Row& row : rows)
        m_candidates.push_back({&row, row.key});
    for (auto part = NextPathPart(rest); !part.empty(); part = NextPathPart(rest)) {
        std::vector<TextView> known;
        std::vector<Candidate> fitting;
        for (auto [row, left] : m_candidates) {
            const TextView pattern = NextPathPart(left);
            if (pattern.empty()) continue;
            if (known.empty() || known.back() != pattern) known.push_back(pattern);
            if (Fits(pattern, part)) fitting.push_back({row, left});
        }
        if (fitting.empty()) return Unknown("key", part, m_place, known);
        m_candidates = std::move(fitting);
        m_place.append(1, u'\\').append(part);
    }
    return std::nullopt;
}

StandInForm::Refusal StandInForm::CheckValue(std::u16string_view name, DWORD type,
                                             std::span<const BYTE> data) const {
    if (!m_isInside) return std::nullopt;
    std::vector<TextView> known;
    for (const auto& [row, left] : m_candidates) {
        if (!left.empty()) continue;
        known.push_back(row->name);
        if (!Fits(row->name, name)) continue;
        const bool isOfType = IsOfType(type, data, row->type);
        if (isOfType && (!row->isForm || row->isForm(TextOf(data)))) return std::nullopt;
        return "the value " + FormatValueName(name) + " below " + ToUtf8(m_place) +
               " has a wrong " + (isOfType ? "form" : "type") + "; it is written as in " +
               FormatValueName(name) + "=" + row->example;
    }
    return Unknown("value", name, m_place, known);
}

}  // namespace platform
