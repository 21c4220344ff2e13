# Sourced from the root of the tree: Wine as a Windows to run our own programs in. A prefix is a
# folder that holds one.

root=$PWD
wine_work=$root/build/wine
export WINEDEBUG=-all WINEDLLOVERRIDES='mscoree=;mshtml='
# Wine's own locks.
export TMPDIR=$wine_work/tmp
mkdir -p "$TMPDIR"
wine=$(command -v wine64 || command -v wine || echo /usr/lib/wine/wine64)

# alone COMMAND...: starts the calling script anew, and keeps a second one waiting until it is through.
alone() {
    [ -n "${IS_ALONE-}" ] || exec env IS_ALONE=1 flock -o "$wine_work" "$@"
}

# What ends with this code says that Wine didn't start, as against a program that did and failed.
no_wine=75

# once_more WHAT COMMAND...: the command, and when Wine didn't start for it, the same again.
once_more() {
    local what=$1 code=0
    shift
    "$@" || code=$?
    [ $code = $no_wine ] || return $code
    echo "note: $what: Wine didn't start; tried once more"
    "$@"
}

# windows_path FILE: as a Windows program names it.
windows_path() {
    printf 'Z:%s' "$(realpath "$1")" | tr / '\\'
}

# new_prefix FOLDER: makes an empty Windows, and ends its processes. Its windows are in memory, so
# that no display is needed and nothing that they do waits for one.
new_prefix() {
    rm -rf "$1"
    start_prefix "$1"
    WINEPREFIX=$1 "$wine" wineboot -i >/dev/null 2>&1
    local code=0
    WINEPREFIX=$1 "$wine" reg add 'HKCU\Software\Wine\Drivers' /v Graphics /d null /f >/dev/null 2>&1 || code=$no_wine
    end_prefix "$1"
    return $code
}

# copy_prefix FROM TO: the registry is copied, files that nobody changes are shared.
copy_prefix() {
    cp -al "$1" "$2" && cp --remove-destination "$1"/*.reg "$2"/
}

# start_prefix FOLDER: its server, which then doesn't go between one program and the next.
start_prefix() {
    mkdir -p "$1"
    WINEPREFIX=$1 wineserver -p300 >/dev/null 2>&1
}

# end_prefix FOLDER: ends its processes and waits until its registry is written.
end_prefix() {
    WINEPREFIX=$1 wineserver -k >/dev/null 2>&1
    WINEPREFIX=$1 wineserver -w
}

# version SAMPLE: the version and product type that a machine file gives, where Wine looks for its own.
version() {
    local version product
    version=$(sed -n 's/^"\(Version\|CurrentVersion\)"="\([0-9.]*\)".*/\2/p' "$1" | head -n 1)
    product=$(sed -n 's/^"ProductType"=//p' "$1" | tr -d '\r' | head -n 1)
    case $product in
        dword:00000001 | '') product='"WinNT"' ;;
        dword:00000002) product='"LanmanNT"' ;;
        dword:*) product='"ServerNT"' ;;
    esac
    cat <<END

[HKEY_LOCAL_MACHINE\Software\Microsoft\Windows NT\CurrentVersion]
"CurrentVersion"="${version:-6.2}"
"CurrentBuildNumber"="9200"
"CurrentMajorVersionNumber"=-
"CurrentMinorVersionNumber"=-

[HKEY_LOCAL_MACHINE\System\CurrentControlSet\Control\ProductOptions]
"ProductType"=$product
END
}

# What a sample or the library may make, and what stands there of Wine's own.
sample_keys=(
    'SOFTWARE\Corvanta' 'SOFTWARE\StandIn'
    'SYSTEM\CurrentControlSet\Control\Class\'{'{4D36E972-E325-11CE-BFC1-08002BE10318}','{4D36E97D-E325-11CE-BFC1-08002BE10318}'}
    'SYSTEM\CurrentControlSet\Control\Network'
    'SYSTEM\CurrentControlSet\Enum\'{IBA,PCI,ROOT,TSR4}
    'SYSTEM\CurrentControlSet\Services\'{AFD,MUXMP,MUXP,'Tcpip\Parameters'})

# import_sample SAMPLE SCRATCH SHEET: the machine file, with the version that it names, becomes that
# of the prefix in WINEPREFIX, which has been started, in place of an earlier one. SHEET turns it into what
# the system's own import takes.
import_sample() {
    "$3" "$1" --script - --save "$2" </dev/null || return 1
    {
        echo 'Windows Registry Editor Version 5.00'
        printf '\n[-HKEY_LOCAL_MACHINE\\%s]\n' "${sample_keys[@]}"
        iconv -f UTF-16 -t UTF-8 "$2" | sed '1d; s/\r$//'
        version "$1"
    } | sed 's/$/\r/' | iconv -f UTF-8 -t UTF-16 >"$2.new" && mv "$2.new" "$2"
    "$wine" regedit /S "$(windows_path "$2")" 2>/dev/null || return $no_wine
}
