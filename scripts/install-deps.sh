#!/usr/bin/env bash
# Installs what building and testing Marigold needs on Debian 12. Safe to run again: when every
# package is already there it changes nothing and needs no network.
set -euo pipefail

packages=(
  build-essential cmake pkg-config ccache
  libplist-dev libicu-dev libglib2.0-dev libcurl4-openssl-dev libacl1-dev libtiff-dev
  libfmt-dev libcli11-dev libgtest-dev qt6-base-dev python3-aiosmtpd
  clang libclang-rt-14-dev rsync attr acl python3
  libqt6svg6
  e2fsprogs xfsprogs btrfs-progs exfatprogs exfat-fuse util-linux mount
  unrtf
  gvfs gvfs-backends gvfs-fuse dbus openssh-server cryptsetup-bin fuse3
)

missing=()
for package in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed'; then
    missing+=("$package")
  fi
done

if [ "${#missing[@]}" -eq 0 ]; then
  echo "install-deps: every package is installed"
  exit 0
fi

if [ "$(id -u)" -eq 0 ]; then
  as_root=()
elif command -v sudo >/dev/null 2>&1; then
  as_root=(sudo)
else
  echo "install-deps: missing ${missing[*]}, and neither root nor sudo is available" >&2
  exit 1
fi

echo "install-deps: installing ${missing[*]}"
"${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get update
"${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends "${packages[@]}"
