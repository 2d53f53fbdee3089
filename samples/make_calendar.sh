#!/bin/sh
# Writes the sample calendars into a profile folder: make_calendar.sh [FOLDER]
#
# Without a folder they go into Sunbird's profile of the sample AppData tree. A Thunderbird profile takes them too,
# for Lightning.
set -eu

here=$(cd "$(dirname "$0")" && pwd)
folder=${1:-"$here/AppData/Mozilla/Sunbird/Profiles/h7w2m4tz.default"}

mkdir -p "$folder"
rm -f "$folder/storage.sdb"
sqlite3 -bail "$folder/storage.sdb" < "$here/make_calendar.sql"
