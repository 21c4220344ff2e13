#include "InformationRows.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "../resources/resource.h"
#include "AdapterOid.h"
#include "InterfaceTable.h"
#include "LibraryState.h"
#include "RegistryKey.h"

#include <strsafe.h>

namespace {

// Of ntddndis.h; the others are the miniport driver's own.
constexpr DWORD OID_GEN_LINK_PARAMETERS = 0x00010208;
constexpr DWORD OID_802_3_PERMANENT_ADDRESS = 0x01010101;
constexpr DWORD OID_802_3_CURRENT_ADDRESS = 0x01010102;
constexpr DWORD OID_BUS_KIND = 0xFFA0C911;
constexpr DWORD OID_BUS_LINK_SPEED = 0xFFA0C912;
constexpr DWORD OID_BUS_LINK_WIDTH = 0xFFA0C913;
constexpr DWORD OID_FIRMWARE_VERSION = 0xFFA0C915;
constexpr DWORD OID_PART_NUMBER = 0xFFA0C916;
constexpr DWORD OID_REVISION_ID = 0xFFA0C919;
constexpr DWORD OID_PORT_NUMBER = 0xFFA0C923;
constexpr DWORD OID_DEVICE_ID = 0xFFA0C924;
constexpr DWORD OID_USER_NAME = 0xFFA0C925;
constexpr DWORD OID_PKEY = 0xFFA0C933;

constexpr DWORD kDriverVersionLimit = 500;  // bytes
constexpr DWORD kPartNumberLimit = 250;
constexpr DWORD kNameLimit = 24;
constexpr double kBitsPerGigabit = 1000000000;

constexpr WCHAR kDisconnected[] = TEXT("Disconnected");

// Sets a text, cut to what fits.
void SetText(InformationText& field, LPCWSTR text) {
    std::fill(std::begin(field), std::end(field), WCHAR{0});
    (void)StringCchCopyW(field, ARRAYSIZE(field), text);
}

// A number that takes the whole answer; a shorter answer is none.
template <class T>
bool QueryNumber(const InformationSource& source, DWORD oid, T& number) {
    DWORD returned = 0;
    return QueryAdapterOid(source.deviceName, oid, &number, sizeof(number), &returned) ==
               ERROR_SUCCESS &&
           returned == sizeof(number);
}

// What a row's value is read from. `value` holds nothing before; false: the source failed.
struct RowRequest {
    const InformationSource& source;
    const InformationRows& rows;
    DWORD oid;
};

bool ReadDriverVersion(const RowRequest& request, InformationText& value) {
    RegistryKey key;
    return key.Open(request.source.classKeyPath, KEY_QUERY_VALUE) == ERROR_SUCCESS &&
           key.ReadText(TEXT("DriverVersion"), value, kDriverVersionLimit) == ERROR_SUCCESS;
}

bool ReadFirmwareVersion(const RowRequest& request, InformationText& value) {
    ULONGLONG version = 0;
    if (!QueryNumber(request.source, request.oid, version)) return false;
    const auto part = [&](int shift, DWORD mask) {
        return static_cast<int>(static_cast<DWORD>(version >> shift) & mask);
    };
    return SUCCEEDED(StringCchPrintfW(value, ARRAYSIZE(value), TEXT("%d.%d.%d"),
                                      part(32, 0xFFFFFFFF), part(16, 0xFFFF), part(0, 0xFFFF)));
}

template <class T>
bool PrintNumber(const RowRequest& request, LPCWSTR format, InformationText& value) {
    T number = 0;
    return QueryNumber(request.source, request.oid, number) &&
           SUCCEEDED(StringCchPrintfW(value, ARRAYSIZE(value), format, number));
}

bool ReadPortNumber(const RowRequest& request, InformationText& value) {
    return PrintNumber<BYTE>(request, TEXT("%x"), value);
}

bool ReadDeviceId(const RowRequest& request, InformationText& value) {
    return PrintNumber<WORD>(request, TEXT("%d"), value);
}

bool ReadRevisionId(const RowRequest& request, InformationText& value) {
    return PrintNumber<BYTE>(request, TEXT("%X"), value);
}

// The text of a number from 1 on; empty for one that isn't listed.
template <size_t N>
void LoadListedText(const UINT (&ids)[N], BYTE number, WCHAR (&text)[10]) {
    text[0] = 0;
    if (number >= 1 && number <= N)
        LoadStringW(Library().moduleHandle, ids[number - 1], text, ARRAYSIZE(text));
}

bool ReadBusType(const RowRequest& request, InformationText& value) {
    constexpr UINT kKinds[] = {IDS_BUS_PCI, IDS_BUS_PCI_X, IDS_BUS_PCI_E};
    constexpr UINT kSpeeds[] = {IDS_BUS_SPEED_2_5, IDS_BUS_SPEED_5_0, IDS_BUS_SPEED_8_0};
    BYTE kind = 0;
    BYTE speed = 0;
    BYTE width = 0;
    if (!QueryNumber(request.source, OID_BUS_KIND, kind) ||
        !QueryNumber(request.source, OID_BUS_LINK_SPEED, speed) ||
        !QueryNumber(request.source, OID_BUS_LINK_WIDTH, width))
        return false;
    if (kind < 1 || kind > ARRAYSIZE(kKinds))
        return SUCCEEDED(StringCchCopyW(value, ARRAYSIZE(value), TEXT("Unknown")));
    WCHAR kindText[10];
    WCHAR speedText[10];
    LoadListedText(kKinds, kind, kindText);
    LoadListedText(kSpeeds, speed, speedText);
    return SUCCEEDED(
        StringCchPrintfW(value, ARRAYSIZE(value), TEXT("%s %s x%d"), kindText, speedText, width));
}

// An adapter without a link has no speed, and isn't asked for one.
bool ReadLinkSpeed(const RowRequest& request, InformationText& value) {
    if (std::basic_string_view<WCHAR>(request.rows[ROW_NETWORK_STATUS].value) == kDisconnected)
        return SUCCEEDED(StringCchCopyW(value, ARRAYSIZE(value), TEXT("----")));
    // NDIS_LINK_PARAMETERS: the transmit speed in bits per second follows the first eight bytes.
    constexpr size_t kSpeedOffset = 8;
    BYTE parameters[32] = {};
    ULONGLONG speed = 0;
    DWORD returned = 0;
    if (QueryAdapterOid(request.source.deviceName, request.oid, parameters, sizeof(parameters),
                        &returned) != ERROR_SUCCESS ||
        returned < kSpeedOffset + sizeof(speed))
        return false;
    std::memcpy(&speed, parameters + kSpeedOffset, sizeof(speed));
    return SUCCEEDED(StringCchPrintfW(value, ARRAYSIZE(value), TEXT("%.1f Gbps/Full Duplex"),
                                      static_cast<double>(speed) / kBitsPerGigabit));
}

// A narrow text of at most `limit` bytes, with or without terminator, up to one of `ends`.
bool ReadNarrowText(const RowRequest& request, DWORD limit, std::string_view ends,
                    InformationText& value) {
    char answer[kPartNumberLimit] = {};
    DWORD returned = 0;
    if (QueryAdapterOid(request.source.deviceName, request.oid, answer, limit, &returned) !=
        ERROR_SUCCESS)
        return false;
    std::string_view text(answer, std::min<size_t>(returned, limit));
    text = text.substr(0, std::min(text.find_first_of(ends), ARRAYSIZE(value) - 1));
    if (text.empty()) return true;
    return MultiByteToWideChar(CP_THREAD_ACP, 0, text.data(), static_cast<int>(text.size()), value,
                               ARRAYSIZE(value) - 1) > 0;
}

bool ReadPartNumber(const RowRequest& request, InformationText& value) {
    return ReadNarrowText(request, kPartNumberLimit, {"\0 ", 2}, value);
}

bool ReadName(const RowRequest& request, InformationText& value) {
    return ReadNarrowText(request, kNameLimit, {"\0", 1}, value);
}

bool ReadMacAddress(const RowRequest& request, InformationText& value) {
    std::array<BYTE, 6> mac = {};
    return QueryNumber(request.source, request.oid, mac) &&
           SUCCEEDED(StringCchPrintfW(value, ARRAYSIZE(value),
                                      TEXT("%02X-%02X-%02X-%02X-%02X-%02X"), mac[0], mac[1], mac[2],
                                      mac[3], mac[4], mac[5]));
}

enum class OnFailure { KeepLast, ShowNone };

// In the order of reading, behind the network rows. The link's speed depends on its status.
const struct {
    InformationRowIndex row;
    bool (*read)(const RowRequest& request, InformationText& value);
    DWORD oid;
    OnFailure onFailure;
} kRowSources[] = {
    {ROW_DRIVER_VERSION, ReadDriverVersion, 0, OnFailure::KeepLast},
    {ROW_FIRMWARE_VERSION, ReadFirmwareVersion, OID_FIRMWARE_VERSION, OnFailure::KeepLast},
    {ROW_BUS_TYPE, ReadBusType, OID_BUS_KIND, OnFailure::KeepLast},
    {ROW_PORT_NUMBER, ReadPortNumber, OID_PORT_NUMBER, OnFailure::ShowNone},
    {ROW_LINK_SPEED, ReadLinkSpeed, OID_GEN_LINK_PARAMETERS, OnFailure::KeepLast},
    {ROW_PART_NUMBER, ReadPartNumber, OID_PART_NUMBER, OnFailure::KeepLast},
    {ROW_DEVICE_ID, ReadDeviceId, OID_DEVICE_ID, OnFailure::KeepLast},
    {ROW_REVISION_ID, ReadRevisionId, OID_REVISION_ID, OnFailure::KeepLast},
    {ROW_USER_NAME, ReadName, OID_USER_NAME, OnFailure::ShowNone},
    {ROW_PKEY, ReadName, OID_PKEY, OnFailure::ShowNone},
    {ROW_CURRENT_MAC_ADDRESS, ReadMacAddress, OID_802_3_CURRENT_ADDRESS, OnFailure::KeepLast},
    {ROW_PERMANENT_MAC_ADDRESS, ReadMacAddress, OID_802_3_PERMANENT_ADDRESS, OnFailure::KeepLast},
};

// An adapter that the table doesn't list is disabled.
void ReadNetworkRows(const InformationSource& source, RefreshObserver& observer,
                     InformationRows& rows) {
    SetText(rows[ROW_NETWORK_STATUS].value, TEXT("Disabled"));
    SetText(rows[ROW_FRIENDLY_NAME].value, kNotAvailable);
    SetText(rows[ROW_IPV4_ADDRESS].value, kNotAvailable);
    InterfaceTable table;
    if (const UserFailure failure = table.Read(AddressFamily::Ipv4)) observer.Report(failure);
    InterfaceFacts facts;
    if (!table.Find(source.deviceName, facts)) return;
    SetText(rows[ROW_NETWORK_STATUS].value, facts.isUp ? TEXT("Connected") : kDisconnected);
    if (facts.friendlyName && *facts.friendlyName != 0)
        SetText(rows[ROW_FRIENDLY_NAME].value, facts.friendlyName);
    if (!facts.hasIpv4Address) return;
    const BYTE(&address)[4] = facts.ipv4Address;
    InformationText text;
    if (SUCCEEDED(StringCchPrintfW(text, ARRAYSIZE(text), TEXT("%d.%d.%d.%d"), address[0],
                                   address[1], address[2], address[3])))
        SetText(rows[ROW_IPV4_ADDRESS].value, text);
}

void LoadLabels(InformationRows& rows) {
    UINT id = IDS_INFO_DRIVER_VERSION;
    for (InformationRow& row : rows) {
        InformationText label;
        if (LoadStringW(Library().moduleHandle, id++, label, ARRAYSIZE(label)) > 0)
            SetText(row.label, label);
    }
}

}  // namespace

bool RefreshRows(const InformationSource& source, RefreshObserver& observer,
                 InformationRows& rows) {
    LoadLabels(rows);
    if (observer.StopRequested()) return false;
    ReadNetworkRows(source, observer, rows);
    for (const auto& rowSource : kRowSources) {
        if (observer.StopRequested()) return false;
        InformationText value = {};
        InformationText& shown = rows[rowSource.row].value;
        if (rowSource.read({source, rows, rowSource.oid}, value))
            SetText(shown, value);
        else if (rowSource.onFailure == OnFailure::ShowNone || shown[0] == 0)
            SetText(shown, kNotAvailable);
    }
    return true;
}
