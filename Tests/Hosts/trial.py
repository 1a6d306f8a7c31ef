#!/usr/bin/env python3
"""Covers a program's window with a white launch screen, and prints the result as JSON.

usage: trial.py HOST ENVIRONMENT ENDING LAUNCHSCREEN PROGRAMS

The program is called the host, and the launch screen that covers its window is called the cover.

HOST is the name of a host in hosts.py. ENVIRONMENT is the name of an environment in environments.py: a window
manager and a compositor, only a window manager, or neither. ENDING is what ends the cover: "time" (the
countdown), "skip" (an input line in skip mode), "SIGTERM" or "SIGINT". LAUNCHSCREEN is the path of the program
`launchscreen`. PROGRAMS is the folder with the sampler (hosts-sampler) and the built hosts. Exits with 1 if it
finds a fault or cannot finish.
"""

import contextlib
import ctypes
import fcntl
import json
import os
import signal
import subprocess
import sys
import threading
import time
import traceback
from pathlib import Path

from environments import ENVIRONMENTS, PATIENCE, SCREEN, Display, end, wait_until
from hosts import HOSTS
from xclient import ICONIC, Client

_PR_SET_CHILD_SUBREAPER = 36
EXIT_STATUS = {"time": 0, "skip": 0, "SIGTERM": 128 + 15, "SIGINT": 128 + 2}
HINTS = [
    "_MOTIF_WM_HINTS",
    "WM_NORMAL_HINTS",
    "WM_HINTS",
    "WM_PROTOCOLS",
    "WM_CLASS",
    "WM_TRANSIENT_FOR",
    "_NET_WM_WINDOW_TYPE",
    "_NET_WM_WINDOW_OPACITY",
    "_NET_WM_BYPASS_COMPOSITOR",
    "_NET_WM_STATE",
]
MINIMUM_COVERED_TIME = 1.2  # seconds


def descendants():
    """Returns the ids of all descendants of this process."""
    parents = {}
    for entry in Path("/proc").iterdir():
        if entry.name.isdigit():
            with contextlib.suppress(OSError, IndexError, ValueError):
                fields = (entry / "stat").read_text().rpartition(")")[2].split()
                parents.setdefault(int(fields[1]), []).append(int(entry.name))
    process_ids, pending_ids = [], [os.getpid()]
    while pending_ids:
        children = parents.get(pending_ids.pop(), [])
        process_ids += children
        pending_ids += children
    return process_ids


def end_descendants():
    """Ends all descendants. This process is a subreaper: it becomes the parent of orphaned descendants."""
    for _ in range(50):
        process_ids = descendants()
        if not process_ids:
            return
        for process_id in process_ids:
            with contextlib.suppress(ProcessLookupError):
                os.kill(process_id, signal.SIGKILL)
        with contextlib.suppress(ChildProcessError):
            while os.waitpid(-1, os.WNOHANG)[0] != 0:
                pass
        time.sleep(0.02)


class Lines:
    """Reads the lines of a stream in a thread. Stores each line with its arrival time (CLOCK_MONOTONIC)."""

    def __init__(self, stream):
        self._stream = stream
        self.lines = []
        self._thread = threading.Thread(target=self._read, daemon=True)
        self._thread.start()

    def _read(self):
        for line in self._stream:
            self.lines.append((time.monotonic_ns(), line.decode(errors="replace").rstrip("\n")))

    def join(self):
        self._thread.join(5)

    def time_of(self, suffix):
        """Returns the time of the first line that ends with `suffix`, or None."""
        for line_time, line in list(self.lines):
            if line.endswith(suffix):
                return line_time
        return None

    def text(self):
        return "\n".join(line for _, line in self.lines)


class Frame:
    """One output line of the sampler, which reads nine points of the window. sampler.cpp describes the fields.

    `state` is V (viewable), U (not viewable) or D (destroyed). `non_white_points` and `backdrop_points` are
    masks with one bit for each point. A backdrop point has the colour of the screen behind the window."""

    def __init__(self, line):
        fields = line.split()
        self.time = int(fields[0])
        self.state = fields[1]
        self.non_white_points = int(fields[2], 16)
        self.backdrop_points = int(fields[3], 16)
        self.color = fields[4]
        self.rect = tuple(int(field) for field in fields[5:9])
        self.is_white = self.state == "V" and self.non_white_points == 0


class Trial:
    """Covers one host in one environment, and checks the result."""

    def __init__(self, host, environment, ending, launchscreen, programs):
        self.host = host
        self.environment = environment
        self.ending = ending
        self.launchscreen = launchscreen
        self.programs = programs
        self.result = {"host": host.name, "environment": environment.name, "ending": ending}
        self.faults = []
        self.display = self.client = self.process = self.window = None
        self.sampler = self.sampler_output = None
        self.backdrop_color = 0

    def add_fault(self, text):
        self.faults.append(text)

    # Preparation

    def start(self):
        self.display = Display(self.environment)
        self.display.start_manager()
        self.client = Client(self.display.name)
        if self.environment.has_manager and not wait_until(self.client.manager_runs):
            raise RuntimeError("the window manager does not start: " + self.display.log()[-300:])
        if self.environment.has_compositor and not wait_until(self.client.compositor_runs):
            raise RuntimeError("the compositor does not start: " + self.display.log()[-300:])
        time.sleep(0.5)  # for the compositor's first frame
        self.backdrop_color = self.client.pixel(SCREEN[0] // 2, SCREEN[1] // 2)
        self.open_host()
        if not wait_until(self.has_drawn_window, 15):
            self.result["note"] = "the host itself is white at each point"
        if not self.environment.has_manager:
            self.client.focus(self.window)
        self.result["window"] = hex(self.window)

    def open_host(self):
        variables = self.display.variables()
        variables.update(self.host.variables)
        if self.host.prepare:
            variables.update(self.host.prepare(self.programs))
        with open(self.display.home / "host.log", "wb") as log:
            self.process = subprocess.Popen(
                [part.format(bin=self.programs, home=self.display.home) for part in self.host.command],
                env=variables,
                stdin=subprocess.DEVNULL,
                stdout=log,
                stderr=log,
            )
        self.window = wait_until(self.find_window)
        if not self.window:
            log = (self.display.home / "host.log").read_text(errors="replace").strip()
            raise RuntimeError("the host opens no window: " + log[-300:])
        self.wait_until_settled()

    def find_window(self):
        if self.process.poll() is not None:
            return None
        # Without an event, openbox does not manage a window that was mapped before the main loop of openbox
        # runs. This message is an event.
        self.client.message(self.client.root.id, "_NET_CURRENT_DESKTOP", [0])
        return self.client.find(self.host.window)

    def points(self):
        """Returns nine points of the visible part of the window: the corners, the middles of the edges and
        the centre."""
        x, y, width, height = self.client.rect(self.window)
        extents = self.client.property(self.window, "_GTK_FRAME_EXTENTS")
        # A window with _GTK_FRAME_EXTENTS contains a shadow, which the host draws around the visible part.
        shadow_left, shadow_right, shadow_top, shadow_bottom = extents[2] if extents else (0, 0, 0, 0)
        x, y = x + shadow_left, y + shadow_top
        width, height = width - shadow_left - shadow_right, height - shadow_top - shadow_bottom
        right, bottom = min(x + width, SCREEN[0]) - 1, min(y + height, SCREEN[1]) - 1
        x, y = max(x, 0), max(y, 0)
        return [(px, py) for px in (x, (x + right) // 2, right) for py in (y, (y + bottom) // 2, bottom)]

    def is_drawn(self):
        """True if at least one point is neither white (the cover) nor black (an empty screen)."""
        return any(self.client.pixel(*point) not in (0, 0xFFFFFF) for point in self.points())

    def has_drawn_window(self):
        """True if the host has drawn its window. If the host has replaced its window, finds the new window and
        returns False."""
        # SDL can replace a new window when it creates a renderer.
        if not self.client.exists(self.window):
            self.window = self.find_window() or self.window
            return False
        return self.is_drawn()

    def wait_until_settled(self, pause=0.3):
        """Waits until the window keeps its position and size for `pause` seconds. Stops waiting after 10 seconds.

        Returns the position and size of the window."""
        last_change = [None, 0.0]  # the current rectangle, and the time at which it was first read

        def is_settled():
            rect = self.client.rect(self.window)
            if rect != last_change[0]:
                last_change[:] = [rect, time.monotonic()]
            return time.monotonic() - last_change[1] > pause

        wait_until(is_settled, 10)
        return last_change[0]

    def wait_for_stable_hints(self):
        """Waits until the hints stay the same for 0.4 seconds. Stops waiting after 10 seconds.

        Returns the hints."""
        last_change = [None, 0.0]  # the current hints, and the time at which they were first read

        def is_stable():
            hints = self.hints()
            if hints != last_change[0]:
                last_change[:] = [hints, time.monotonic()]
            return time.monotonic() - last_change[1] > 0.4

        wait_until(is_stable, 10)
        return last_change[0]

    # The user's actions

    def rect(self):
        return self.client.rect(self.window)

    def button_position(self, name):
        """Returns the position of a window button on the screen, or None if the button does not exist.

        The host draws the buttons itself, or the window manager draws them."""
        x, y, width, _ = self.rect()
        if self.host.buttons is not None:
            extents = self.client.property(self.window, "_GTK_FRAME_EXTENTS")
            right, top = (extents[2][1], extents[2][2]) if extents else (0, 0)
            offset = self.host.buttons.get(name)
            return offset and (x + width - right + offset[0], y + top + offset[1])
        offset = self.environment.buttons.get(name)
        return offset and (x + width + offset[0], y + offset[1])

    def click(self, name):
        """Clicks a window button. Returns False if the button does not exist or is outside the screen."""
        position = self.button_position(name)
        if not position or not (0 <= position[0] < SCREEN[0] and 0 <= position[1] < SCREEN[1]):
            return False
        self.client.click(*position)
        return True

    def rest_pointer(self):
        self.client.move_pointer(SCREEN[0] - 1, SCREEN[1] - 1)

    def use_controls(self, patience):
        """Minimises, maximises and resizes the window with the mouse. The controls are the two buttons and the
        frame's corner. Waits up to `patience` seconds for the effect of each control.

        Returns the names of the controls that work."""
        if not self.environment.buttons:
            return []
        working_controls = []
        original = self.rect()
        # The window may be maximised already: xfwm4 maximises a window that is larger than the screen.
        was_maximised = "_NET_WM_STATE_MAXIMIZED_VERT" in self.client.atoms(self.window, "_NET_WM_STATE")
        if self.click("minimise"):
            if wait_until(lambda: self.client.state(self.window) == ICONIC, patience):
                working_controls.append("minimise")
                self.client.activate(self.window)
                if not wait_until(lambda: self.client.is_viewable(self.window), 10):
                    raise RuntimeError("the minimised window does not come back")
                self.wait_until_settled()
        if self.click("maximise"):
            if wait_until(lambda: self.rect() != original, patience):
                working_controls.append("maximise")
                self.wait_until_settled()
                # The first value is 1 to add the states and 0 to remove them. The last value, 2, says that a
                # pager sends the message.
                self.client.message(
                    self.window,
                    "_NET_WM_STATE",
                    [1 if was_maximised else 0]
                    + [
                        self.client.atom("_NET_WM_STATE_MAXIMIZED_" + axis) for axis in ("VERT", "HORZ")
                    ]
                    + [2],
                )
                wait_until(lambda: self.rect() == original, 3)
                self.wait_until_settled()
        if self.environment.can_resize and self.host.buttons is None and self.drag_corner(60, 50):
            if wait_until(lambda: self.rect()[2:] != original[2:], patience):
                working_controls.append("resize")
                self.wait_until_settled()
                self.drag_corner(-60, -50)
                self.wait_until_settled()
        self.rest_pointer()
        return working_controls

    def drag_corner(self, right, down):
        """Drags the bottom right corner of the window manager's frame by `right` and `down` pixels.

        Returns False if the corner is not on the screen."""
        x, y, width, height = self.rect()
        extents = self.client.property(self.window, "_NET_FRAME_EXTENTS")
        borders = (extents[2][1], extents[2][3]) if extents else (0, 0)
        corner = (x + width + max(borders[0] - 2, 0), y + height + max(borders[1] - 2, 0))
        if corner[0] >= SCREEN[0] or corner[1] >= SCREEN[1]:
            return False
        self.client.drag(corner, (corner[0] + right, corner[1] + down))
        return True

    def close_by_button(self):
        """Clicks the close button. Returns whether the window closes, or None if the trial cannot check it."""
        # If a host does not support WM_DELETE_WINDOW, icewm asks the user whether to kill the host.
        if "WM_DELETE_WINDOW" not in self.client.atoms(self.window, "WM_PROTOCOLS"):
            return None
        if not self.click("close"):
            if self.environment.name != "i3":
                return None
            # i3 draws no buttons. The trial sends the message with which a pager closes a window.
            self.client.message(self.window, "_NET_CLOSE_WINDOW", [0, 2])

        def is_closed():
            return self.process.poll() is not None or not self.client.is_viewable(self.window)

        return bool(wait_until(is_closed, 8))

    def closes_without_cover(self):
        """Restarts the host, and returns whether its close button works without a cover."""
        end(self.process)
        wait_until(lambda: not self.client.exists(self.window))
        self.open_host()
        return self.close_by_button()

    # The run

    def start_sampling(self):
        self.sampler = subprocess.Popen(
            [str(Path(self.programs) / "hosts-sampler"), hex(self.window), "%06x" % self.backdrop_color],
            env=self.display.variables(),
            stdin=subprocess.PIPE,
            stdout=subprocess.PIPE,
            stderr=subprocess.DEVNULL,
        )
        self.sampler_output = Lines(self.sampler.stdout)
        wait_until(lambda: self.sampler_output.lines)

    def frames(self):
        return [Frame(line) for _, line in list(self.sampler_output.lines)]

    def hints(self):
        return {name: self.client.property(self.window, name) for name in HINTS}

    def toggle_change(self):
        """Makes the host change its window: for example, resize it. The next call makes the host undo the
        change. Not every host can undo its change."""
        self.process.send_signal(signal.SIGUSR1)

    def change_without_cover(self):
        """Lets the host change its window and undo the change, without a cover. Returns the position and
        size after the change."""
        original = self.wait_until_settled()
        self.toggle_change()
        wait_until(lambda: self.rect() != original, 1.5)
        changed = self.wait_until_settled()
        self.toggle_change()
        if not wait_until(lambda: self.rect() == original, 5):
            self.result["note"] = "without a cover the host's change is not undone"
        self.wait_until_settled()
        return changed

    def run(self):
        host, client = self.host, self.client
        self.result["has buttons"] = bool(self.environment.buttons) and host.buttons is None
        controls_before = self.use_controls(2.0)
        self.result["buttons"] = controls_before
        self.wait_until_settled()
        changed_rect = None  # position and size after the host's change, without a cover
        if host.changes_window and not host.recreates_window and not host.maps_again:
            changed_rect = self.change_without_cover()
        original = self.rect()
        if host.changes_before_cover:
            self.toggle_change()
            wait_until(lambda: self.rect() == changed_rect, 5)
            self.wait_until_settled()
        if not self.environment.has_manager:
            client.focus(self.window)
        elif not client.is_active(self.window):
            client.activate(self.window)
            wait_until(lambda: client.is_active(self.window), 5)
        if host.draws_on_keys:
            x, y, width, height = self.rect()
            client.click(x + width // 2, y + height // 2)
            self.rest_pointer()
        before = {
            "hints": self.wait_for_stable_hints(),
            "rect": self.wait_until_settled(),
            "actions": sorted(client.atoms(self.window, "_NET_WM_ALLOWED_ACTIONS")),
            "children": client.child_count(self.window),
            "is_drawn": self.is_drawn(),
        }
        self.start_sampling()
        arguments = ["--window", hex(self.window)]
        if self.ending == "time":
            arguments += ["--duration", "2"]
        else:
            arguments += ["--duration", "600"]
            if self.ending == "skip":
                arguments += ["--mode", "skip"]
        show = subprocess.Popen(
            [self.launchscreen, "show", "--display", "x11", *arguments],
            env=self.display.variables(),
            stdin=subprocess.PIPE,
            stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT,
        )
        output = Lines(show.stdout)
        try:
            self.cover(show, output, before, changed_rect)
        finally:
            end(show)
            output.join()
            self.result["output"] = output.text()
        controls_after = None
        if changed_rect is not None:
            self.toggle_change()
            if not wait_until(lambda: self.rect() == original, 5):
                self.add_fault("the host cannot undo its change: its window has %s" % (self.rect(),))
            self.wait_until_settled()
        if client.exists(self.window) and client.is_viewable(self.window):
            controls_after = self.use_controls(6.0)
            lost_controls = [name for name in controls_before if name not in controls_after]
            if lost_controls:
                self.add_fault("buttons lost: " + ", ".join(lost_controls))
            closes = self.close_by_button()
            if closes is False:
                if self.closes_without_cover():
                    self.add_fault("the close button does not close the window")
                else:  # for example, the frame is too narrow for a close button
                    closes = None
                    self.result["note"] = "without a cover the close button does not work either"
            self.result["closes"] = closes
        self.result["buttons after"] = controls_after

    def cover(self, show, output, before, changed_rect):
        """Waits for the cover, ends it, and then checks the sampled frames and the window.

        `show` is the process of `launchscreen show`, and `output` contains its output lines. `before` describes
        the window before the cover. `changed_rect` is the position and size that the window has after the host
        has changed it, or None if the trial does not check them."""
        host, client = self.host, self.client
        has_printed_or_ended = wait_until(
            lambda: output.time_of("covered") or show.poll() is not None, PATIENCE
        )
        if output.time_of("covered") is None:
            self.add_fault(
                "launchscreen ends early" if has_printed_or_ended else "launchscreen does not print covered"
            )
            self.stop_sampling()
            self.result["status"] = show.poll()
            return
        is_white = wait_until(lambda: any(frame.is_white for frame in self.frames()), 5)
        if not is_white:
            self.add_fault("prints covered, but the window is never white")
        cover_start = time.monotonic()
        time.sleep(0.4)
        if host.draws_on_keys:
            for step in range(16):
                client.press_key("Next" if step % 8 < 4 else "Prior")
                time.sleep(0.08)
        expected_rect = before["rect"]  # position and size after the cover
        # `end_time` is the time until which every frame must be white.
        end_time = change_time = None
        if host.changes_window and not host.changes_before_cover and self.is_covering(output):
            change_time = time.monotonic_ns()
            self.toggle_change()
            # The change of this host unmaps the window, which then loses the keyboard focus, and maps it again.
            # Only a window manager restores the focus.
            if host.maps_again and not self.environment.has_manager:
                wait_until(lambda: not client.is_viewable(self.window), 2)
                wait_until(lambda: client.is_viewable(self.window))
                client.focus(self.window)
            if changed_rect is not None:
                expected_rect = changed_rect
                if not wait_until(lambda: self.rect() == changed_rect, 3):
                    self.add_fault(
                        "while covered the host gets %s, not %s" % (self.rect(), changed_rect)
                    )
                self.result["changed after ms"] = (time.monotonic_ns() - change_time) // 1_000_000
            time.sleep(0.5)
        time.sleep(max(0, cover_start + MINIMUM_COVERED_TIME - time.monotonic()))
        if host.recreates_window:
            # The change creates a new window, which may hide the covered window.
            end_time = change_time
            if wait_until(lambda: show.poll() is not None, 5) is None:
                self.add_fault("launchscreen does not end when the window is destroyed")
        elif self.ending == "time":
            if not wait_until(lambda: output.time_of("dismissed") or show.poll() is not None, 20):
                self.add_fault("the countdown does not end")
            end_time = output.time_of("dismissed") or time.monotonic_ns()
        else:
            if show.poll() is not None:
                self.add_fault("launchscreen ended by itself")
            end_time = time.monotonic_ns()
            if self.ending == "skip":
                with contextlib.suppress(BrokenPipeError):
                    show.stdin.write(b"\n")
                    show.stdin.flush()
            else:
                show.send_signal(getattr(signal, self.ending))
        if wait_until(lambda: show.poll() is not None, 20) is None:
            self.add_fault("launchscreen does not end")
            self.stop_sampling()
            return
        status = show.poll()
        self.result["status"] = status
        if not host.recreates_window and status != EXIT_STATUS[self.ending]:
            self.add_fault("exit status %d" % status)
        if before["is_drawn"] and not host.recreates_window:
            if not wait_until(self.is_drawn, 8):
                self.add_fault("the host is not visible again")
        time.sleep(0.2)
        self.stop_sampling()
        self.check_frames(end_time)
        if not host.recreates_window:
            self.check_window(before, expected_rect)

    def is_covering(self, output):
        return output.time_of("dismissed") is None

    def stop_sampling(self):
        if self.sampler:
            self.sampler.stdin.close()
            with contextlib.suppress(subprocess.TimeoutExpired):
                self.sampler.wait(5)
            self.sampler_output.join()

    def check_frames(self, end_time):
        """Checks that each viewable frame from the first white frame to `end_time` is white. Checks that the
        window does not turn white again after `end_time`."""
        frames = self.frames()
        first_white = next((index for index, frame in enumerate(frames) if frame.is_white), None)
        if first_white is None:
            self.result["frames"] = 0
            return
        viewable_frames = [
            frame for frame in frames[first_white:] if frame.time <= end_time and frame.state == "V"
        ]
        non_white_frames = [frame for frame in viewable_frames if not frame.is_white]
        if self.environment.has_compositor:
            undrawn = self.undrawn_frames(viewable_frames)
            self.result["not drawn yet"] = len(undrawn)
            non_white_frames = [frame for frame in non_white_frames if frame not in undrawn]
        self.result["frames"] = len(viewable_frames)
        self.result["not white"] = sum(not frame.is_white for frame in viewable_frames)
        if viewable_frames:
            self.result["seconds sampled"] = round((viewable_frames[-1].time - viewable_frames[0].time) / 1e9, 3)
        self.result["unmapped"] = sum(
            1 for frame in frames[first_white:] if frame.time <= end_time and frame.state == "U"
        )
        if non_white_frames:
            start_time = viewable_frames[0].time
            self.result["not white, in detail"] = [
                [(frame.time - start_time) // 1_000_000, "%03x" % frame.non_white_points, frame.color, frame.rect]
                for frame in non_white_frames[:: max(1, len(non_white_frames) // 20)]
            ]
            self.add_fault(
                "%d of %d frames not white, first after %d ms"
                % (len(non_white_frames), len(viewable_frames), (non_white_frames[0].time - start_time) // 1_000_000)
            )
        # Leave out the frames in which the compositor has not drawn the window yet. In such a frame each point
        # is white or shows the screen behind the window.
        whiteness_after_end = [
            frame.is_white
            for frame in frames
            if frame.time > end_time
            and frame.state == "V"
            and not (
                self.environment.has_compositor
                and frame.non_white_points
                and frame.non_white_points == frame.backdrop_points
            )
        ]
        if any(not previous and current for previous, current in zip(whiteness_after_end, whiteness_after_end[1:])):
            self.add_fault("the window is white again after the end")

    def undrawn_frames(self, frames):
        """Returns the frames in which the compositor has not yet drawn a window that was just mapped, moved or
        resized. In such a frame each point is white or shows the screen behind the window."""
        # `last_change_time` is the time of the first frame until the window changes.
        undrawn, last_change_time = [], frames[0].time if frames else 0
        for previous, frame in zip(frames, frames[1:]):
            # After more than 50 ms without a viewable frame, treat the window as mapped again.
            if frame.rect != previous.rect or frame.time - previous.time > 50_000_000:
                last_change_time = frame.time
            if (
                frame.non_white_points
                and frame.non_white_points == frame.backdrop_points
                and frame.time - last_change_time < 300_000_000
                and last_change_time != frames[0].time
            ):
                undrawn.append(frame)
        return undrawn

    def check_window(self, before, expected_rect):
        def changed_hints():
            hints = self.hints()
            return [name for name in HINTS if hints[name] != before["hints"][name]]

        wait_until(lambda: not changed_hints(), 3)
        # A host that maximises its window or makes it fullscreen also changes _NET_WM_STATE.
        changed = [
            name
            for name in changed_hints()
            if name != "_NET_WM_STATE" or expected_rect == before["rect"]
        ]
        if changed:
            self.add_fault("hints differ: " + ", ".join(changed))
            hints = self.hints()
            self.result["hints"] = {name: [before["hints"][name], hints[name]] for name in changed}
        if not wait_until(lambda: self.rect() == expected_rect, 3):
            self.add_fault("position and size %s, not %s" % (self.rect(), expected_rect))
        # Check the allowed actions only if the window manager has written them. A window manager's
        # list contains _NET_WM_ACTION_CLOSE. The host godot3-runner writes a list without this action.
        if expected_rect == before["rect"] and "_NET_WM_ACTION_CLOSE" in before["actions"]:
            self.check_actions(before["actions"])
        children = self.client.child_count(self.window)
        if children != before["children"]:
            self.add_fault("%d child windows, not %d" % (children, before["children"]))

    def check_actions(self, expected_actions):
        def actions():
            return sorted(self.client.atoms(self.window, "_NET_WM_ALLOWED_ACTIONS"))

        if not wait_until(lambda: actions() == expected_actions, 3):
            current_actions = actions()
            lost = [name for name in expected_actions if name not in current_actions]
            gained = [name for name in current_actions if name not in expected_actions]
            if self.host.maps_again and self.environment.publishes_actions_only_when_mapped and not gained:
                self.result["note"] = (
                    "the window manager publishes the allowed actions only when it maps a window: "
                    "the list still lacks the actions that the cover removed"
                )
                return
            self.add_fault("allowed actions lost: %s, gained: %s" % (lost, gained))


def main():
    host_name, environment_name, ending, launchscreen, programs = sys.argv[1:]
    ctypes.CDLL(None).prctl(_PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0)

    def raise_timeout(*_):
        raise TimeoutError("the trial took too long")

    signal.signal(signal.SIGALRM, raise_timeout)
    signal.signal(signal.SIGTERM, raise_timeout)
    signal.alarm(150)
    trial = Trial(
        next(candidate for candidate in HOSTS if candidate.name == host_name),
        next(candidate for candidate in ENVIRONMENTS if candidate.name == environment_name),
        ending,
        str(Path(launchscreen).resolve()),
        str(Path(programs).resolve()),
    )
    start_time = time.monotonic()
    lock = None
    try:
        if trial.host.prepare:
            # Hosts with `prepare` share a Wine prefix, so only one of them may run at a time.
            lock = open(Path(programs) / "wine.lock", "w")  # pylint: disable=consider-using-with
            fcntl.flock(lock, fcntl.LOCK_EX)
        trial.start()
        trial.run()
    except Exception as error:  # pylint: disable=broad-except
        trial.result["error"] = "%s: %s" % (type(error).__name__, error)
        trial.result["trace"] = traceback.format_exc()
    finally:
        signal.alarm(0)
        end_descendants()
        if trial.display:
            trial.display.close()
        if lock:
            lock.close()
    trial.result["faults"] = trial.faults
    trial.result["seconds"] = round(time.monotonic() - start_time, 1)
    json.dump(trial.result, sys.stdout, indent=1)
    print()
    return 1 if trial.faults or "error" in trial.result else 0


if __name__ == "__main__":
    sys.exit(main())
