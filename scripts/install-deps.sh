#!/usr/bin/env bash
# Installs the Debian packages that building, running and testing Tabulon need,
# and only those that are missing.
set -euo pipefail

build_packages=(cmake ninja-build ccache g++ pkg-config qtbase5-dev qtdeclarative5-dev
    libqt5svg5-dev qttools5-dev-tools libquazip1-qt5-dev libfreexl-dev)
test_packages=(xvfb xauth python3-openpyxl python3-xlrd python3-xlwt python3-xlsxwriter
    libreoffice-calc-nogui)

missing=()
for package in "${build_packages[@]}" "${test_packages[@]}"; do
    if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed'; then
        missing+=("$package")
    fi
done

if [ ${#missing[@]} -eq 0 ]; then
    echo "install-deps: all packages present"
    exit 0
fi

sudo=""
if [ "$(id -u)" -ne 0 ]; then
    sudo="sudo"
fi
echo "install-deps: installing ${missing[*]}"
$sudo apt-get update -qq
DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y --no-install-recommends "${missing[@]}"
