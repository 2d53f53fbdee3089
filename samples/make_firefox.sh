#!/usr/bin/env bash
# Writes the Firefox part of the sample AppData tree: two profiles, each with a places.sqlite made by the SQL files
# beside this script. With the same version of sqlite3 the files come out the same to the byte.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
root=${1:-$here/AppData}
firefox=$root/Mozilla/FireFox

rm -rf "$firefox"
mkdir -p "$firefox"
printf '%s\r\n' \
  '[General]' 'StartWithLastProfile=1' 'Version=2' '' \
  '[Profile0]' 'Name=default' 'IsRelative=1' 'Path=Profiles/k7f2m4ax.default' 'Default=1' '' \
  '[Profile1]' 'Name=Familie' 'IsRelative=1' 'Path=Profiles/q9w3e5rt.familie' '' >"$firefox/profiles.ini"

# make PROFILE-FOLDER BOOKMARKS
make() {
  mkdir -p "$firefox/Profiles/$1"
  { cat "$here/make_firefox.sql" "$here/$2"; echo 'COMMIT; VACUUM;'; } |
    sqlite3 -bail "$firefox/Profiles/$1/places.sqlite" >/dev/null
}

make k7f2m4ax.default make_firefox_default.sql
make q9w3e5rt.familie make_firefox_familie.sql
