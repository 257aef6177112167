#!/usr/bin/env bash
# Installs the Debian 12 packages Vessantorium needs, only those missing.
set -euo pipefail

packages=(
  build-essential cmake ninja-build pkg-config
  qt6-base-dev qt6-svg-dev libqt6svg6 libqcustomplot-dev libqcustomplot2.1-qt6 qt6-qpa-plugins
  libcli11-dev libfmt-dev nlohmann-json3-dev libfftw3-dev libgsl-dev
  libgtest-dev libgmock-dev libbenchmark-dev
)
if [[ "${VESS_WITH_FUZZ:-0}" == 1 ]]; then
  packages+=(clang libclang-rt-14-dev)
fi

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done

if ((${#missing[@]})); then
  echo "Installing: ${missing[*]}"
  sudo=""
  if [[ $(id -u) != 0 ]]; then sudo="sudo"; fi
  $sudo apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi
