"""An X client that reads the state of windows and simulates a user."""

import sys
import time

# Finds Debian's Python packages even if the interpreter does not come from Debian.
sys.path.append("/usr/lib/python3/dist-packages")

# pylint: disable=wrong-import-position
from Xlib import X, XK, display, error
from Xlib.ext import xtest
from Xlib.protocol import event

ICONIC = 3  # the value of WM_STATE for a minimised window


class Client:
    """A connection to the display."""

    def __init__(self, name):
        self._display = display.Display(name)
        self._display.set_error_handler(lambda *_: None)
        self.root = self._display.screen().root

    def close(self):
        self._display.close()

    def _window(self, window_id):
        return self._display.create_resource_object("window", window_id)

    def atom(self, name):
        return self._display.intern_atom(name)

    def property(self, window_id, name):
        """Returns the property as (type, format, values), or None if the window does not have it."""
        try:
            value = self._window(window_id).get_full_property(self.atom(name), X.AnyPropertyType)
        except error.XError:
            return None
        if value is None:
            return None
        return (self._atom_name(value.property_type), value.format, tuple(value.value))

    def _atom_name(self, atom):
        try:
            return self._display.get_atom_name(atom)
        except error.XError:
            return str(atom)

    def atoms(self, window_id, name):
        """Returns the names of the atoms in a property."""
        value = self.property(window_id, name)
        return [self._atom_name(atom) for atom in value[2]] if value else []

    def manager_runs(self):
        """Returns True if an EWMH window manager is running."""
        manager_window = self.property(self.root.id, "_NET_SUPPORTING_WM_CHECK")
        return bool(manager_window) and self.property(manager_window[2][0], "_NET_SUPPORTING_WM_CHECK") is not None

    def compositor_runs(self):
        return self._display.get_selection_owner(self.atom("_NET_WM_CM_S0")) != X.NONE

    def _children(self, window):
        try:
            return window.query_tree().children
        except error.XError:
            return []

    def _text(self, window_id, name):
        value = self.property(window_id, name)
        if not value or value[1] != 8:
            return ""
        return bytes(value[2]).decode(errors="replace")

    def find(self, text):
        """Returns the id of the largest viewable window whose class or title contains `text`. Returns None if no
        window matches."""
        largest_window, largest_size = None, 0
        windows = [self.root]
        while windows:
            for child in self._children(windows.pop()):
                windows.append(child)
                if not any(
                    text in self._text(child.id, name)
                    for name in ("WM_CLASS", "WM_NAME", "_NET_WM_NAME")
                ):
                    continue
                rect = self.rect(child.id)
                if rect and self.is_viewable(child.id) and rect[2] * rect[3] > largest_size:
                    largest_window, largest_size = child.id, rect[2] * rect[3]
        return largest_window

    def is_viewable(self, window_id):
        try:
            return self._window(window_id).get_attributes().map_state == X.IsViewable
        except error.XError:
            return False

    def exists(self, window_id):
        return self.rect(window_id) is not None

    def rect(self, window_id):
        """Returns (x, y, width, height) in screen coordinates, or None if the window does not exist."""
        window = self._window(window_id)
        try:
            geometry = window.get_geometry()
            corner = self.root.translate_coords(window, 0, 0)
        except error.XError:
            return None
        return (corner.x, corner.y, geometry.width, geometry.height)

    def frame(self, window_id):
        """Returns the id of the window manager's frame around the window. Returns `window_id` if the window has no
        frame, and None if the window does not exist."""
        window = self._window(window_id)
        try:
            while True:
                parent = window.query_tree().parent
                if parent == X.NONE or parent.id == self.root.id:
                    return window.id
                window = parent
        except error.XError:
            return None

    def child_count(self, window_id):
        return len(self._children(self._window(window_id)))

    def state(self, window_id):
        """Returns the value of WM_STATE: 1 for a normal window, ICONIC for a minimised window, None without the
        property."""
        value = self.property(window_id, "WM_STATE")
        return value[2][0] if value else None

    def pixel(self, x, y):
        """Returns the colour at a position on the screen as 0xRRGGBB."""
        image = self.root.get_image(x, y, 1, 1, X.ZPixmap, 0xFFFFFFFF)
        return int.from_bytes(image.data[:3], "little")

    def message(self, window_id, name, values):
        """Sends a client message about a window to the window manager."""
        values = (list(values) + [0] * 5)[:5]
        message_event = event.ClientMessage(
            window=self._window(window_id), client_type=self.atom(name), data=(32, values)
        )
        self.root.send_event(message_event, X.SubstructureRedirectMask | X.SubstructureNotifyMask)
        self._display.sync()

    def activate(self, window_id):
        """Asks the window manager to give a window the keyboard focus, as a taskbar does."""
        self.message(window_id, "_NET_ACTIVE_WINDOW", [2])

    def is_active(self, window_id):
        value = self.property(self.root.id, "_NET_ACTIVE_WINDOW")
        return bool(value) and value[2][0] == window_id

    def focus(self, window_id):
        self._window(window_id).set_input_focus(X.RevertToPointerRoot, X.CurrentTime)
        self._display.sync()

    def move_pointer(self, x, y):
        xtest.fake_input(self._display, X.MotionNotify, x=x, y=y)
        self._display.sync()

    def set_button(self, is_pressed, number=1):
        event_type = X.ButtonPress if is_pressed else X.ButtonRelease
        xtest.fake_input(self._display, event_type, detail=number)
        self._display.sync()

    def click(self, x, y):
        self.move_pointer(x, y)
        time.sleep(0.05)
        self.set_button(True)
        time.sleep(0.03)
        self.set_button(False)

    def press_key(self, name):
        """Presses and releases a key. The window with the keyboard focus receives it."""
        code = self._display.keysym_to_keycode(XK.string_to_keysym(name))
        xtest.fake_input(self._display, X.KeyPress, detail=code)
        xtest.fake_input(self._display, X.KeyRelease, detail=code)
        self._display.sync()

    def drag(self, start, end):
        """Presses the first mouse button, moves the pointer to `end` in small steps and releases the button."""
        self.move_pointer(*start)
        time.sleep(0.05)
        self.set_button(True)
        time.sleep(0.05)
        for step in range(1, 9):
            self.move_pointer(
                start[0] + (end[0] - start[0]) * step // 8, start[1] + (end[1] - start[1]) * step // 8
            )
            time.sleep(0.02)
        self.set_button(False)


__all__ = ["Client", "ICONIC", "X"]
