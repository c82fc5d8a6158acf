#!/usr/bin/env python3
"""zb_ovisk_test BUILD: the Python module with the library and the simulator of a native build."""

import os
import pathlib
import socket
import subprocess
import sys
import tempfile
import time
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "bindings/python"))
import zb_ovisk
from zb_ovisk import Homing, HomingEnd, Link, Move, MoveError, StageError, Worker


class Simulator:
    """The simulated controller on the port of a machine of its own, and its control port."""

    def __init__(self, build):
        self._root = tempfile.TemporaryDirectory(prefix="zb_python_")
        devices = pathlib.Path(self._root.name, "dosdevices")
        devices.mkdir()
        os.environ["ZB_MACHINE_ROOT"] = self._root.name
        self._process = subprocess.Popen(
            [build / "ovisk-sim", "--pty", devices / "com3", "--control", "0", "--time-factor", "5",
             "--position", "12300,-45600,700"],
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        words = {}
        while not {"port", "on"} <= words.keys():
            line = self._process.stdout.readline().split()
            words.update(zip(line, line[1:]))
        self._control = socket.create_connection(("127.0.0.1", int(words["port"])))
        self._answers = self._control.makefile()

    def do(self, command):
        self._control.sendall(f"{command}\n".encode())
        answer = self._answers.readline()
        assert answer.startswith("ok"), answer

    def end(self):
        self._answers.close()
        self._control.close()
        self._process.communicate("quit\n")
        self._root.cleanup()


class StageTest(unittest.TestCase):
    """One life of the module; each test but the last leaves a good line and a stage at rest."""

    @classmethod
    def setUpClass(cls):
        build = pathlib.Path(sys.argv[1]).resolve()
        cls.simulator = Simulator(build)
        cls.addClassCleanup(cls.simulator.end)
        cls.stage = zb_ovisk.Stage(str(build / "libZbOvisk.so"))
        assert cls.stage.health.worker == Worker.NOT_STARTED
        assert cls.stage.health.position_age is None
        assert str(cls.stage.health) == "the module's worker is not started"
        cls.stage.__enter__()

    @classmethod
    def tearDownClass(cls):
        cls.stage.__exit__(None, None, None)
        assert cls.stage.health.worker == Worker.STOPPED
        try:
            cls.stage.start()
        except StageError as error:
            assert "stopped" in str(error)
        else:
            raise AssertionError("a stopped stage starts again")

    def await_(self, condition):
        end = time.monotonic() + 30
        while not condition():
            if time.monotonic() > end:
                self.fail(self.stage.health)
            time.sleep(0.02)

    def test_stage_is_read(self):
        self.simulator.do("position 25000 -14900 300")
        self.simulator.do("switch MEAS_MODE 4")
        self.simulator.do("lamp 7 77")
        self.simulator.do("axis-error Y E17")
        self.await_(lambda: self.stage.stage.errors == (None, "E17", None))
        self.await_(lambda: self.stage.stage.lamps[6] == 77)
        seen = self.stage.stage
        self.assertEqual((seen.position[0], seen.position[2]), (250, 3))
        self.assertEqual((seen.counts[0], seen.counts[2]), (25000, 300))
        self.assertEqual(seen.switches[12], 4)
        self.simulator.do("axis-error Y none")
        self.await_(lambda: self.stage.stage.counts == (25000, -14900, 300))

    def test_health_of_a_good_line(self):
        self.await_(lambda: self.stage.health.lamps_age is not None)
        health = self.stage.health
        self.assertEqual((health.worker, health.link, health.failures_in_row, health.port),
                         (Worker.RUNS, Link.ANSWERS, 0, 3))
        self.assertEqual((health.homing, health.last_homing), (Homing.NONE, HomingEnd.NONE))
        self.assertEqual((health.version, health.scale_factor), ("1.0.0", 100.0))
        self.assertLess(health.position_age, 10)
        self.assertIn("the controller answers", str(health))

    def test_lamps_and_latches(self):
        self.stage.light(2, 255)
        self.await_(lambda: self.stage.stage.lamps[1] == 10000)
        self.assertTrue(self.stage.latches().lamp_changed)
        with self.assertRaises(ValueError):
            self.stage.light(11, 1)
        self.simulator.do("press EMER_SW")
        self.await_(lambda: self.stage.stage.emergency)
        self.simulator.do("release EMER_SW")
        latches = self.stage.latches()
        self.assertEqual((latches.any_switch, latches.emergency, latches.lamp_changed),
                         (True, True, False))

    def test_moves(self):
        self.stage.move(0.2, -0.1, 0.05)
        self.assertEqual(self.stage.stage.counts, (200000, -100000, 50000))
        self.assertEqual(self.stage.health.move, Move.ENDED_WELL)
        self.assertEqual(self.stage.health.move_target, (200000, -100000, 50000))
        self.stage.move(0, 0, 0, wait=False)
        self.await_(lambda: self.stage.health.move == Move.ENDED_WELL)

    def move_error(self, *target, **options):
        with self.assertRaises(MoveError) as caught:
            self.stage.move(*target, **options)
        return caught.exception

    def test_moves_that_fail(self):
        self.simulator.do("refuse MMVAL E3")
        refused = self.move_error(0.1, 0, 0)
        self.simulator.do("refuse MMVAL none")
        self.assertEqual(refused.state, Move.REFUSED)
        self.assertIn("E3", str(refused))
        self.assertEqual(self.move_error(3000, 0, 0).state, Move.NONE)
        self.assertEqual(self.move_error(2.04, 0, 0).state, Move.ENDED_WITH_ERROR)
        with self.assertRaises(TimeoutError):
            self.stage.move(-1.9, 0, 0, timeout=0)
        self.await_(lambda: self.stage.health.move != Move.UNDER_WAY)

    def test_z_pulled_cable(self):
        self.simulator.do("cable out")
        self.await_(lambda: self.stage.health.link == Link.FAILS)
        error = self.move_error(0.1, 0, 0)
        self.assertEqual(error.health.link, Link.FAILS)
        self.assertIn("no answer", str(error))
        self.assertGreater(error.health.failures_in_row, 0)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
