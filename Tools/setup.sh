# Sourced by the other scripts: finds the project and installs missing Debian packages.

FUNDO_ROOT=$(cd "$(dirname "$0")/.." && pwd)
cd "$FUNDO_ROOT"

# install_missing PACKAGE...: asks dpkg first, so that a second run touches nothing.
install_missing() {
    missing=
    for package in "$@"; do
        dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing="$missing $package"
    done
    [ -n "$missing" ] || return 0
    as_root=
    [ "$(id -u)" -eq 0 ] || as_root=sudo
    echo "installing:$missing"
    $as_root apt-get update -qq
    # shellcheck disable=SC2086 # a list of names
    $as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends $missing
}

BUILD_PACKAGES="g++ cmake ninja-build"
TEST_PACKAGES="$BUILD_PACKAGES libgtest-dev libbenchmark-dev libssl-dev zlib1g-dev python3"
