#!/usr/bin/env python3
"""The calendars that Thunderbird itself keeps, read and written by the command line.

Thunderbird starts on an empty home and gets three calendars with events of whole days, of other time zones and of none,
repeated ones and tasks. What the command line reads, while Thunderbird runs and after it has ended, is compared with
what Thunderbird lists: calendars, titles, times, places; nothing missing, nothing extra. Then the command line adds,
changes and removes events and tasks, and Thunderbird, started again, is asked what it has.

usage: calendars.py PROGRAM
"""
import json
import os
import pathlib
import subprocess
import sys
import tempfile

from marionette import Application

FAMILY, WORK, CLUB = "Familie 🦊", "Arbeit / Büro", "Anna's Verein"

# Calendar, lines of an event.
EVENTS = [
    (FAMILY, ["UID:whole-day", "SUMMARY:Geburtstag 🎂 von Mänu", "DTSTART;VALUE=DATE:20260615",
              "DTEND;VALUE=DATE:20260616"]),
    (FAMILY, ["UID:whole-days", "SUMMARY:Reise", "DTSTART;VALUE=DATE:20261230", "DTEND;VALUE=DATE:20270103",
              "LOCATION:Köln"]),
    (FAMILY, ["UID:day-without-end", "SUMMARY:Ein Tag", "DTSTART;VALUE=DATE:20260329"]),
    (FAMILY, ["UID:skipped-midnight", "SUMMARY:In Santiago beginnt er um eins", "DTSTART;VALUE=DATE:20260906",
              "DTEND;VALUE=DATE:20260907"]),
    (FAMILY, ["UID:skipped-time", "SUMMARY:Sommerzeit", "DTSTART:20260329T023000", "DTEND:20260329T030000"]),
    (FAMILY, ["UID:floating", "SUMMARY:Überall um neun", "DTSTART:20260620T090000", "DTEND:20260620T100000"]),
    (FAMILY, ["UID:utc", "SUMMARY:In UTC", "DTSTART:20260101T233000Z", "DTEND:20260102T003000Z", "LOCATION:漢字",
              "DESCRIPTION:eins\\nzwei"]),
    (FAMILY, ["UID:length", "SUMMARY:Mit Dauer", "DTSTART:20260801T080000Z", "DURATION:PT90M"]),
    (FAMILY, ["UID:untitled", "DTSTART:20260801T080000Z", "DTEND:20260801T090000Z"]),
    (FAMILY, ["UID:old", "SUMMARY:Vor 1970", "DTSTART:19391001T080000Z", "DTEND:19391001T090000Z"]),
    (FAMILY, ["UID:far", "SUMMARY:Nach 2038", "DTSTART:20990701T080000Z", "DTEND:20990701T090000Z"]),
    (FAMILY, ["UID:birthdays", "SUMMARY:Jedes Jahr", "DTSTART;VALUE=DATE:20200229", "DTEND;VALUE=DATE:20200301",
              "RRULE:FREQ=YEARLY"]),
    (WORK, ["UID:whole-day", "SUMMARY:Dieselbe ID; anderswo, mit Komma", "DTSTART:20260703T060000Z",
            "DTEND:20260703T070000Z"]),
    (WORK, ["UID:bars", "SUMMARY:Ein | Strich und 'Hochkommas'", "DTSTART:20261025T003000Z", "DTEND:20261025T023000Z"]),
    (CLUB, ["UID:club", "SUMMARY:Sitzung", "DTSTART:20260909T170000Z", "DTEND:20260909T190000Z"]),
    (CLUB, ["UID:rich", "SUMMARY:Mit allem", "DTSTART:20260910T170000Z", "DTEND:20260910T190000Z", "LOCATION:Hier",
            "DESCRIPTION:eins\\nzwei", "X-OWN:eigen", "PRIORITY:5", "STATUS:TENTATIVE", "CATEGORIES:Rot,Grün",
            "ATTENDEE;CN=Bert;PARTSTAT=ACCEPTED:mailto:bert@example.com", "ORGANIZER:mailto:anna@example.com",
            "RRULE:FREQ=WEEKLY;COUNT=3", "ATTACH:https://example.com/", "BEGIN:VALARM", "ACTION:DISPLAY",
            "TRIGGER:-PT15M", "DESCRIPTION:Gleich", "END:VALARM"]),
]
# Calendar, ID, title, zone, local start, rule.
IN_ZONES = [
    (WORK, "tokyo", "Tokio", "Asia/Tokyo", "20260701T090000", None),
    (WORK, "new-york", "New York", "America/New_York", "20260702T180000", None),
    (WORK, "kolkata", "Kalkutta", "Asia/Kolkata", "20260702T053000", None),
    (WORK, "kiritimati", "Tag in Kiritimati", "Pacific/Kiritimati", "20260115", None),
    (WORK, "auckland", "Tag in Auckland", "Pacific/Auckland", "20260115", None),
    (WORK, "weekly", "Jede Woche", "Europe/Berlin", "20260706T080000", "RRULE:FREQ=WEEKLY;COUNT=6"),
]
TASKS = [
    (FAMILY, ["UID:task-due", "SUMMARY:Bis dann", "DUE:20260620T090000Z"]),
    (WORK, ["UID:task", "SUMMARY:Ohne Frist ✅"]),
    (CLUB, ["UID:task-done", "SUMMARY:Erledigt", "STATUS:COMPLETED", "COMPLETED:20260620T090000Z",
            "PERCENT-COMPLETE:100"]),
]

FILL = """
const { cal } = ChromeUtils.importESModule("resource:///modules/calendar/calUtils.sys.mjs");
const { CalEvent } = ChromeUtils.importESModule("resource:///modules/CalEvent.sys.mjs");
const { CalTodo } = ChromeUtils.importESModule("resource:///modules/CalTodo.sys.mjs");
const { CalRecurrenceInfo } = ChromeUtils.importESModule("resource:///modules/CalRecurrenceInfo.sys.mjs");
const [names, events, inZones, tasks] = arguments;
const calendars = new Map(names.map(name => {
  const calendar = cal.manager.createCalendar("storage", Services.io.newURI("moz-storage-calendar://"));
  calendar.name = name;
  cal.manager.registerCalendar(calendar);
  return [name, calendar];
}));
const text = (kind, lines) => ["BEGIN:VCALENDAR", "VERSION:2.0", "PRODID:x", "BEGIN:" + kind, ...lines, "END:" + kind,
                               "END:VCALENDAR", ""].join("\\r\\n");
for (const [name, lines] of events) await calendars.get(name).addItem(new CalEvent(text("VEVENT", lines)));
for (const [name, lines] of tasks) await calendars.get(name).addItem(new CalTodo(text("VTODO", lines)));
for (const [name, id, title, zone, start, rule] of inZones) {
  const event = new CalEvent();
  event.id = id;
  event.title = title;
  event.startDate = cal.createDateTime(start);
  event.startDate.timezone = cal.timezoneService.getTimezone(zone);
  event.endDate = event.startDate.clone();
  if (event.startDate.isDate) event.endDate.day += 1;
  else event.endDate.hour += 1;
  if (rule) {
    event.recurrenceInfo = new CalRecurrenceInfo(event);
    event.recurrenceInfo.appendRecurrenceItem(cal.createRecurrenceRule(rule));
  }
  const added = await calendars.get(name).addItem(event);
  if (!rule) continue;
  const year = cal.createDateTime("20270101T000000Z");
  const changed = added.recurrenceInfo.getOccurrences(event.startDate, year, 0)[1].clone();
  changed.title = "Diesmal anders";
  changed.startDate.hour = 15;
  changed.endDate.hour = 16;
  changed.setProperty("LOCATION", "Anderswo");
  const master = added.clone();
  master.recurrenceInfo.modifyException(changed, true);
  await calendars.get(name).modifyItem(master, added);
}
"""

# What Thunderbird lists of each calendar. Whole days are shown up to their last one.
LIST = """
const { cal } = ChromeUtils.importESModule("resource:///modules/calendar/calUtils.sys.mjs");
const two = number => String(number).padStart(2, "0");
const shown = date => {
  if (!date) return "";
  const local = date.isDate ? date : date.getInTimezone(cal.dtz.defaultTimezone);
  return `${two(local.day)}.${two(local.month + 1)}.${String(local.year).padStart(4, "0")} ` +
         (date.isDate ? "00:00" : `${two(local.hour)}:${two(local.minute)}`);
};
const lastDay = (start, end) => {
  if (!end?.isDate) return end;
  const last = end.clone();
  last.day -= 1;
  return last.compare(start) < 0 ? start : last;
};
const found = [];
for (const calendar of cal.manager.getCalendars()) {
  for (const item of await calendar.getItemsAsArray(calendar.ITEM_FILTER_ALL_ITEMS, 0, null, null)) {
    const isEvent = item.isEvent();
    found.push([calendar.name, item.id, isEvent ? "termin" : "task", item.title ?? "",
                isEvent ? shown(item.startDate) : "", isEvent ? shown(lastDay(item.startDate, item.endDate)) : "",
                isEvent ? item.getProperty("LOCATION") ?? "" : ""]);
  }
}
const exceptions = [];
for (const calendar of cal.manager.getCalendars()) {
  const item = await calendar.getItem("weekly");
  for (const id of item?.recurrenceInfo?.getExceptionIds() ?? []) {
    const occurrence = item.recurrenceInfo.getExceptionFor(id);
    exceptions.push([occurrence.title, shown(occurrence.startDate), occurrence.getProperty("LOCATION")]);
  }
}
const rich = [];
for (const calendar of cal.manager.getCalendars()) {
  const item = await calendar.getItem("rich");
  if (item) {
    rich.push(...item.getAttendees().map(each => each.icalString), item.organizer?.icalString,
              ...item.recurrenceInfo.getRecurrenceItems().map(each => each.icalString),
              ...item.getAlarms().map(each => each.icalString), ...item.getAttachments().map(each => each.icalString),
              ...item.getCategories(), item.getProperty("DESCRIPTION"), item.getProperty("X-OWN"), item.priority,
              item.status);
  }
}
return { items: found, exceptions, rich, calendars: cal.manager.getCalendars().map(each => each.name),
         profile: Services.dirsvc.get("ProfD", Ci.nsIFile).path };
"""


def fail(text):
    print("FAILED:", text)
    sys.exit(1)


class CommandLine:
    def __init__(self, program, home):
        self.program = program
        self.environment = {**os.environ, "HOME": str(home), "LC_ALL": "C.UTF-8"}

    def start(self, *arguments, zone="Europe/Berlin"):
        return subprocess.run([self.program, *arguments], env={**self.environment, "TZ": zone},
                              stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=120)

    def run(self, *arguments, zone="Europe/Berlin"):
        done = self.start(*arguments, zone=zone)
        if done.returncode != 0:
            fail(f"{arguments} ended with {done.returncode}: {done.stderr.decode()}")
        return done.stdout.decode(), done.stderr.decode()

    def read(self, address, zone="Europe/Berlin"):
        """The items as Thunderbird is asked for them, and the lines on standard error."""
        out, told = self.run("read", address, "--json", zone=zone)
        items = [json.loads(line) for line in out.splitlines()]
        return sorted([each["Data"]["Calendar"], each["ID"].removesuffix("~2"), each["Type"], each["Text"],
                       each["Date"], each["Data"].get("DateEnd", ""), each["Data"].get("Location", "")]
                      for each in items), told


def compare(when, read, listed):
    missing = [item for item in listed if item not in read]
    extra = [item for item in read if item not in listed]
    if missing or extra or len(read) != len(listed):
        fail(f"{when}: missing {missing}, extra {extra}, {len(read)} of {len(listed)}")


def check_reading(program, listed, profile):
    name = pathlib.Path(profile).name.partition(".")[2]
    expected = sorted(listed["items"])
    if len(expected) != len(EVENTS) + len(IN_ZONES) + len(TASKS):
        fail(f"Thunderbird lists {len(expected)} items")
    read, told = program.read(f"lightning://{name}")
    compare("read", read, expected)
    days = [item for item in expected if item[4].endswith(" 00:00") and item[5].endswith(" 00:00")]
    for zone in ("America/Santiago", "Pacific/Kiritimati", "Pacific/Pago_Pago"):
        whole = [item for item in program.read(f"lightning://{name}", zone)[0] if (item[0], item[1]) in
                 [(day[0], day[1]) for day in days]]
        compare(f"whole days in {zone}", whole, days)
    out, _ = program.run("browse", f"lightning://{name}/*", "--json")
    calendars = [json.loads(line) for line in out.splitlines()]
    if [each["Text"] for each in calendars] != listed["calendars"]:
        fail(f"calendars {[each['Text'] for each in calendars]}, Thunderbird has {listed['calendars']}")
    for each in calendars:
        of_one = [item for item in expected if item[0] == each["Text"]]
        if of_one:
            compare(each["Text"], program.read(each["Data"]["Location"])[0], of_one)
    return name, told


def change(program, name):
    """Adds, changes and removes; gives what Thunderbird is to have otherwise then."""
    family, work = f"lightning://{name}/{FAMILY}", f"lightning://{name}/Arbeit %2F Büro"
    added = program.run("calendar", "add", family, "--text", "Anna's neues Fest ☕", "--start", "01.02.2039 10:00",
                        "--end", "01.02.2039 11:45", "--location", "O'Hara")[0]
    task = program.run("calendar", "add", work, "--task", "--text", "Neue Aufgabe")[0]
    program.run("calendar", "set", family, "floating", "--text", "Überall um zehn", "--start", "21.06.2026 10:00",
                "--end", "21.06.2026 12:00")
    program.run("calendar", "set", family, "whole-days", "--start", "31.12.2026", "--end", "01.01.2027",
                "--location", "Bonn")
    program.run("calendar", "set", work, "tokyo", "--start", "01.07.2026 03:30", "--end", "01.07.2026 04:30")
    program.run("calendar", "set", work, "whole-day~2", "--text", "Nur hier anders")
    program.run("calendar", "set", work, "weekly", "--text", "Jede neue Woche")
    program.run("calendar", "set", work, "task", "--text", "Mit neuem Titel")
    program.run("calendar", "set", f"lightning://{name}/{CLUB}", "rich", "--text", "Noch immer mit allem", "--start",
                "11.09.2026 19:00", "--end", "11.09.2026 20:00", "--location", "Dort")
    program.run("calendar", "remove", family, "utc", "task-due")
    new_event, new_task = added.split()[-1], task.split()[-1]
    changed = {
        (FAMILY, "floating"): ["termin", "Überall um zehn", "21.06.2026 10:00", "21.06.2026 12:00", ""],
        (FAMILY, "whole-days"): ["termin", "Reise", "31.12.2026 00:00", "01.01.2027 00:00", "Bonn"],
        (WORK, "tokyo"): ["termin", "Tokio", "01.07.2026 03:30", "01.07.2026 04:30", ""],
        (WORK, "whole-day"): ["termin", "Nur hier anders", "03.07.2026 08:00", "03.07.2026 09:00", ""],
        (WORK, "weekly"): ["termin", "Jede neue Woche", "06.07.2026 08:00", "06.07.2026 09:00", ""],
        (WORK, "task"): ["task", "Mit neuem Titel", "", "", ""],
        (CLUB, "rich"): ["termin", "Noch immer mit allem", "11.09.2026 19:00", "11.09.2026 20:00", "Dort"],
        (FAMILY, new_event): ["termin", "Anna's neues Fest ☕", "01.02.2039 10:00", "01.02.2039 11:45", "O'Hara"],
        (WORK, new_task): ["task", "Neue Aufgabe", "", "", ""],
    }
    return changed, {(FAMILY, "utc"), (FAMILY, "task-due")}


def main():
    with tempfile.TemporaryDirectory() as folder:
        home = pathlib.Path(folder, "home")
        home.mkdir()
        program = CommandLine(str(pathlib.Path(sys.argv[1]).resolve()), home)
        application = Application(["thunderbird"], home, pathlib.Path(folder, "log"))
        try:
            application.run(FILL, [FAMILY, WORK, CLUB], EVENTS, IN_ZONES, TASKS)
            listed = application.run(LIST)
            name, told = check_reading(program, listed, listed["profile"])
            if "in Gebrauch; gelesen wird der Stand vom" not in told and "in use" not in told:
                fail(f"reading beside Thunderbird told {told!r}")
            refused = program.start("calendar", "add", f"lightning://{name}/{CLUB}", "--task", "--text", "Nein")
            if refused.returncode != 3 or b"thunderbird" not in refused.stderr:
                fail(f"writing beside Thunderbird ended with {refused.returncode}: {refused.stderr.decode()}")
        finally:
            application.quit()
        _, told = check_reading(program, listed, listed["profile"])
        if told:
            fail(f"reading after Thunderbird's end told {told!r}")
        print(f"{len(listed['items'])} events and tasks of {len(listed['calendars'])} calendars read as Thunderbird "
              "lists them")

        changed, removed = change(program, name)
        expected = {(item[0], item[1]): item[2:] for item in listed["items"] if (item[0], item[1]) not in removed}
        expected.update(changed)
        application = Application(["thunderbird"], home, pathlib.Path(folder, "log"))
        try:
            after = application.run(LIST)
        finally:
            application.quit()
        compare("after the next start", sorted(after["items"]), sorted([*key, *item] for key, item in expected.items()))
        if after["exceptions"] != [["Diesmal anders", "13.07.2026 15:00", "Anderswo"]]:
            fail(f"changed occurrences {after['exceptions']}")
        if after["rich"] != listed["rich"] or len(listed["rich"]) < 10:
            fail(f"a changed event has {after['rich']}, not {listed['rich']}")
        print(f"{len(changed)} changes and {len(removed)} removals shown by Thunderbird after its next start")


if __name__ == "__main__":
    main()
