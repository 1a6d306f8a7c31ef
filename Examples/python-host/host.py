#!/usr/bin/env python3
"""A host in Python with ctypes, without a build step. It shows a launch screen and prints every
callback.

usage: host.py [--display headless|wayland|x11] [--seconds SECONDS] [LIBRARY]

LIBRARY is the path of libVelLaunchScreen.so. The default is the environment variable VEL_LIBRARY, or
the library that the system finds."""

import argparse
import ctypes
import os
import select
import sys
from ctypes import CFUNCTYPE, POINTER, c_char_p, c_double, c_int, c_size_t, c_uint32, c_uint64, c_void_p

VEL_OK, VEL_PRESENT_EMBEDDED = 0, 0


def structure(name, fields):
    """Returns a function that makes one of the library's structures and sets its member `size`."""
    structure_type = type(name, (ctypes.Structure,), {"_fields_": [("size", c_size_t), *fields]})
    return lambda **values: structure_type(size=ctypes.sizeof(structure_type), **values)


CALLBACKS = [
    ("state_changed", CFUNCTYPE(None, c_void_p, c_int, c_char_p)),
    ("will_appear", CFUNCTYPE(None, c_void_p)),
    ("may_disappear", CFUNCTYPE(c_int, c_void_p)),
    ("did_disappear", CFUNCTYPE(None, c_void_p)),
    ("record_event", CFUNCTYPE(None, c_void_p, c_char_p)),
    ("log_line", CFUNCTYPE(None, c_void_p, c_char_p)),
    ("controls_kept", CFUNCTYPE(None, c_void_p, c_uint32)),
    ("display_lost", CFUNCTYPE(None, c_void_p, c_char_p)),
    ("ended", CFUNCTYPE(None, c_void_p, c_int)),
    ("take_controls", CFUNCTYPE(None, c_void_p, c_uint32)),
]
Callbacks = structure("VelCallbacks", [("user_data", c_void_p), *CALLBACKS])
CreateOptions = structure(
    "VelCreateOptions",
    [
        ("display", c_char_p),
        ("display_name", c_char_p),
        ("window", c_uint64),
        ("title", c_char_p),
        ("width", c_double),
        ("height", c_double),
        ("content_controller", c_int),
        ("time", c_int),
        ("callbacks", c_void_p),
        ("host_window", c_void_p),
    ],
)
Request = structure(
    "VelRequest", [("mode", c_char_p), ("event", c_char_p), ("seconds", c_double)]
)


def load_library(path):
    library = ctypes.CDLL(path)
    library.vel_last_error.restype = c_char_p
    library.vel_create.argtypes = [c_void_p, POINTER(c_void_p)]
    library.vel_destroy.argtypes = [POINTER(c_void_p)]
    library.vel_request.argtypes = [c_void_p, c_void_p]
    library.vel_present.argtypes = [c_void_p, c_int]
    library.vel_pump.argtypes = [c_void_p, POINTER(c_int)]
    library.vel_poll_descriptor.argtypes = [c_void_p, POINTER(c_int)]
    return library


class Host:
    """Prints each callback on one line: its name and its arguments."""

    def __init__(self):
        self.callback_names = set()

    def print_callback(self, name, *values):
        texts = (value.decode() if isinstance(value, bytes) else str(value) for value in values)
        print(name, *texts, flush=True)
        self.callback_names.add(name)
        return 1  # the return value of may_disappear: yes

    def has_ended(self):
        """Returns true after the end, and after the event unless the display is lost."""
        names = self.callback_names
        return "ended" in names and bool(names & {"record_event", "display_lost"})

    def callbacks(self):
        """Returns the callbacks. The caller must keep them while the library may call them."""

        def make_callback(name, function_type):
            if function_type._restype_ is None:
                return function_type(lambda _, *values: self.print_callback(name, *values) and None)
            return function_type(lambda _, *values: self.print_callback(name, *values))

        return Callbacks(**{name: make_callback(name, function_type) for name, function_type in CALLBACKS})


def run(library, display, seconds):
    def exit_on_error(status):
        if status != VEL_OK:
            sys.exit(f"host.py: {library.vel_last_error().decode()}")

    host = Host()
    callbacks = host.callbacks()
    options = CreateOptions(
        display=display.encode(), callbacks=ctypes.addressof(callbacks), title=b"A host in Python"
    )
    screen = c_void_p()
    exit_on_error(library.vel_create(ctypes.byref(options), ctypes.byref(screen)))
    try:
        request = Request(event=b"launch_end", seconds=seconds)
        exit_on_error(library.vel_request(screen, ctypes.byref(request)))
        exit_on_error(library.vel_present(screen, VEL_PRESENT_EMBEDDED))
        descriptor = c_int()
        exit_on_error(library.vel_poll_descriptor(screen, ctypes.byref(descriptor)))
        while not host.has_ended():
            select.select([descriptor.value], [], [])
            exit_on_error(library.vel_pump(screen, None))
    finally:
        library.vel_destroy(ctypes.byref(screen))


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--display", choices=["headless", "wayland", "x11"], default="headless")
    parser.add_argument("--seconds", type=float, default=1)
    parser.add_argument(
        "library", nargs="?", default=os.environ.get("VEL_LIBRARY", "libVelLaunchScreen.so.1")
    )
    arguments = parser.parse_args()
    run(load_library(arguments.library), arguments.display, arguments.seconds)


if __name__ == "__main__":
    main()
