#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Tests of the Windows program as a running process, under Wine.

Usage: run_windows_tests.py WINDOWS_BUILD LINUX_PROGRAM OUTPUT_FOLDER
WINDOWS_BUILD holds velkoran.exe and tests/windows/window_tool.exe; OUTPUT_FOLDER takes the Wine prefix, the work
directories and the picture of the About box.
"""
import os
import pathlib
import random
import re
import shutil
import subprocess
import sys
import time
import unittest

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "python"))
from velkoran_runs.program import RunKind, make_run, start_run
from velkoran_runs.results import LOG_REFUSAL, REFUSAL, SPECTRUM_HEAD
from velkoran_runs.spectrum_inputs import spectrum_input

if len(sys.argv) < 4:
    sys.exit(__doc__)
ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
WINDOWS_BUILD, LINUX_PROGRAM, OUTPUT = (os.path.abspath(path) for path in sys.argv[1:4])
PROGRAM = os.path.join(WINDOWS_BUILD, "velkoran.exe")
TOOL = os.path.join(WINDOWS_BUILD, "tests", "windows", "window_tool.exe")
WORK = os.path.join(OUTPUT, "work")
PREFIX = os.path.join(OUTPUT, "prefix")
ENVIRONMENT = dict(
    os.environ,
    WINEPREFIX=PREFIX,
    WINEARCH="win64",
    WINEDEBUG="-all",
    WINEDLLOVERRIDES="mscoree,mshtml,winemenubuilder.exe=",
)
DRIVERS = r"HKCU\Software\Wine\Drivers"
MEMORY_TEXT = "This application has exhausted all available memory."
STOP_LIMIT = 1.0  # seconds from the close message to the end of the process


def read(path):
    with open(path, "rb") as file:
        return file.read()


def wine(*arguments, folder=WORK, limit=60, environment=ENVIRONMENT):
    """Runs a program to its end; its exit code and its output. The output goes through a file, since Wine's services
    inherit it and keep a pipe open."""
    with open(os.path.join(OUTPUT, "stdout.txt"), "wb") as output:
        code = subprocess.run(
            ["wine", *arguments],
            cwd=folder,
            env=environment,
            stdin=subprocess.DEVNULL,
            stdout=output,
            stderr=subprocess.DEVNULL,
            timeout=limit,
            check=False,
        ).returncode
    return code, read(os.path.join(OUTPUT, "stdout.txt")).decode("latin-1").replace("\r\n", "\n")


def stop_wine():
    subprocess.run(["wineserver", "-k"], env=ENVIRONMENT, check=False)
    subprocess.run(["wineserver", "-w"], env=ENVIRONMENT, check=False)


def set_driver(name):
    wine("reg", "add", DRIVERS, "/v", "Graphics", "/d", name, "/f", folder=OUTPUT)
    stop_wine()


def make_job(name, text):
    folder = os.path.join(WORK, name)
    shutil.rmtree(folder, ignore_errors=True)
    os.makedirs(folder)
    with open(os.path.join(folder, "nmrspect.in"), "w", encoding="ascii") as file:
        file.write(text)
    return folder


def spin_system(spins):
    """A fully coupled system; 13 spins take many seconds."""
    numbers = random.Random(5)
    couplings = [[round(numbers.uniform(0.5, 15), 2) for _ in range(spins)] for _ in range(spins)]
    return spectrum_input([round(numbers.uniform(1, 8), 3) for _ in range(spins)], couplings, 400)


def start_under_wine(name, log=None, environment=ENVIRONMENT):
    """A run in progress, on the spectrum job of a name."""
    settings = {"env": environment, "stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL}
    return start_run(PROGRAM, ".", name, RunKind.SPECTRUM, log, folder=WORK, through=["wine"], **settings)


class LongRun:
    """A long exact run in the background, past its first log line."""

    def __init__(self, name, environment=ENVIRONMENT, wait_for_log=True):
        self.folder = make_job(name, spin_system(13))
        self.log = os.path.join(self.folder, "run.log")
        self.output = os.path.join(self.folder, "nmrspect.out")
        self.process = start_under_wine(name, name + r"\run.log", environment)
        deadline = time.monotonic() + 30
        while wait_for_log and not (os.path.exists(self.log) and os.path.getsize(self.log) > 200):
            if time.monotonic() > deadline:
                raise AssertionError("the run wrote no log")
            time.sleep(0.02)

    def end(self):
        """Exit code and seconds until the process has ended."""
        begin = time.monotonic()
        code = self.process.wait(timeout=60)
        return code, time.monotonic() - begin


class WindowsProgram(unittest.TestCase):
    """Runs in the order of the names; the prefix starts without a graphics driver."""

    def assert_stopped(self, run, limit=STOP_LIMIT):
        code, seconds = run.end()
        self.assertEqual(code, 0)
        self.assertLess(seconds, limit)
        self.assertFalse(os.path.exists(run.output))

    def test_01_set_up_failure_goes_to_standard_output(self):
        make_job("driverless", spin_system(2))
        wine("reg", "delete", DRIVERS, "/f", folder=OUTPUT)
        stop_wine()
        environment = {key: value for key, value in ENVIRONMENT.items() if key != "DISPLAY"}
        code, text = wine(PROGRAM, ".", "driverless", "2", environment=environment)
        set_driver("null")
        self.assertEqual(text, MEMORY_TEXT + "\n")
        self.assertEqual(code, 3)
        self.assertEqual(os.listdir(os.path.join(WORK, "driverless")), ["nmrspect.in"])

    def test_02_registry_value_keeps_the_format_from_being_registered(self):
        make_job("registry", spin_system(2))
        for value, expected in (("1", 1), ("0", 0)):  # a registered name stays for the session, so 1 comes first
            wine("reg", "add", "HKCU", "/v", "UseSockets", "/t", "REG_DWORD", "/d", value, "/f", folder=OUTPUT)
            keeper = subprocess.Popen(
                ["wine", "winver"],
                env=ENVIRONMENT,
                stdin=subprocess.DEVNULL,
                stdout=subprocess.DEVNULL,
                stderr=subprocess.DEVNULL,
            )  # keeps the session
            wine(PROGRAM, ".", "registry", "2")
            code, _ = wine(TOOL, "format", "Packet")
            stop_wine()
            keeper.wait()
            self.assertEqual(code, expected, "UseSockets " + value)

    def test_03_resources(self):
        _, text = wine(TOOL, "resources", PROGRAM)
        self.assertEqual(text, "icon 1\ndialog 1\nproduct Velkoran\n")

    def test_04_string_table_is_the_whole_catalogue(self):
        catalogue = read(os.path.join(ROOT, "core", "resources", "message_catalogue.inc")).decode("ascii")
        expected = re.findall(r'^CATALOGUE_TEXT\(\w+, (\d+), "(.*)"\)$', catalogue, re.M)
        self.assertEqual(len(expected), 198)
        _, text = wine(TOOL, "strings", PROGRAM)
        self.assertEqual(text, "".join("%s %s\n" % entry for entry in expected))

    def test_05_imports_only_system_libraries(self):
        dump = subprocess.run(
            ["x86_64-w64-mingw32-objdump", "-p", PROGRAM], capture_output=True, text=True, check=True
        ).stdout
        imported = {name.upper() for name in re.findall(r"DLL Name: (\S+)", dump)}
        self.assertLessEqual(
            imported, {"ADVAPI32.DLL", "GDI32.DLL", "KERNEL32.DLL", "MSVCRT.DLL", "USER32.DLL", "WS2_32.DLL"}
        )

    def test_06_examples_give_the_bytes_of_the_linux_build(self):
        # the other C library's exp and log differ in the last bit of some values: so far no printed digit shows it
        shutil.copytree(os.path.join(ROOT, "parameters", "published"), os.path.join(WORK, "parameters"))
        for name in sorted(os.listdir(os.path.join(ROOT, "examples"))):
            source = os.path.join(ROOT, "examples", name)
            if not os.path.isdir(source):
                continue
            kind = next(kind for kind in RunKind if os.path.exists(os.path.join(source, kind.input_name)))
            with self.subTest(example=name):
                shutil.copytree(source, os.path.join(WORK, name))
                linux = make_run(LINUX_PROGRAM, "parameters", name, kind, name + "/linux.log", folder=WORK)
                os.remove(os.path.join(WORK, name, kind.output_name))
                code, _ = wine(PROGRAM, "parameters", name, str(kind.value), name + r"\run.log")
                self.assertEqual(code, 0)
                for file, text in ((kind.output_name, linux.output), ("run.log", linux.log)):
                    expected = text.replace("\n", "\r\n").encode("latin-1")
                    self.assertEqual(read(os.path.join(WORK, name, file)), expected)

    def test_07_refusals(self):
        good = spin_system(2)
        cases = {
            "minimal": (
                good.replace("0.001", "2.5e-12"),
                "The minimal inetensity (2.500000e-12) you have set may be too small",
            ),
            "step": ("t\n", r"Velkoran has met troubles at line 2 when reading the input file step\nmrspect.in."),
            "none": (
                good.replace("400", "0"),
                r"The spectrometer frequency in the input file none\nmrspect.in cann't be equal to zero.",
            ),
        }
        for name, (text, message) in cases.items():
            with self.subTest(name=name):
                folder = make_job(name, text)
                self.assertEqual(wine(PROGRAM, ".", name, "2")[0], 0)
                self.assertEqual(read(os.path.join(folder, "nmrspect.out")), f"{REFUSAL}{message}\r\n".encode())

    def test_08_log_that_cannot_be_opened(self):
        folder = make_job("nolog", spin_system(2))
        self.assertEqual(wine(PROGRAM, ".", "nolog", "2", r"nothing\there.log")[0], 0)
        self.assertEqual(read(os.path.join(folder, "nmrspect.out")), LOG_REFUSAL.encode())

    def test_09_path_with_a_drive_letter(self):
        folder = make_job("drive", spin_system(2))
        self.assertEqual(wine(PROGRAM, r"s:\drive", r"s:\drive", "2", r"s:\drive\run.log", folder="/")[0], 0)
        self.assertTrue(read(os.path.join(folder, "nmrspect.out")).startswith(SPECTRUM_HEAD.encode() + b"\r\n"))
        self.assertTrue(os.path.getsize(os.path.join(folder, "run.log")) > 0)

    def test_10_log_path_that_begins_with_a_backslash_is_that_of_the_drive(self):
        make_job("root", spin_system(2))
        log = os.path.join(WORK, "root.log")
        if os.path.exists(log):
            os.remove(log)
        self.assertEqual(wine(PROGRAM, ".", "root", "2", r"\root.log")[0], 0)
        self.assertTrue(os.path.exists(log))

    def test_11_paths_of_128_and_129_characters(self):
        for length, served in ((128, True), (129, False)):
            with self.subTest(length=length):
                name = "d" * (length - len("\\nmrspect.out"))
                folder = make_job(name, spin_system(2))
                self.assertEqual(wine(PROGRAM, ".", name, "2")[0], 0)
                self.assertEqual(os.path.exists(os.path.join(folder, "nmrspect.out")), served)

    def test_12_directories_of_different_lengths(self):
        # the place where the first ends holds a backslash in the second, and so the first gets none
        for name in ("wo", "wo\\k"):
            os.makedirs(os.path.join(WORK, name.replace("\\", "/")), exist_ok=True)
        self.assertEqual(wine(PROGRAM, "par", r"wo\k")[0], 0)
        self.assertEqual(
            read(os.path.join(WORK, "wo", "k", "nmrparam.out")),
            b"ERRMSG: Trouble has been occured when openning parnmrtype.txt.\r\n",
        )
        self.assertEqual(wine(PROGRAM, "par", "wo")[0], 0)
        self.assertEqual(
            read(os.path.join(WORK, "wo", "nmrparam.out")),
            b"ERRMSG: Trouble has been occured when openning par\\nmrtype.txt.\r\n",
        )

    def test_13_empty_command_line_looks_in_the_root_of_the_drive(self):
        self.assertEqual(wine(PROGRAM)[0], 0)
        self.assertEqual(
            read(os.path.join(WORK, "nmrparam.out")),
            b"ERRMSG: Trouble has been occured when openning \\nmrtype.txt.\r\n",
        )

    def test_14_window(self):
        run = LongRun("window")
        _, text = wine(TOOL, "describe")
        wine(TOOL, "close")
        self.assertEqual(run.end()[0], 0)
        # 34cf0000: the overlapped style 00cf0000, visible, minimised, clipping its siblings
        self.assertEqual(
            text, "class braisag\ntitle Velkoran\nstyle 34cf0000\nminimised 1\nforeground 0\n" "queryopen 0\n"
        )

    def test_15_close_stops_a_run(self):
        run = LongRun("stop")
        before = read(run.log)
        self.assertEqual(wine(TOOL, "close")[0], 0)
        self.assert_stopped(run)
        self.assertTrue(read(run.log).startswith(before))
        self.assertIn(b"Computing the NMR spectrum ...\r\n", before)

    def test_16_close_before_the_first_poll(self):
        for i in range(5):
            run = LongRun("early%d" % i, wait_for_log=False)
            self.assertEqual(wine(TOOL, "close")[0], 0)
            self.assert_stopped(run)

    def test_17_close_about_the_end_of_the_work(self):
        # whenever the message comes, the run is either finished, with its whole result, or stopped, with none
        whole = None
        for i in range(12):
            name = "late%d" % i
            folder = make_job(name, spin_system(6))
            process = start_under_wine(name)
            time.sleep(0.01 * i)
            tool = subprocess.Popen(
                ["wine", TOOL, "close"],
                env=ENVIRONMENT,
                stdin=subprocess.DEVNULL,
                stdout=subprocess.DEVNULL,
                stderr=subprocess.DEVNULL,
            )
            self.assertEqual(process.wait(timeout=30), 0)
            tool.kill()
            tool.wait()
            output = os.path.join(folder, "nmrspect.out")
            if os.path.exists(output):
                whole = whole or read(output)
                self.assertEqual(read(output), whole)
        self.assertIsNotNone(whole)

    def test_18_about_box_holds_the_run_and_a_close_request(self):
        run = LongRun("about")
        _, text = wine(TOOL, "about")
        self.assertEqual(text, "Static BACKENDICON\nStatic Velkoran\nStatic NMR Simulation Package\nButton OK\n")
        used = self.processor_time(run)
        wine(TOOL, "close")
        time.sleep(1.0)
        self.assertIsNone(run.process.poll(), "the close request was not kept until the box was closed")
        self.assertLess(self.processor_time(run) - used, 0.3, "the run went on under the box")
        wine(TOOL, "ok")
        self.assert_stopped(run)

    def test_19_a_run_goes_on_after_the_about_box(self):
        run = LongRun("goes_on")
        wine(TOOL, "about")
        wine(TOOL, "ok")
        used = self.processor_time(run)
        time.sleep(1.0)
        self.assertGreater(self.processor_time(run) - used, 0.3, "the run stands still")
        wine(TOOL, "close")
        self.assert_stopped(run)

    @unittest.skipIf(shutil.which("Xvfb") is None or shutil.which("import") is None, "needs xvfb and imagemagick")
    def test_20_picture_of_the_about_box(self):
        set_driver("x11")
        wine("reg", "add", r"HKCU\Software\Wine\X11 Driver", "/v", "Managed", "/d", "N", "/f", folder=OUTPUT)
        stop_wine()
        environment = dict(ENVIRONMENT, DISPLAY=":97")
        server = subprocess.Popen(["Xvfb", ":97", "-screen", "0", "640x480x24"], stderr=subprocess.DEVNULL)
        try:
            time.sleep(1.0)
            run = LongRun("picture", environment)
            wine(TOOL, "about", environment=environment)
            time.sleep(1.0)
            picture = os.path.join(OUTPUT, "about_box.png")
            subprocess.run(["import", "-window", "root", "-display", ":97", picture], check=True)
            wine(TOOL, "ok", environment=environment)
            wine(TOOL, "close", environment=environment)
            self.assert_stopped(run, limit=5.0)
            colours = subprocess.run(
                ["identify", "-format", "%k", picture], capture_output=True, text=True, check=True
            ).stdout
            self.assertGreater(int(colours), 3, "the picture shows nothing")
        finally:
            server.terminate()
            server.wait()
            stop_wine()

    @staticmethod
    def processor_time(run):
        """Processor seconds of the run's process."""
        fields = read("/proc/%d/stat" % run.process.pid).rsplit(b")", 1)[1].split()
        return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")


def main():
    shutil.rmtree(WORK, ignore_errors=True)
    os.makedirs(WORK)
    if not os.path.isdir(PREFIX):
        subprocess.run(
            ["wineboot", "-i"],
            env=ENVIRONMENT,
            stdin=subprocess.DEVNULL,
            stdout=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL,
            check=True,
        )
    drive = os.path.join(PREFIX, "dosdevices", "s:")
    if os.path.islink(drive):
        os.remove(drive)
    os.symlink(WORK, drive)  # the work folder is the root of a drive of its own, the current one of every run
    stop_wine()
    result = unittest.main(argv=[sys.argv[0], *sys.argv[4:]], verbosity=2, exit=False).result
    stop_wine()
    sys.exit(0 if result.wasSuccessful() else 1)


if __name__ == "__main__":
    main()
