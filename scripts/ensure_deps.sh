#!/usr/bin/env bash
# Makes sure the Debian packages given as arguments are installed. As root it
# installs the missing ones; otherwise it names them and the command to run.
set -euo pipefail

missing=()
for package in "$@"; do
    if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed"; then
        missing+=("$package")
    fi
done
[ ${#missing[@]} -eq 0 ] && exit 0

if [ "$(id -u)" -eq 0 ]; then
    echo "Installing missing Debian packages: ${missing[*]}"
    export DEBIAN_FRONTEND=noninteractive
    apt-get update -qq
    apt-get install -y -qq --no-install-recommends "${missing[@]}"
else
    echo "Missing Debian packages: ${missing[*]}" >&2
    echo "Install them with:  sudo apt-get install -y ${missing[*]}" >&2
    exit 1
fi
