#!/usr/bin/env bash
# Installs every Debian package that building, running and testing VelluMark needs.
# Only what is missing is installed; sudo is used when we are not root.
set -euo pipefail

PACKAGES=(
  # toolchain
  build-essential cmake ninja-build pkg-config clang-format ccache
  # scripts/fuzz.sh: clang with libFuzzer and the sanitizers' runtime
  clang libclang-rt-14-dev
  # Qt 6 (QtGui for the logic, QtWidgets for the interface)
  qt6-base-dev qt6-base-dev-tools libgl-dev
  # Qt's own dialogs (files, colours, buttons) in Chinese
  qt6-translations-l10n
  # codecs and metafiles
  libjpeg62-turbo-dev libpng-dev libgif-dev libtiff-dev libexif-dev libuemf-dev
  # tests and benchmarks
  googletest libgtest-dev libgmock-dev libbenchmark-dev
  # the peers bench/peers.sh times against (ImageMagick is above)
  libvips-tools python3-opencv
  # reference decoders and sample files used by the tests
  imagemagick libsdl2-image-tests libimage-exiftool-perl
  # metafiles made and read by other programs: pstoedit writes EMF, libwmf's
  # wmf2gd and emf2svg read what the editor writes
  pstoedit libwmf-bin emf2svg
  # running the editor headless and fonts for its Chinese captions
  xvfb xauth fonts-noto-cjk
  # netpbm writes and reads the files of several families in the format tests
  netpbm
)

missing=()
for p in "${PACKAGES[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done

if [ ${#missing[@]} -eq 0 ]; then
  exit 0
fi

SUDO=""
if [ "$(id -u)" -ne 0 ]; then SUDO="sudo"; fi
echo "Installing: ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
$SUDO apt-get update -qq
$SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}"
