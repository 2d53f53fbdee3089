#!/usr/bin/env python3
"""Makes the Debian packages of a release build, and installs, uses and removes them in a Debian root of their own.

packages_test.py BUILD_FOLDER SOURCE_FOLDER

Takes two minutes and the network, and the administrator's rights or user namespaces.
"""
import os
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

from small_profile import FOLDER, SHOWN, make_profile

PACKAGES = {"libvorlent-mozilla1", "libvorlent-mozilla-dev", "vorlent-mozilla"}
HOME = "/home/anna"


def run(*command, **options):
    done = subprocess.run(list(map(str, command)), text=True, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, **options)
    if done.returncode != 0:
        sys.exit(f"failed with {done.returncode}: {' '.join(map(str, command))}\n{done.stdout}")
    return done.stdout


def expect(got, expected, what):
    if got != expected:
        sys.exit(f"{what}: {got!r} came, {expected!r} was expected")


def make_packages(build, folder):
    """The paths of the packages by their names."""
    run("cpack", "-G", "DEB", "--config", build / "CPackConfig.cmake", "-B", folder)
    packages = {run("dpkg-deb", "-f", path, "Package").strip(): path for path in folder.glob("*.deb")}
    expect(set(packages), PACKAGES, "packages made")
    return packages


class Root:
    """A Debian system in a folder."""

    def __init__(self, folder):
        self.folder = folder

    def run(self, *command):
        environment = {"PATH": "/usr/sbin:/usr/bin:/sbin:/bin", "HOME": HOME, "LC_ALL": "C.UTF-8",
                       "TZ": "Europe/Berlin", "DEBIAN_FRONTEND": "noninteractive"}
        return run("chroot", self.folder, *command, env=environment)

    def take(self, source, name):
        target = self.folder / "tmp" / name
        (shutil.copytree if source.is_dir() else shutil.copy)(source, target)
        return f"/tmp/{name}"

    def has(self, path):
        return os.path.lexists(self.folder / path.lstrip("/"))


def install(root, packages):
    """Installs the packages with what they depend on; returns the paths that they brought."""
    listed = {path for package in packages.values() for path in contents(package) if not root.has(path)}
    paths = [root.take(path, path.name) for path in packages.values()]
    root.run("apt-get", "install", "-y", "-qq", "--no-install-recommends", *paths)
    missing = [path for path in sorted(listed) if not root.has(path)]
    expect(missing, [], "paths missing after the installation")
    return listed


def contents(package):
    """The absolute paths of what a package holds."""
    with tempfile.TemporaryDirectory() as folder:
        run("dpkg-deb", "-x", package, folder)
        return {"/" + str(path.relative_to(folder)) for path in Path(folder).rglob("*")}


def use_program(root):
    if "Usage:" not in root.run("vorlent-mozilla", "--help"):
        sys.exit("the program doesn't tell its usage")
    listed = root.run("vorlent-mozilla", "read", FOLDER).splitlines()
    expect([line.split("  ")[1].split()[0] for line in listed[1:]], ["12.01.2026"], "dates of the mails read")
    expect("Grüße" in listed[1], True, "subject of the mail read")


def use_library(root, sources):
    """Builds and runs the example, found by CMake and by pkg-config."""
    example = root.take(sources / "examples/read-mailbox", "example")
    root.run("cmake", "-G", "Ninja", "-S", example, "-B", "/tmp/build")
    root.run("cmake", "--build", "/tmp/build")
    expect(root.run("/tmp/build/read-mailbox", FOLDER), SHOWN, "mails shown by the example built with CMake")
    flags = root.run("pkg-config", "--cflags", "--libs", "vorlent-mozilla").split()
    root.run("g++", "-o", "/tmp/read-mailbox", f"{example}/Main.cpp", *flags)
    expect(root.run("/tmp/read-mailbox", FOLDER), SHOWN, "mails shown by the example built with pkg-config")


def remove(root, listed):
    root.run("apt-get", "remove", "-y", "-qq", *sorted(PACKAGES))
    left = [path for path in sorted(listed) if root.has(path)]
    expect(left, [], "paths left after the removal")
    # What the package system itself kept of them, their scripts, goes by another command.
    root.run("dpkg", "--purge", *sorted(PACKAGES))
    named = [str(path) for top in ("etc", "usr", "var/lib", "opt", "home") for path in (root.folder / top).rglob("*")
             if "vorlent" in path.name]
    expect(named, [], "paths left that are named after the project, after the purge")


def use_in(root, sources, packages):
    (root.folder / HOME.lstrip("/")).mkdir(parents=True)
    make_profile(root.folder / HOME.lstrip("/"), Path(HOME))
    listed = install(root, packages)
    use_program(root)
    use_library(root, sources)
    remove(root, listed)
    print(f"{len(PACKAGES)} packages with {len(listed)} paths of their own installed, used and removed")


def main():
    build, sources = Path(sys.argv[1]).resolve(), Path(sys.argv[2]).resolve()
    if len(sys.argv) == 5:  # called back, with the folder of the packages and that of the root
        packages = {run("dpkg-deb", "-f", path, "Package").strip(): path for path in Path(sys.argv[3]).glob("*.deb")}
        use_in(Root(Path(sys.argv[4])), sources, packages)
        return
    with tempfile.TemporaryDirectory() as folder:
        os.chmod(folder, 0o755)
        packages = Path(folder, "packages")
        make_packages(build, packages)
        hook = f'"{sys.executable}" "{os.path.abspath(__file__)}" "{build}" "{sources}" "{packages}" "$1"'
        mode = "root" if os.geteuid() == 0 else "unshare"
        print(run("mmdebstrap", "--quiet", f"--mode={mode}", "--variant=apt", "--include=g++,cmake,ninja-build,pkgconf",
                  f"--customize-hook={hook}", "bookworm", "/dev/null"), end="")


main()
