# Sourced by run, test and .ci/run, which say in $root where the tree lies: installs the Debian packages that are
# missing, and builds. Needs the network only for packages.
# shellcheck shell=bash
# shellcheck disable=SC2034,SC2154 # the lists are read, and the root is set, by those that source this

runPackages=(g++ cmake ninja-build libsqlite3-dev libcli11-dev libfmt-dev nlohmann-json3-dev qt6-base-dev \
  qt6-translations-l10n)
testPackages=("${runPackages[@]}" libgtest-dev libgmock-dev python3 sqlite3 tzdata pkgconf binutils man-db zsh fish)
ciPackages=("${testPackages[@]}" clang clang-tidy-16 clang-format libclang-rt-14-dev xvfb git g++-mingw-w64-x86-64-posix \
  shellcheck flake8 mmdebstrap thunderbird firefox-esr)
windowsPackages=(g++-mingw-w64-x86-64-posix g++-mingw-w64-i686-posix cmake ninja-build libcli11-dev libfmt-dev \
  nlohmann-json3-dev googletest mingw-w64-tools wine64 python3 xvfb xdotool imagemagick)

need() {
  local missing=() package
  for package in "$@"; do
    dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null | grep -qx installed || missing+=("$package")
  done
  [ ${#missing[@]} -eq 0 ] && return
  echo "Installing: ${missing[*]}" >&2
  local asRoot=()
  if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || { echo "Please install as root: apt-get install ${missing[*]}" >&2; exit 3; }
    asRoot=(sudo)
  fi
  # Standard input stays out of it: what is piped into the command line belongs to that.
  "${asRoot[@]}" apt-get update -qq >&2 </dev/null
  "${asRoot[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" \
    >&2 </dev/null
}

# Configures and builds a preset quietly; on failure the whole output is shown.
build() {
  local preset=$1 log
  shift
  log=$(mktemp)
  if [ ! -f "$root/build/$preset/build.ninja" ]; then
    echo "Building ($preset) ..." >&2
    (cd "$root" && cmake --preset "$preset") >"$log" 2>&1 </dev/null || { cat "$log" >&2; rm -f "$log"; exit 3; }
  fi
  cmake --build "$root/build/$preset" "$@" >"$log" 2>&1 </dev/null || { cat "$log" >&2; rm -f "$log"; exit 3; }
  rm -f "$log"
}
