#pragma once
// Describes a machine with one card, as a machine file's text. What a test doesn't set is a
// two-port Ethernet card on a machine of one node with eight processors, at level 2, with nothing
// to change in the TCP settings.

#include <string>
#include <vector>

class Sample {
  public:
    enum class Kind { Ethernet, Ipoib };

    Sample& Version(const std::string& version);  // "6.2"
    Sample& Server();                             // a server instead of a workstation
    Sample& Processors(const std::string& groups, const std::string& nodes);  // "8,8", "0,0,1,1"
    Sample& Ticks(const std::string& ticks);  // doorbell times of the card, by node
    Sample& Ports(Kind first, Kind second);
    Sample& OnePort(Kind kind);
    // The permanent MAC addresses, 00-02-C9-11-22-33 form; the port GUIDs follow from them.
    Sample& Macs(const std::string& first, const std::string& second);
    Sample& NoCard();
    // TCP and AFD settings that a run has to change.
    Sample& TcpToChange();
    // That many VLANs over the first port, from samples/many-vlans.awk.
    Sample& Vlans(int count);
    // A further value: path below HKEY_LOCAL_MACHINE, line as in a machine file.
    Sample& With(const std::string& path, const std::string& line);
    // A value of the first (1) or second (2) port's class key.
    Sample& PortValue(int port, const std::string& line);

    // A machine file instead of what is described.
    Sample& Whole(const std::string& text);

    std::string Text() const;

    static const char* ComponentId(Kind kind);
    static std::string InstanceId(int port, Kind kind);
    std::string InstanceId(int port) const;
    // The device that carries the ports, and its class key.
    static const char* BusInstanceId();
    static const char* BusClassKey();
    static const char* Guid(int port);
    // Below HKEY_LOCAL_MACHINE.
    static std::string ClassKey(int port);
    static const char* ConnectionName(int port);

  private:
    void AddPort(std::string& text, int port) const;

    std::string m_ticks = "50";
    std::vector<Kind> m_kinds = {Kind::Ethernet, Kind::Ethernet};
    std::vector<std::string> m_macs = {"00-02-C9-11-22-33", "00-02-C9-11-22-34"};
    bool m_card = true;
    int m_vlans = 0;
    std::string m_whole;
    std::vector<std::pair<std::string, std::string>> m_more;
};
