# Shared by the scripts; sourced, not run.

# Installs the Debian packages that are missing; says nothing when there are none.
install_packages() {
    local missing=() package log
    for package in "$@"; do
        dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null | grep -qx installed || missing+=("$package")
    done
    [ ${#missing[@]} -eq 0 ] && return
    [ "$(id -u)" -eq 0 ] || fail "these packages are missing, and installing them needs root: ${missing[*]}"
    echo "installing ${missing[*]}"
    log=$(mktemp)
    if ! { apt-get update && DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends \
        "${missing[@]}"; } >"$log" 2>&1; then
        tail -n 20 "$log" >&2
        rm -f "$log"
        fail "the packages could not be installed: ${missing[*]}"
    fi
    rm -f "$log"
}

fail() {
    echo "$*" >&2
    exit 1
}
