# Functions of the other scripts, which source this file. Changes to the top folder of the project.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

as_root() { if [ "$(id -u)" -eq 0 ]; then "$@"; else sudo "$@"; fi; }

# Installs those Debian packages that are missing.
need() {
    local package missing=()
    for package in "$@"; do
        dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing+=("$package")
    done
    [ ${#missing[@]} -eq 0 ] && return
    echo "Installing ${missing[*]}"
    # A mirror that is being renewed may lack one list; what is missing is known when the installation fails.
    as_root apt-get update -qq || true
    as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
}

# Configures and builds a preset, with the compilers in CXX and CC if they are set. A build folder of another compiler is
# configured from the beginning.
build() {
    local preset=$1 fresh=() cache="build/$1/CMakeCache.txt"
    shift
    if [ -f "$cache" ] && [ -n "${CXX:-}" ]; then
        grep -q "^CMAKE_CXX_COMPILER:[A-Z]*=$(command -v "$CXX")\$" "$cache" || fresh=(--fresh)
    fi
    cmake --preset "$preset" "${fresh[@]}" "$@" >/dev/null
    cmake --build --preset "$preset"
}

# Shortens the output of a build: every four seconds the last step, and at once whatever is not a step, such as an error.
progress() {
    local line step="preparing" shown=$SECONDS got
    while true; do
        got=0
        IFS= read -r -t 4 line || got=$?
        [ "$got" -eq 0 ] || [ "$got" -gt 128 ] || return 0 # the end, which is not a time-out
        case $got$line in
        0"["*) step=$line ;;
        0*) echo "$line" ;;
        esac
        [ $((SECONDS - shown)) -lt 4 ] && continue
        echo "  $SECONDS s  $step"
        shown=$SECONDS
    done
}

tools=(cmake ninja-build g++ libcli11-dev libp11-kit-dev)
case "${CXX:-}" in *clang*) tools+=(clang-14) ;; esac
