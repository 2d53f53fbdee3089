#!/usr/bin/env python3
"""Writes time_zones.txt: what local clocks show, by the time-zone database that Python reads.

    python3 tests/data/make_time_zones.py > tests/data/time_zones.txt

Two kinds of lines:
    moment <zone> <seconds since 1970> <local display text>
    local <zone> <local display text> <seconds since 1970>
The second kind is the way back. Of a time that occurs twice the first occurrence counts; a time that is skipped is
read with the offset in force before the change.
"""

from datetime import datetime, timedelta, timezone
from zoneinfo import ZoneInfo

ZONES = ["Europe/Berlin", "America/New_York", "Asia/Kolkata", "UTC"]
YEARS = [1971, 1980, 1996, 2006, 2007, 2010, 2026, 2037]
UTC = timezone.utc


def offset(zone, moment):
    return datetime.fromtimestamp(moment, zone).utcoffset()


def changes(zone, year):
    """The seconds at which the zone's offset changes within a year."""
    hour = int(datetime(year, 1, 1, tzinfo=UTC).timestamp())
    end = int(datetime(year + 1, 1, 1, tzinfo=UTC).timestamp())
    while hour < end:
        if offset(zone, hour) != offset(zone, hour + 3600):
            yield hour + 3600
        hour += 3600


def display(local):
    return local.strftime("%d.%m.%Y %H:%M:%S")


def main():
    for name in ZONES:
        zone = ZoneInfo(name)
        moments = {0, 1, 86399, 1262347200, 2147483647}
        locals_ = {datetime(2010, 1, 1), datetime(2010, 7, 1, 12, 30, 45), datetime(2000, 2, 29, 23, 59, 59)}
        for year in YEARS:
            moments.add(int(datetime(year, 1, 1, tzinfo=UTC).timestamp()))
            moments.add(int(datetime(year, 7, 1, 12, 0, 1, tzinfo=UTC).timestamp()))
            for change in changes(zone, year):
                for seconds in (-7200, -3601, -3600, -1, 0, 1, 1800, 3599, 3600, 7200):
                    moments.add(change + seconds)
                # The hours around the change as the clock on the wall shows them, the skipped or repeated one too.
                wall = datetime.fromtimestamp(change - 1, zone).replace(tzinfo=None) + timedelta(seconds=1)
                for seconds in (-7200, -3601, -3600, -1800, -1, 0, 1, 1800, 3599, 3600, 7200):
                    locals_.add(wall + timedelta(seconds=seconds))
        for moment in sorted(moments):
            print("moment", name, moment, display(datetime.fromtimestamp(moment, zone)))
        for local in sorted(locals_):
            print("local", name, display(local), int(local.replace(tzinfo=zone).timestamp()))


main()
