#!/usr/bin/env python3
"""host_tool_test.py BUILD [RUN MACHINE]: what ovisk-host says and answers of a stage at rest, of a line
that fails, and of moves that end in every way. With RUN, which starts Windows programs on the machine,
the programs are those of Windows."""

import json
import os
import pathlib
import re
import socket
import subprocess
import sys
import tempfile
import threading
import time
import unittest

BUILD, RUN = pathlib.Path(sys.argv[1]), sys.argv[2:]
END = ".exe" if RUN else ""


def program(name, *arguments):
    return [*RUN, str(BUILD / (name + END)), *arguments]


class HostTool(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        line = ["--port", "4"]
        if RUN:
            users = pathlib.Path(RUN[1]) / "prefix/drive_c/users"
            (users / "Public/Documents/Zembra/Settings/zembra.ini").unlink(missing_ok=True)
        else:
            ports = pathlib.Path(cls.folder.name) / "dosdevices"
            ports.mkdir()
            line = ["--pty", str(ports / "com3")]
            os.environ["ZB_MACHINE_ROOT"] = cls.folder.name
        cls.simulator = subprocess.Popen(
            program("ovisk-sim", *line, "--exit-on-eof", "--quiet", "--control", "0"),
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        for text in cls.simulator.stdout:
            if text.startswith("control port"):
                cls.port = int(text.split()[2])
            if text.startswith("ready"):
                return
        raise RuntimeError("no simulated controller")

    @classmethod
    def tearDownClass(cls):
        cls.simulator.communicate()
        cls.folder.cleanup()

    def setUp(self):
        self.control("reset", "fault off", "refuse MMVAL none", "time-factor 100",
                     "position 1000 -2000 300")
        time.sleep(1.2)  # A controller that was reset is deaf for a second.

    def control(self, *commands):
        with socket.create_connection(("127.0.0.1", self.port)) as link, link.makefile() as answers:
            for command in commands:
                link.sendall(command.encode() + b"\n")
                self.assertEqual(answers.readline(), "ok\n", command)

    def later(self, seconds, *commands):
        timer = threading.Timer(seconds, self.control, commands)
        timer.start()
        self.addCleanup(timer.join)

    def host(self, *arguments):
        """Exit status, standard output and standard error."""
        ended = subprocess.run(program("ovisk-host", *arguments), stdin=subprocess.DEVNULL,
                               capture_output=True, text=True, timeout=60)
        return ended.returncode, ended.stdout, ended.stderr

    def test_a_stage_at_rest_is_live(self):
        self.control("position 0 0 0")
        status, text, _ = self.host("monitor", "--seconds", "2")
        self.assertEqual(status, 0, text)
        self.assertIn(" 0 changes of position", text)
        self.assertIn("the stage is live", text)
        self.assertIn("failed 0 times for 0.0 s", text)

    def test_a_line_that_fails_for_a_while_is_told(self):
        self.later(2, "fault silence=1")
        self.later(3, "fault off")
        status, text, _ = self.host("monitor", "--seconds", "8")
        self.assertEqual(status, 0, text)
        self.assertRegex(text, r"(?s)controller answers\n.*: @.*: no reply.*answers again\n"
                               r".*the stage is live.*failed 1 time for")
        failing = float(re.search(r"for ([\d.]+) s in all", text)[1])
        self.assertGreater(failing, 2)
        self.assertLess(failing, 8)

    def test_a_line_that_fails_at_the_end_is_not_live(self):
        self.later(2, "fault silence=1")
        status, text, _ = self.host("monitor", "--seconds", "7")
        self.assertEqual(status, 1, text)
        self.assertRegex(text, r"the stage is not live: no answer for [\d.]+ s: @.*: no reply, "
                               r"the position is [\d.]+ s old\n")

    def test_positions_that_are_refused_are_not_live(self):
        self.later(2, "refuse CPOSMR E3")
        self.addCleanup(self.control, "refuse CPOSMR none")
        status, text, _ = self.host("monitor", "--seconds", "6")
        self.assertEqual(status, 1, text)

    def test_json(self):
        self.later(3, "axis-error Y E7")
        self.addCleanup(self.control, "axis-error Y none")
        status, text, messages = self.host("monitor", "--json", "--seconds", "5")
        self.assertEqual(status, 0, messages)
        self.assertIn("the stage is live", messages)
        lines = [json.loads(line) for line in text.splitlines()]
        self.assertGreater(len(lines), 5)
        first, last = lines[0], lines[-1]
        self.assertIsNone(first["health"]["lampsAge"])
        self.assertEqual(first["health"]["move"], "none")
        self.assertEqual(last["health"]["link"], "answers")
        self.assertLess(last["health"]["lampsAge"], 2000)
        self.assertEqual(last["stage"]["xCounts"], 1000)
        self.assertEqual(last["stage"]["x"], 10)
        self.assertEqual((last["stage"]["yError"], last["stage"]["yErrorText"]), (True, "E7"))
        self.assertEqual(len(last["stage"]["switches"]), 16)

    def test_moves(self):
        cases = (
            ((), "0.02 -0.01 0.03", 0, "arrived: X 200  Y -100  Z 300"),
            (("refuse MMVAL E3",), "0.03 0 0", 4, "the controller refused the move: E3"),
            ((), "3000 0 0", 4, "out of range"),
            ((), "nan 0 0", 4, "out of range"),
            ((), "2.04 0 0", 5, "the move ended with an error at X 20"),
            (("time-factor 1",), "--limit 1 -- -1.9 0 0", 6, "did not end within 1 s"),
            (("axis-error Z F2",), "0.01 0 0", 5, "not at its target: X 100  Y 0  Z F2"),
        )
        for commands, arguments, status, text in cases:
            with self.subTest(arguments):
                self.setUp()
                self.control(*commands)
                found = self.host("goto", *arguments.split())
                self.control("axis-error Z none")
                self.assertEqual(found[0], status, found[1])
                self.assertIn(text, found[1].splitlines()[-1])

    def test_moves_on_a_line_that_fails(self):
        self.control("fault silence=1")
        status, text, _ = self.host("goto", "0.01", "0", "0")
        self.assertEqual(status, 6, text)
        self.assertIn("no answer to the move", text)
        self.control("fault off", "time-factor 1")
        self.later(2.5, "fault silence=1")
        status, text, _ = self.host("goto", "1.9", "0", "0")
        self.assertEqual(status, 6, text)
        self.assertIn("how the move ended could not be read: @MCND?: no reply", text)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
