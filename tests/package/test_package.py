"""The Debian packages: what they install and leave behind, and that each part is well-formed."""

import configparser
import os
import pathlib
import re
import shutil
import subprocess
import tempfile
import unittest

import pytest

from support import ROOT

BUILD = pathlib.Path(os.environ.get("KQU_BUILD", ROOT / "build" / "release")).resolve()
COMMANDS = ("kqu-post", "kqu-run")
NAME = "com.brackwater.KQU_Messenger"
GEOMETRY = f"home/user/.config/{NAME}.plist"
POSTED = "com.brackwater.DistributedNotifications"
EXPECTED = {
    "kqu-messenger": [
        "usr/bin/kqu-messenger",
        "usr/share/man/man1/kqu-messenger.1.gz",
        f"usr/share/applications/{NAME}.desktop",
        f"usr/share/metainfo/{NAME}.metainfo.xml",
        f"usr/share/icons/hicolor/scalable/apps/{NAME}.svg",
        *(f"usr/share/icons/hicolor/{size}x{size}/apps/{NAME}.png" for size in (16, 32, 48, 128, 256)),
        "usr/lib/systemd/user/kqu-messenger.service",
        f"usr/share/dbus-1/interfaces/{POSTED}.xml",
        f"usr/share/dbus-1/services/{NAME}.service",
        f"usr/share/dbus-1/system.d/{POSTED}.conf",
        "usr/share/kqu-messenger/Info.plist",
        *(f"usr/share/doc/kqu-messenger/{name}"
          for name in ("changelog.gz", "copyright", "power.md", "troubleshooting.md")),
        "usr/share/lintian/overrides/kqu-messenger",
    ],
    "kqu-tools": [
        *(f"usr/bin/{name}" for name in COMMANDS),
        *(f"usr/share/man/man1/{name}.1.gz" for name in COMMANDS),
        *(f"usr/share/bash-completion/completions/{name}" for name in COMMANDS),
        *(f"usr/share/zsh/vendor-completions/_{name}" for name in COMMANDS),
        *(f"usr/share/fish/vendor_completions.d/{name}.fish" for name in COMMANDS),
        *(f"usr/share/doc/kqu-tools/{name}"
          for name in ("changelog.gz", "copyright", "posting.md", "recipes.md")),
    ],
}


def run(*command, check=True, **options):
    done = subprocess.run([str(word) for word in command], stdout=subprocess.PIPE, text=True,
                          stderr=subprocess.STDOUT, timeout=900, check=False, **options)
    if check and done.returncode != 0:
        raise AssertionError(f"{command} ended with {done.returncode}:\n{done.stdout}")
    return done.stdout


def ini(path):
    parser = configparser.ConfigParser(interpolation=None, strict=False)
    parser.optionxform = str
    parser.read_string(path.read_text())
    return parser


class Root:
    """An empty root folder with a package database of its own."""

    def __init__(self, folder):
        self.folder = folder
        database = folder / "var/lib/dpkg"
        for name in ("info", "updates"):
            (database / name).mkdir(parents=True)
        (database / "status").touch()

    def dpkg(self, *arguments):
        return run("dpkg", f"--root={self.folder}", f"--log={self.folder}/var/lib/dpkg/log",
                   "--force-not-root", "--force-depends", "--force-bad-path", *arguments)

    def files(self):
        """All that lies outside of the package database: files, and folders that are empty."""
        paths = [path for path in self.folder.rglob("*")
                 if not path.is_dir() or path.is_symlink() or not any(path.iterdir())]
        return sorted(str(path.relative_to(self.folder)) for path in paths
                      if not path.is_relative_to(self.folder / "var/lib/dpkg"))


@pytest.mark.xdist_group("package")  # it is built once
class PackageTest(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        cls.folder = pathlib.Path(tempfile.mkdtemp(prefix="kqu-package-test-"))
        cls.addClassCleanup(shutil.rmtree, cls.folder)
        # Ends with an error where lintian finds one.
        run(ROOT / "package", "--programs", BUILD, "--into", cls.folder)
        cls.debs = sorted(cls.folder.glob("*.deb"))
        cls.contents = {deb.name.split("_")[0]: cls.folder / deb.stem for deb in cls.debs}
        for deb in cls.debs:
            run("dpkg-deb", "-R", deb, cls.folder / deb.stem)
        cls.content = cls.contents["kqu-messenger"]

    def test_installs_upgrades_and_leaves_only_the_users_file(self):
        project = re.search(r"project\(kqu_messenger VERSION ([\d.]+)",
                            (ROOT / "CMakeLists.txt").read_text())[1]
        for content in self.contents.values():
            newer = self.folder / "newer" / content.name
            shutil.copytree(content, newer)
            control = newer / "DEBIAN" / "control"
            version = re.search(r"^Version: (.*)", control.read_text(), re.MULTILINE)[1]
            self.assertEqual(version, project)
            control.write_text(control.read_text().replace(version, version + "+1"))
            for program in (newer / "usr/bin").iterdir():
                program.write_text("newer")
            run("dpkg-deb", "--root-owner-group", "-Znone", "-b", newer, f"{newer}.deb")

        root = Root(self.folder / "root")
        root.dpkg("-i", *self.debs)
        expected = sorted(sum(EXPECTED.values(), []))
        self.assertEqual(root.files(), expected)
        geometry = root.folder / GEOMETRY
        geometry.parent.mkdir(parents=True)
        geometry.write_text("kept")
        root.dpkg("-i", *(self.folder / "newer").glob("*.deb"))
        self.assertEqual(root.files(), sorted([*expected, GEOMETRY]))
        self.assertEqual({path.read_text() for path in (root.folder / "usr/bin").iterdir()}, {"newer"})
        root.dpkg("--remove", "kqu-tools")
        self.assertEqual(root.files(), sorted([*EXPECTED["kqu-messenger"], GEOMETRY]))
        root.dpkg("--remove", "kqu-messenger")
        self.assertEqual(root.files(), [GEOMETRY], "no configuration file outlives the removal")
        root.dpkg("--purge", *EXPECTED)
        self.assertEqual((root.files(), geometry.read_text()), ([GEOMETRY], "kept"))

    def test_desktop_entry(self):
        path = self.content / f"usr/share/applications/{NAME}.desktop"
        self.assertEqual(run("desktop-file-validate", path), "")
        entry = ini(path)["Desktop Entry"]
        self.assertTrue((self.content / "usr/bin" / entry["Exec"]).exists())
        self.assertEqual(entry["Icon"], NAME)

    def test_manual_pages(self):
        for page in self.folder.glob("kqu-*/usr/share/man/man1/*"):
            env = {"PATH": os.environ["PATH"], "LC_ALL": "C.UTF-8", "MANWIDTH": "80"}
            printed = subprocess.run(
                ["man", "--warnings", "-E", "UTF-8", "-l", "-Tutf8", page], env=env, check=True,
                timeout=60, capture_output=True)
            self.assertEqual(printed.stderr, b"", page)
            self.assertIn(b"EXIT STATUS", re.sub(rb"\x1b\[[\d;]*m|.\x08", b"", printed.stdout), page)

    def test_services(self):
        unit_path = self.content / "usr/lib/systemd/user/kqu-messenger.service"
        unit = ini(unit_path)
        service = ini(self.content / f"usr/share/dbus-1/services/{NAME}.service")["D-BUS Service"]
        self.assertEqual((service["Name"], service["SystemdService"]), (NAME, unit_path.name))
        self.assertEqual((unit["Service"]["Type"], unit["Service"]["BusName"]), ("dbus", NAME))
        self.assertEqual({service["Exec"], unit["Service"]["ExecStart"]}, {"/usr/bin/kqu-messenger"})
        self.assertIn("graphical-session.target", unit["Unit"]["PartOf"])
        self.assertNotIn("Install", unit, "it is started on demand: there is nothing to enable")
        # The checker wants the program to be where the unit says.
        copy = self.folder / unit_path.name
        copy.write_text(unit_path.read_text().replace("=/usr", f"={self.content}/usr"))
        self.assertEqual(run("systemd-analyze", "verify", "--user", "--man=no", copy, env={
            **os.environ, "XDG_RUNTIME_DIR": str(self.folder), "HOME": str(self.folder)}), "")


class CompletionTest(unittest.TestCase):
    CASES = {
        "kqu-post": [
            (["--to"], {"--tool"}),
            (["--tool", "s"], {"scanner"}),
            (["--tool", "backup", "V"], {"VolName="}),
            (["--tool", "scanner", "F"], set()),
            (["--tool", "defragmenter", "File"], {"FileName=", "FileProgress="}),
        ],
        "kqu-run": [
            (["--af"], {"--after"}),
            (["--after", "s"], {"sleep", "shutdown"}),
            (["--after", "sleep", "--", "readlin"], {"readlink"}),
            (["--system", "readlin"], {"readlink"}),
        ],
    }
    BASH = """compopt() { :; }
        source "$1"; shift; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); "_${1//-/_}"
        printf '%s\\n' "${COMPREPLY[@]}" """
    FISH = 'source $argv[1]; complete -C "$argv[2]"'

    def setUp(self):
        home = tempfile.TemporaryDirectory()
        self.addCleanup(home.cleanup)
        self.env = {"PATH": f"{BUILD}:{os.environ['PATH']}", "HOME": home.name, "LC_ALL": "C.UTF-8"}

    def test_shells_complete(self):
        for command in COMMANDS:
            script = ROOT / "packaging" / "completion" / command
            run("zsh", "-n", f"{script}.zsh", env=self.env)
            for arguments, wanted in self.CASES[command]:
                line = [command, *arguments]
                offered = {
                    "bash": run("bash", "-c", self.BASH, "bash", f"{script}.bash", *line,
                                env=self.env),
                    "fish": run("fish", "--no-config", "-c", self.FISH, f"{script}.fish",
                                " ".join(line), env=self.env),
                }
                for shell, printed in offered.items():
                    words = {offer.partition("\t")[0] for offer in printed.splitlines() if offer}
                    self.assertEqual(words, wanted, (shell, line))
