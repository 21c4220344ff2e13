# Sourced from the root of the tree: Wine as a Windows to run our own programs in. A prefix is a
# folder that holds one.

root=$PWD
wine_work=$root/build/wine
export WINEDEBUG=-all WINEDLLOVERRIDES='mscoree=;mshtml='
# Wine's own locks.
export TMPDIR=$wine_work/tmp
mkdir -p "$TMPDIR"
wine=$(command -v wine64 || command -v wine || echo /usr/lib/wine/wine64)

# on_display SCRIPT ARGUMENT...: starts the calling script anew on a display in memory, and keeps a
# second one of its kind waiting until it is through.
on_display() {
    [ -z "${IN_MEMORY-}" ] || return 0
    command -v xvfb-run >/dev/null || { echo "xvfb-run is missing (apt-get install xvfb xauth)"; exit 1; }
    exec env IN_MEMORY=1 flock "$wine_work" xvfb-run -a -s '-screen 0 1024x900x24' "$@"
}

# windows_path FILE: as a Windows program names it.
windows_path() {
    printf 'Z:%s' "$(realpath "$1")" | tr / '\\'
}

# new_prefix FOLDER: makes an empty Windows whose windows close at once, and ends its processes.
new_prefix() {
    WINEPREFIX=$1 "$wine" wineboot -i >/dev/null 2>&1
    # What it brings itself would stand among the values of a sample.
    WINEPREFIX=$1 "$wine" reg delete 'HKLM\System\CurrentControlSet\Services\Tcpip\Parameters' /f >/dev/null 2>&1
    # Without a window manager nobody answers for the windows, and each would wait seconds for it.
    WINEPREFIX=$1 "$wine" reg add 'HKCU\Software\Wine\X11 Driver' /v Managed /d N /f >/dev/null 2>&1 || return 1
    end_prefix "$1"
}

# copy_prefix FROM TO: the registry is copied, files that nobody changes are shared.
copy_prefix() {
    cp -al "$1" "$2" && cp --remove-destination "$1"/*.reg "$2"/
}

# end_prefix FOLDER: ends its processes and waits until its registry is written.
end_prefix() {
    WINEPREFIX=$1 wineserver -k >/dev/null 2>&1
    WINEPREFIX=$1 wineserver -w
}

# wine_version SAMPLE: how Wine names the version that a machine file gives.
wine_version() {
    local version
    version=$(sed -n 's/^"\(Version\|CurrentVersion\)"="\([0-9.]*\)".*/\2/p' "$1" | head -n 1)
    case $version in
        5.*) echo winxp ;;
        6.0) echo vista ;;
        6.1) echo win7 ;;
        *) echo win8 ;;
    esac
}

# import_sample SAMPLE SCRATCH SHEET: the machine file, with the version that it names, becomes that
# of the prefix in WINEPREFIX. SHEET turns it into what the system's own import takes.
import_sample() {
    "$3" "$1" --script - --save "$2" </dev/null || return 1
    printf '\n[HKEY_CURRENT_USER\\Software\\Wine]\n"Version"="%s"\n' "$(wine_version "$1")" | sed 's/$/\r/' | iconv -t UTF-16LE >>"$2"
    "$wine" regedit /S "$(windows_path "$2")"
}
