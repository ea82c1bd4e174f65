#!/usr/bin/env bash
# Installs, from Debian's packages, everything the build, the program and its tests need.
# Does nothing when all of it is there already.
set -euo pipefail

packages=(
  # build
  cmake ninja-build g++ pkg-config ccache
  # libraries
  libplist-dev zlib1g-dev libssl-dev libcurl4-openssl-dev nlohmann-json3-dev libpugixml-dev
  libsqlite3-dev libcli11-dev libfmt-dev
  # the printout of the package list as a PDF, with a font to set it in
  libcairo2-dev libpango1.0-dev fonts-dejavu-core
  # tests and benchmarks
  libgtest-dev libgmock-dev libbenchmark-dev
  # the FTP server of the tests, and curl's own tool beside the FTP and WebDAV clients in their benchmarks
  python3-pyftpdlib curl
  # the PDF printout read back (pdftotext, pdfinfo)
  poppler-utils
  # the WebDAV server of the tests (mod_dav, mod_ssl, htpasswd), run by the tests with a
  # configuration of their own on a port of their own: the system's server, which a fresh
  # machine starts on port 80, neither helps nor gets in the way
  apache2 apache2-utils
  # the device's own tools, as Debian has them
  dpkg dpkg-dev apt tar coreutils findutils bzip2 gawk openssl sharutils unzip procps sudo libplist-utils
  # the sandbox device builder
  python3
)

missing=()
for package in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed' || missing+=("$package")
done
if ((${#missing[@]})); then
  echo "Installing: ${missing[*]}"
  apt-get update -qq
  DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi
