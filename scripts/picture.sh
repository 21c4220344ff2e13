#!/usr/bin/env bash
# Writes a picture of each tab, in a real property sheet under Wine, to the folder FOLDER: at 96 dots an
# inch, and at 144 with "-144" in its name.
#   scripts/picture.sh FOLDER
# Needs build/host and build/windows.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/wine.sh
command -v xvfb-run >/dev/null || { echo "xvfb-run is missing (apt-get install xvfb xauth)"; exit 1; }
alone xvfb-run -a -s '-screen 0 1024x900x24' scripts/picture.sh "$@"
folder=$1
work=$wine_work/picture
# The font of a window's own buttons, which Wine looks for among those of its Windows.
marlett=$(find /usr/share -name marlett.ttf 2>/dev/null | head -n 1)

# picture NAME TAB CAPTION: the window of that caption, once the tab is open.
picture() {
    local line
    printf 'open %s\ntabs\n' "$2" >&"$commands"
    read -r line <&"$answers" && [ -n "$line" ]
    while [ "$line" != "$last_tab" ]; do read -r line <&"$answers"; done
    # The tab is drawn before the next command is asked for; this one is asked for then.
    printf 'tabs\n' >&"$commands"
    read -r line <&"$answers"
    while [ "$line" != "$last_tab" ]; do read -r line <&"$answers"; done
    import -window "$3" -depth 8 +dither -colors 64 "PNG8:$folder/$1$suffix.png"
}

# sheet_of SAMPLE LAST_TAB CAPTION [DEVICE] [NAME TAB]...: opens the sheet and takes those pictures.
sheet_of() {
    local sample=$1 caption=$3 device=$4
    last_tab=$2
    shift 4
    copy_prefix "$work/base" "$work/prefix"
    start_prefix "$work/prefix"
    export WINEPREFIX=$work/prefix
    cp -rL samples/drive/. "$WINEPREFIX/drive_c/"
    import_sample "samples/$sample.reg" "$work/import.reg" build/host/bin/sheet
    [ -z "$suffix" ] || "$wine" reg add 'HKCU\Control Panel\Desktop' /v LogPixels /t REG_DWORD /d 144 /f >/dev/null
    coproc SHEET { "$wine" build/windows/bin/sheet.exe --lend "$(windows_path build/windows/bin/lend.dll)" ${device:+--device "$device"} --script - 2>/dev/null; }
    answers=${SHEET[0]} commands=${SHEET[1]}
    while [ $# -gt 0 ]; do
        picture "$1" "$2" "$caption"
        shift 2
    done
    printf 'cancel\n' >&"$commands"
    exec {commands}>&-
    wait "$SHEET_PID" || true
    end_prefix "$WINEPREFIX"
    rm -rf "$work/prefix"
}

rm -rf "$work"
mkdir -p "$work" "$folder"
trap 'rm -rf "$work"' EXIT
new_prefix "$work/base"
# Windows on a display. Without a window manager nobody answers for them, and each would wait seconds
# for it.
WINEPREFIX=$work/base "$wine" reg delete 'HKCU\Software\Wine\Drivers' /v Graphics /f >/dev/null
WINEPREFIX=$work/base "$wine" reg add 'HKCU\Software\Wine\X11 Driver' /v Managed /d N /f >/dev/null
end_prefix "$work/base"
[ -z "$marlett" ] || cp "$marlett" "$work/base/drive_c/windows/Fonts/"
for suffix in '' -144; do
    sheet_of two-port-ethernet Performance 'Corvanta Tessaron Ethernet Adapter Properties' 'TSR4\Tessaron-ETH26_Eth\6&2A9F31C7&0&01' information Information performance Performance
    sheet_of two-port-ipoib Performance 'Corvanta Tessaron IPoIB Adapter Properties' '' performance-ipoib Performance
    sheet_of port-types 'Port Protocol' 'Corvanta Tessaron Bus Device Properties' 'PCI\VEN_1C57&DEV_1A22&SUBSYS_00311C57&REV_01\4&1A5D73C9&0&0008' port-protocol 'Port Protocol'
done
