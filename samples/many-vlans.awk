#!/usr/bin/awk -f
# Prints a machine with an Ethernet adapter that carries any number of VLANs, with the ids from 1 on:
#
#     samples/many-vlans.awk 256 >machine.reg
#     ./run machine.reg --device 'TSR4\Tessaron-ETH26_Eth\6&2A9F31C7&0&01'
#
# The adapter is the first port of two-port-ethernet.reg, so the file can be merged into that machine, too.

# A text in the bytes of a multi-string, without its end.
function bytes(text,    i, line) {
    for (i = 1; i <= length(text); i++) line = line code[substr(text, i, 1)]
    return line
}
function key(path) { printf "\n[HKEY_LOCAL_MACHINE\\%s]\n", path }
function vlan_guid(id) { return sprintf("{5E7B0D21-93C4-4F18-A6E2-%012X}", id) }
function connection(guid, name, device) {
    key("SYSTEM\\CurrentControlSet\\Control\\Network\\" net "\\" guid "\\Connection")
    printf "\"Name\"=\"%s\"\n\"PnpInstanceID\"=\"%s\"\n", name, device
}

BEGIN {
    count = ARGV[1] + 0
    net = "{4D36E972-E325-11CE-BFC1-08002BE10318}"
    adapter = "{6B29FC40-CA47-4067-B31D-00DD010662DA}"
    class_key = "SYSTEM\\CurrentControlSet\\Control\\Class\\" net "\\"
    provider = "\"EnumPropPages32\"=\"WinTsrTune_ipoib.dll,WinTsrTunePropPageProvider\"\n"
    for (i = 32; i < 127; i++) code[sprintf("%c", i)] = sprintf("%02x,00,", i)

    printf "Windows Registry Editor Version 5.00\n"
    key("SOFTWARE\\StandIn")
    printf "\"Version\"=\"6.2\"\n\"ProductType\"=dword:1\n\"Time\"=\"2026-11-19 08:05\"\n"
    key("SOFTWARE\\Corvanta")
    printf "\"InstalledPath\"=\"C:\\\\Program Files\\\\Corvanta\\\\\"\n"

    key("SYSTEM\\CurrentControlSet\\Enum\\TSR4\\Tessaron-ETH26_Eth\\6&2A9F31C7&0&01")
    printf "\"DeviceDesc\"=\"Corvanta Tessaron Ethernet Adapter\"\n\"ClassGUID\"=\"%s\"\n", net
    printf "\"Driver\"=\"%s\\\\0011\"\n\"Service\"=\"cvta_eth6x\"\n", net
    key(class_key "0011")
    printf "\"DriverDesc\"=\"Corvanta Tessaron Ethernet Adapter\"\n"
    printf "\"ComponentId\"=\"TSR4\\\\Tessaron-ETH26_Eth\"\n\"NetCfgInstanceId\"=\"%s\"\n%s", adapter, provider
    connection(adapter, "Local Area Connection 3", "TSR4\\\\Tessaron-ETH26_Eth\\\\6&2A9F31C7&0&01")
    key("SOFTWARE\\StandIn\\Interfaces\\" adapter)
    printf "\"Description\"=\"Corvanta Tessaron Ethernet Adapter\"\n\"PermanentAddress\"=\"00-02-C9-11-22-33\"\n"
    key("SOFTWARE\\StandIn\\NetCfg\\Bindings\\" adapter)
    printf "\"ms_tcpip->%s\"=\"ms_tcpip;enabled\"\n", adapter
    printf "\"cvta_muxp->%s\"=\"cvta_muxp;enabled\"\n", adapter

    key("SYSTEM\\CurrentControlSet\\Control\\Network\\{4D36E975-E325-11CE-BFC1-08002BE10318}\\{B84D19E7-5A02-4C6D-9F31-E8C7604B2AD5}")
    printf "\"ComponentId\"=\"cvta_muxp\"\n"
    key("SYSTEM\\CurrentControlSet\\Services\\MUXMP\\Enum")
    printf "\"Count\"=dword:%x\n", count
    for (id = 1; id <= count; id++) printf "\"%d\"=\"ROOT\\\\CVTA_MUXMP\\\\%04d\"\n", id - 1, id - 1
    # The newest first.
    key("SYSTEM\\CurrentControlSet\\Services\\MUXP\\Parameters\\Adapters\\" adapter)
    if (count > 0) printf "\"UpperBindings\"=hex(7):"
    device = bytes("\\Device\\")
    for (id = count; id >= 1; id--) printf "%s%s00,00,\\\n", device, bytes(vlan_guid(id))
    if (count > 0) printf "  00,00\n"

    for (id = 1; id <= count; id++) {
        guid = vlan_guid(id)
        key(sprintf("SYSTEM\\CurrentControlSet\\Enum\\ROOT\\CVTA_MUXMP\\%04d", id - 1))
        printf "\"DeviceDesc\"=\"Corvanta Virtual Miniport Driver\"\n"
        printf "\"FriendlyName\"=\"Corvanta Virtual Miniport Driver - VLAN Segment %d\"\n", id
        printf "\"Class\"=\"Net\"\n\"ClassGUID\"=\"%s\"\n\"Driver\"=\"%s\\\\%04d\"\n\"Service\"=\"MUXMP\"\n", net, net, id + 99
        key(class_key sprintf("%04d", id + 99))
        printf "\"ComponentId\"=\"cvta_muxmp\"\n\"NetCfgInstanceId\"=\"%s\"\n", guid
        printf "\"DriverDesc\"=\"Corvanta Virtual Miniport Driver\"\n%s", provider
        printf "\"VlanID\"=\"%d\"\n\"VlanName\"=\"Segment %d\"\n\"Priority\"=\"%d\"\n", id, id, id % 8
        connection(guid, "Local Area Connection " id + 4, sprintf("ROOT\\\\CVTA_MUXMP\\\\%04d", id - 1))
    }
}
