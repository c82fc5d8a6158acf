#!/usr/bin/env python3
"""The stage module ZbOvisk for Python: a motorised X/Y/Z stage with its lamps and switches.

    import zb_ovisk

    with zb_ovisk.Stage() as stage:            # starts the module, stops it at the end
        print(stage.stage.position)            # (x, y, z) in the host's unit
        stage.light(1, 128)                    # lamp 1 to half
        stage.move(0.25, -0.1, 0.05)           # returns when the stage is there
        if stage.latches().emergency:
            ...

Needs nothing but Python 3.8 and the module's library: `ZbOvisk.dll` on 64-bit Windows,
`libZbOvisk.so` on Linux. It is looked for as `library=` says, then in the environment variable
ZBOVISK_LIBRARY, beside this file, in the package that this file is part of, and where the system keeps
its libraries.

Run as a program it prints a live stage until it is interrupted.
"""

import ctypes
import enum
import os
import pathlib
import sys
import threading
import time
from dataclasses import dataclass
from typing import Optional, Tuple

COUNTS_PER_UNIT = 1_000_000  #: of a move's target
_NEVER = 2**64 - 1


class Worker(enum.IntEnum):
    """How the module's thread is."""

    NOT_STARTED = 0
    RUNS = 1
    STOPPED = 2
    ENDED = 3  #: by an exception: nothing is polled or sent any more


class Link(enum.IntEnum):
    """How the line to the controller is."""

    NEVER_ANSWERED = 0
    ANSWERS = 1
    FAILS = 2
    LOST = 3  #: with `Reopen`: the module is mending it, and takes no move and no homing


class Move(enum.IntEnum):
    """What became of a move."""

    NONE = 0
    UNDER_WAY = 1
    ENDED_WELL = 2
    ENDED_WITH_ERROR = 3
    REFUSED = 4
    REPLACED = 5
    LOST = 6


class Homing(enum.IntEnum):
    """Which homing is under way."""

    NONE = 0
    BY_HAND = 1
    AUTOMATIC = 2


class HomingEnd(enum.IntEnum):
    """How the last homing ended."""

    NONE = 0
    FINISHED = 1
    CANCELLED = 2
    FAILED = 3


class _Stage(ctypes.Structure):
    _fields_ = [
        ("size", ctypes.c_uint32),
        *((name, ctypes.c_int32) for name in ("x", "y", "z", "x_counts", "y_counts", "z_counts")),
        *((name, ctypes.c_bool) for name in ("x_error", "y_error", "z_error", "lamp_changed")),
        *((name, ctypes.c_char * 32) for name in ("x_text", "y_text", "z_text")),
        ("switches", ctypes.c_int32 * 16),
        ("lamps", ctypes.c_int32 * 7),
    ]


class _Health(ctypes.Structure):
    _fields_ = [
        ("size", ctypes.c_uint32),
        ("version", ctypes.c_uint32),
        ("worker", ctypes.c_int32),
        ("homing_mode", ctypes.c_int32),
        ("scale_factor", ctypes.c_double),
        ("port", ctypes.c_int32),
        ("link", ctypes.c_int32),
        ("failures_in_row", ctypes.c_uint32),
        ("last_system_error", ctypes.c_uint32),
        ("exchanges_good", ctypes.c_uint64),
        ("exchanges_failed", ctypes.c_uint64),
        ("since_good", ctypes.c_uint64),
        ("last_failure", ctypes.c_char * 96),
        ("position_age", ctypes.c_uint64),
        ("switches_age", ctypes.c_uint64),
        ("lamps_age", ctypes.c_uint64),
        ("moves_accepted", ctypes.c_uint64),
        ("moves_ended", ctypes.c_uint64),
        ("move", ctypes.c_int32),
        ("previous_move", ctypes.c_int32),
        ("move_target", ctypes.c_int32 * 3),
        ("move_text", ctypes.c_char * 32),
        ("link_losses", ctypes.c_uint32),
        ("homing", ctypes.c_int32),
        ("homing_axis", ctypes.c_int32),
        ("last_homing", ctypes.c_int32),
    ]


@dataclass(frozen=True)
class StageData:
    """The stage as the module has last seen it; `Health` tells how old that is."""

    position: Tuple[int, int, int]  #: in the host's unit: counts divided by ScaleFactor
    counts: Tuple[int, int, int]  #: in the controller's counts
    errors: Tuple[Optional[str], ...]  #: an axis's error code; its position then means nothing
    switches: Tuple[int, ...]  #: sixteen fields; 0, 2, 4 and 11 are latches
    lamps: Tuple[int, ...]  #: seven fields, the third always 0
    lamp_changed: bool  #: latch

    @property
    def emergency(self) -> bool:
        """Whether the emergency switch was pressed since the latches were last taken."""
        return self.switches[0] == 1


@dataclass(frozen=True)
class Latches:
    """What has happened since the latches were last taken."""

    any_switch: bool
    emergency: bool
    lamp_changed: bool


@dataclass(frozen=True)
class Health:
    """How the module and the line are. Ages are in seconds, None for never."""

    version: str
    worker: Worker
    automatic_homing: bool
    scale_factor: float
    port: int
    link: Link
    failures_in_row: int
    exchanges_good: int
    exchanges_failed: int
    last_system_error: int
    last_failure: str
    since_good: Optional[float]
    position_age: Optional[float]
    switches_age: Optional[float]
    lamps_age: Optional[float]
    moves_accepted: int
    moves_ended: int
    move: Move
    previous_move: Move
    move_target: Tuple[int, int, int]  #: in counts
    move_text: str
    link_losses: int  #: with `Reopen`: after one, home the stage again
    homing: Homing
    homing_axis: str  #: "X", "Y" or ""
    last_homing: HomingEnd

    def __str__(self) -> str:
        """What somebody wants to read when something is wrong."""
        if self.worker != Worker.RUNS:
            return f"the module's worker is {self.worker.name.lower().replace('_', ' ')}"
        if self.link == Link.ANSWERS:
            age = "" if self.position_age is None else f", position {self.position_age:.1f} s old"
            return f"the controller answers{age}"
        since = "" if self.since_good is None else f" for {self.since_good:.1f} s"
        return f"no answer{since}: {self.last_failure or 'nothing was asked yet'}"


class StageError(RuntimeError):
    """Something did not work; the text and `health` tell why."""

    def __init__(self, text: str, health: Health):
        super().__init__(f"{text} ({health})")
        self.health = health


class MoveError(StageError):
    """A move did not bring the stage to its target; `state` tells what became of it."""

    def __init__(self, text: str, health: Health, state: Move):
        super().__init__(text, health)
        self.state = state


def _seconds(milliseconds: int) -> Optional[float]:
    return None if milliseconds == _NEVER else milliseconds / 1000


def _find_library() -> str:
    named = os.environ.get("ZBOVISK_LIBRARY")
    if named:
        return named
    names = ("ZbOvisk.dll",) if os.name == "nt" else ("libZbOvisk.so.1", "libZbOvisk.so")
    here = pathlib.Path(__file__).resolve().parent
    folders = [here]
    for above in list(here.parents)[:4]:
        # A Debian machine has a folder of its own for each kind of processor below lib.
        folders += [above / "bin", *sorted(above.glob("lib*")), *sorted(above.glob("lib/*-linux-*"))]
    for folder in folders:
        for name in names:
            if (folder / name).is_file():
                return str(folder / name)
    return names[0]


def _load(path: Optional[str]) -> ctypes.CDLL:
    library = ctypes.CDLL(path or _find_library())
    for name, arguments in (
        ("OVISK_ZbrCmd", (ctypes.c_uint32, ctypes.c_size_t)),
        ("ZbOvisk_ReadStage", (ctypes.POINTER(_Stage),)),
        ("ZbOvisk_ReadHealth", (ctypes.POINTER(_Health),)),
        ("ZbOvisk_GetAndClearLatches", (ctypes.POINTER(ctypes.c_bool),) * 3),
        ("ZbOvisk_SetLight", (ctypes.c_int32, ctypes.c_int32)),
        ("ZbOvisk_CncGotoAbsoluteNotifyWorld",
         (ctypes.c_double,) * 3 + (ctypes.c_void_p, ctypes.c_ssize_t)),
    ):
        function = getattr(library, name)
        function.argtypes = arguments
        function.restype = ctypes.c_bool
    return library


class Stage:
    """The one stage of this process. Its functions may be called from any thread."""

    def __init__(self, library: Optional[str] = None, automatic_homing: bool = False):
        """Loads the library, from `library` if that is given. Nothing is sent yet."""
        self._library = _load(library)
        self._automatic_homing = automatic_homing
        self._move_lock = threading.Lock()

    def __enter__(self) -> "Stage":
        self.start()
        return self

    def __exit__(self, *_exception) -> None:
        self.stop()

    def start(self) -> None:
        """Opens the port, puts the controller into remote mode, starts polling.

        It does that with no controller as well, and goes on trying: `health` tells. A stage that was
        stopped can't be started again in this process.
        """
        if self.health.worker in (Worker.STOPPED, Worker.ENDED):
            raise StageError("a stage that was stopped can't be started again", self.health)
        self._library.OVISK_ZbrCmd(1, 1 if self._automatic_homing else 0)

    def stop(self) -> None:
        """Ends polling and closes the port, within about two seconds."""
        self._library.OVISK_ZbrCmd(2, 0)

    def home(self, parent: int = 0) -> HomingEnd:
        """Runs the homing dialog; `parent` is a window handle.

        By hand it returns when homing is over, and how it ended. Automatically it returns
        HomingEnd.NONE with the stage still on its way, or CANCELLED: watch `health.homing`.
        """
        self._library.OVISK_ZbrCmd(3, parent)
        health = self.health
        return HomingEnd.NONE if health.homing != Homing.NONE else health.last_homing

    @property
    def stage(self) -> StageData:
        """The stage as last seen. Never waits."""
        raw = _Stage(size=ctypes.sizeof(_Stage))
        self._library.ZbOvisk_ReadStage(raw)
        errors = tuple(
            text.decode("ascii", "replace") if error else None
            for error, text in ((raw.x_error, raw.x_text), (raw.y_error, raw.y_text),
                                (raw.z_error, raw.z_text)))
        return StageData((raw.x, raw.y, raw.z), (raw.x_counts, raw.y_counts, raw.z_counts), errors,
                         tuple(raw.switches), tuple(raw.lamps), raw.lamp_changed)

    @property
    def health(self) -> Health:
        """How module and line are, at one moment. Never waits."""
        raw = _Health(size=ctypes.sizeof(_Health))
        self._library.ZbOvisk_ReadHealth(raw)
        return Health(
            version=f"{raw.version // 10000}.{raw.version // 100 % 100}.{raw.version % 100}",
            worker=Worker(raw.worker), automatic_homing=raw.homing_mode == 1,
            scale_factor=raw.scale_factor, port=raw.port, link=Link(raw.link),
            failures_in_row=raw.failures_in_row, exchanges_good=raw.exchanges_good,
            exchanges_failed=raw.exchanges_failed, last_system_error=raw.last_system_error,
            last_failure=raw.last_failure.decode("ascii", "replace"),
            since_good=_seconds(raw.since_good), position_age=_seconds(raw.position_age),
            switches_age=_seconds(raw.switches_age), lamps_age=_seconds(raw.lamps_age),
            moves_accepted=raw.moves_accepted, moves_ended=raw.moves_ended, move=Move(raw.move),
            previous_move=Move(raw.previous_move), move_target=tuple(raw.move_target),
            move_text=raw.move_text.decode("ascii", "replace"), link_losses=raw.link_losses,
            homing=Homing(raw.homing),
            homing_axis=("", "X", "Y")[raw.homing_axis], last_homing=HomingEnd(raw.last_homing))

    def latches(self) -> Latches:
        """Takes the latches: each event is told once. Never waits."""
        flags = [ctypes.c_bool() for _ in range(3)]
        self._library.ZbOvisk_GetAndClearLatches(*(ctypes.byref(flag) for flag in flags))
        return Latches(*(flag.value for flag in flags))

    def light(self, lamp: int, value: int) -> None:
        """Sets lamp 0 to 10 to a brightness of 0 to 255. Never waits for the controller."""
        if not self._library.ZbOvisk_SetLight(lamp, value):
            raise ValueError(f"there is no lamp {lamp}")

    def move(self, x: float, y: float, z: float, *, wait: bool = True, timeout: float = 60.0,
             tolerance: float = 0.0001) -> None:
        """Moves to an absolute position; a unit is 1,000,000 counts.

        With `wait` it returns when the stage stands at its target, to `tolerance` units. MoveError:
        the controller refused, stopped or lost the move, or it ended elsewhere. TimeoutError: it
        is still under way after `timeout` seconds.
        """
        with self._move_lock:
            if not self._library.ZbOvisk_CncGotoAbsoluteNotifyWorld(x, y, z, None, 0):
                raise MoveError("the move was not accepted: no such target, or no answer",
                                self.health, Move.NONE)
            number = self.health.moves_accepted
        if wait:
            self._await_move(number, (x, y, z), timeout, tolerance)

    def _await_move(self, number: int, target: Tuple[float, float, float], timeout: float,
                    tolerance: float) -> None:
        end = time.monotonic() + timeout
        while True:
            health = self.health
            if health.moves_accepted != number:
                raise MoveError("the move was replaced by a newer one", health, Move.REPLACED)
            if health.move != Move.UNDER_WAY:
                break
            if time.monotonic() > end:
                raise TimeoutError(f"the move is still under way ({health})")
            time.sleep(0.02)
        if health.move != Move.ENDED_WELL:
            words = {Move.REFUSED: f"the controller refused the move: {health.move_text}",
                     Move.LOST: "the move's condition could not be read",
                     Move.ENDED_WITH_ERROR: "the move was cancelled, failed, or met a limit"}
            raise MoveError(words[health.move], health, health.move)
        self._require_at(target, tolerance, health)

    def _require_at(self, target: Tuple[float, float, float], tolerance: float,
                    health: Health) -> None:
        # The record is a poll behind the condition.
        deadline = time.monotonic() + 1.0
        while any(abs(counts / COUNTS_PER_UNIT - wanted) > tolerance
                  for counts, wanted in zip(self.stage.counts, target)):
            if time.monotonic() > deadline:
                raise MoveError(f"the move ended well, but the stage is at {self.stage.counts}",
                                health, health.move)
            time.sleep(0.02)


def main() -> int:
    """Prints a live stage, two lines a second."""
    with Stage() as stage:
        try:
            while True:
                data = stage.stage
                shown = ("  ".join(f"{axis}={error or position:>10}" for axis, position, error in
                                   zip("XYZ", data.position, data.errors)))
                print(f"{shown}  {stage.health}", flush=True)
                time.sleep(0.5)
        except KeyboardInterrupt:
            return 0


if __name__ == "__main__":
    sys.exit(main())
