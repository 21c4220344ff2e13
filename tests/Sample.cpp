#include "Sample.h"

#include <cctype>
#include <cstdio>
#include <stdexcept>

namespace {

const char kHklm[] = "HKEY_LOCAL_MACHINE\\";
const char kNetClass[] = "{4D36E972-E325-11CE-BFC1-08002BE10318}";
const char kStandIn[] = "SOFTWARE\\StandIn";

// What every machine has, unless the sample says otherwise.
const char kMachine[] = R"(Windows Registry Editor Version 5.00

[HKEY_LOCAL_MACHINE\SOFTWARE\StandIn]
"Version"="6.2"
"ProductType"=dword:1
"Time"="2026-11-19 08:05"

[HKEY_LOCAL_MACHINE\SOFTWARE\StandIn\Processors]
"Groups"="8"
"Nodes"="0,0,0,0,0,0,0,0"

[HKEY_LOCAL_MACHINE\SYSTEM\CurrentControlSet\Enum\PCI\VEN_1C57&DEV_1A20\4&1D8E6F20&0&0018]
"Service"="cvta_bus"
"ClassGUID"="{4D36E97D-E325-11CE-BFC1-08002BE10318}"
"Driver"="{4D36E97D-E325-11CE-BFC1-08002BE10318}\\0031"

[HKEY_LOCAL_MACHINE\SOFTWARE\Corvanta]
"InstalledPath"="C:\\Program Files\\Corvanta\\"

[HKEY_LOCAL_MACHINE\SYSTEM\CurrentControlSet\Services\Tcpip\Parameters]
"SackOpts"=dword:0

[HKEY_LOCAL_MACHINE\SYSTEM\CurrentControlSet\Services\AFD\Parameters]
"FastSendDatagramThreshold"=dword:10000
)";

std::string Escaped(const std::string& text) {
    std::string escaped;
    for (const char c : text) {
        if (c == '\\' || c == '"') escaped += '\\';
        escaped += c;
    }
    return escaped;
}

std::string Key(const std::string& path) {
    return "\n[" + (kHklm + path) + "]\n";
}

std::string Line(const std::string& name, const std::string& text) {
    return "\"" + name + "\"=\"" + Escaped(text) + "\"\n";
}

// The port GUID of a MAC: on Ethernet bit 1 of the first byte is flipped and FF FE stands in the
// middle; on InfiniBand 02 00 does, after the manufacturer's three bytes.
std::string PortGuid(const std::string& mac, Sample::Kind kind) {
    std::string digits;
    for (const char c : mac) {
        if (c != '-') digits += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
    if (kind == Sample::Kind::Ipoib) return "0002c90200" + digits.substr(6);
    digits[1] = "23016745ab89efcd"[std::stoi(digits.substr(1, 1), nullptr, 16)];
    return digits.substr(0, 6) + "fffe" + digits.substr(6);
}

// Without the file's first line.
std::string ManyVlans(int count) {
    const std::string command = "'" SOURCE_DIR "/samples/many-vlans.awk' " + std::to_string(count);
    FILE* output = popen(command.c_str(), "r");
    if (output == nullptr) throw std::runtime_error(command);
    std::string text;
    char piece[65536];
    while (const std::size_t length = std::fread(piece, 1, sizeof(piece), output))
        text.append(piece, length);
    if (pclose(output) != 0) throw std::runtime_error(command);
    return text.substr(text.find('\n'));
}

}  // namespace

Sample& Sample::Version(const std::string& version) {
    return With(kStandIn, Line("Version", version));
}

Sample& Sample::Server() {
    return With(kStandIn, "\"ProductType\"=dword:3");
}

Sample& Sample::Processors(const std::string& groups, const std::string& nodes) {
    return With(kStandIn + std::string("\\Processors"),
                Line("Groups", groups) + Line("Nodes", nodes));
}

Sample& Sample::Ticks(const std::string& ticks) {
    m_ticks = ticks;
    return *this;
}

Sample& Sample::Ports(Kind first, Kind second) {
    m_kinds = {first, second};
    return *this;
}

Sample& Sample::OnePort(Kind kind) {
    m_kinds = {kind};
    return *this;
}

Sample& Sample::Macs(const std::string& first, const std::string& second) {
    m_macs = {first, second};
    return *this;
}

Sample& Sample::NoCard() {
    m_card = false;
    return *this;
}

Sample& Sample::TcpToChange() {
    const std::string services = "SYSTEM\\CurrentControlSet\\Services\\";
    return With(services + "Tcpip\\Parameters", "\"SackOpts\"=-")
        .With(services + "AFD\\Parameters", "\"FastSendDatagramThreshold\"=dword:400");
}

Sample& Sample::Vlans(int count) {
    m_vlans = count;
    return *this;
}

Sample& Sample::With(const std::string& path, const std::string& line) {
    m_more.emplace_back(path, line);
    return *this;
}

Sample& Sample::PortValue(int port, const std::string& line) {
    return With(ClassKey(port), line);
}

const char* Sample::ComponentId(Kind kind) {
    return kind == Kind::Ethernet ? "TSR4\\Tessaron-ETH26_Eth" : "IBA\\Tessaron-IPOIB26_IPoIB";
}

std::string Sample::InstanceId(int port, Kind kind) {
    return std::string(ComponentId(kind)) + "\\6&2A9F31C7&0&0" + std::to_string(port);
}

std::string Sample::InstanceId(int port) const {
    return InstanceId(port, m_kinds[static_cast<std::size_t>(port - 1)]);
}

const char* Sample::BusInstanceId() {
    return "PCI\\VEN_1C57&DEV_1A20\\4&1D8E6F20&0&0018";
}

const char* Sample::BusClassKey() {
    return "SYSTEM\\CurrentControlSet\\Control\\Class\\{4D36E97D-E325-11CE-BFC1-08002BE10318}"
           "\\0031";
}

const char* Sample::Guid(int port) {
    return port == 1 ? "{6B29FC40-CA47-4067-B31D-00DD010662DA}"
                     : "{A12F7E08-5D3C-4B9A-9C41-3E5F20D7B811}";
}

std::string Sample::ClassKey(int port) {
    return std::string("SYSTEM\\CurrentControlSet\\Control\\Class\\") + kNetClass +
           (port == 1 ? "\\0011" : "\\0012");
}

const char* Sample::ConnectionName(int port) {
    return port == 1 ? "Local Area Connection 3" : "Local Area Connection 4";
}

void Sample::AddPort(std::string& text, int port) const {
    const std::size_t index = static_cast<std::size_t>(port - 1);
    const bool ethernet = m_kinds[index] == Kind::Ethernet;
    const std::string id = InstanceId(port);
    text += Key("SYSTEM\\CurrentControlSet\\Enum\\" + id);
    text += Line("Service", ethernet ? "cvta_eth6x" : "ipoib6x");
    text += Line("Driver", std::string(kNetClass) + (port == 1 ? "\\0011" : "\\0012"));
    text += Line("ClassGUID", kNetClass);
    text += Key(ClassKey(port));
    text += Line("ComponentId", ComponentId(m_kinds[index]));
    text += Line("NetCfgInstanceId", Guid(port));
    text += Line("EnumPropPages32", "WinTsrTune_ipoib.dll,WinTsrTunePropPageProvider");
    text += Key(std::string("SYSTEM\\CurrentControlSet\\Control\\Network\\") + kNetClass + "\\" +
                Guid(port) + "\\Connection");
    text += Line("Name", ConnectionName(port));
    text += Line("PnpInstanceID", id);
    text += Key(std::string("SOFTWARE\\StandIn\\Interfaces\\") + Guid(port));
    text += Line("Description", ethernet ? "Corvanta Tessaron Ethernet Adapter"
                                         : "Corvanta Tessaron IPoIB Adapter");
    text += Line("PermanentAddress", m_macs[index]);
    text += "\"Up\"=dword:1\n";
}

Sample& Sample::Whole(const std::string& text) {
    m_whole = text;
    return *this;
}

std::string Sample::Text() const {
    if (!m_whole.empty()) return m_whole;
    std::string text = kMachine;
    if (m_vlans != 0) text += ManyVlans(m_vlans);
    text += Key("SOFTWARE\\StandIn\\DeviceTree");
    std::string children;
    std::string guids;
    for (std::size_t i = 0; i < m_kinds.size(); ++i) {
        const int port = static_cast<int>(i) + 1;
        children += (i == 0 ? "" : ";") + InstanceId(port);
        guids += (i == 0 ? "" : ";") + PortGuid(m_macs[i], m_kinds[i]);
    }
    text += Line(Escaped(BusInstanceId()), children);
    if (m_card) {
        text += Key("SOFTWARE\\StandIn\\Cards\\0002c90300a5b6c0");
        text += Line("Ports", guids);
        text += Line("DoorbellTicks", m_ticks);
    }
    for (std::size_t i = 0; i < m_kinds.size(); ++i)
        AddPort(text, static_cast<int>(i) + 1);
    for (const auto& [path, line] : m_more)
        text += Key(path) + line + "\n";
    return text;
}
