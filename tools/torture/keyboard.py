"""A screen of its own with a keyboard: an X server that nobody sees, and keys as the window system sends them."""
import ctypes
import os
import subprocess
import time


class Screen:
    def __init__(self):
        reading, writing = os.pipe()
        self.server = subprocess.Popen(
            ["Xvfb", "-displayfd", str(writing), "-screen", "0", "1200x800x24", "-nolisten", "tcp"],
            pass_fds=[writing], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(writing)
        number = b""
        while not number.endswith(b"\n"):
            byte = os.read(reading, 1)
            if not byte:
                raise RuntimeError("Xvfb does not start")
            number += byte
        os.close(reading)
        self.name = ":" + number.decode().strip()
        self.x = ctypes.CDLL("libX11.so.6")
        self.test = ctypes.CDLL("libXtst.so.6")
        self.x.XOpenDisplay.restype = ctypes.c_void_p
        self.x.XStringToKeysym.restype = ctypes.c_ulong
        # A window may go between two calls that name it.
        self.handler = ctypes.CFUNCTYPE(ctypes.c_int, ctypes.c_void_p, ctypes.c_void_p)(lambda *_: 0)
        self.x.XSetErrorHandler(self.handler)
        self.display = ctypes.c_void_p(self.x.XOpenDisplay(self.name.encode()))

    def close(self):
        self.x.XCloseDisplay(self.display)
        self.server.terminate()
        self.server.wait()

    def windows(self, title, by="--name"):
        """The visible windows with that in their title, or their class."""
        found = subprocess.run(["xdotool", "search", "--onlyvisible", by, title], capture_output=True,
                               env={**os.environ, "DISPLAY": self.name}).stdout
        return [int(line) for line in found.split()]

    def focus(self, title, seconds=60):
        """Waits for a window and gives it the keyboard, as a window manager would."""
        end = time.monotonic() + seconds
        while time.monotonic() < end:
            for window in self.windows(title):
                to_parent, now = 2, 0
                self.x.XSetInputFocus(self.display, ctypes.c_ulong(window), to_parent, ctypes.c_ulong(now))
                self.x.XSync(self.display, 0)
                time.sleep(0.3)
                return True
            time.sleep(0.1)
        return False

    def key(self, *names):
        """Presses keys together, such as "Control_L", "s"."""
        codes = [self.x.XKeysymToKeycode(self.display,
                                         ctypes.c_ulong(self.x.XStringToKeysym(name.encode()))) for name in names]
        for code in codes:
            self.test.XTestFakeKeyEvent(self.display, code, 1, ctypes.c_ulong(0))
        for code in reversed(codes):
            self.test.XTestFakeKeyEvent(self.display, code, 0, ctypes.c_ulong(0))
        self.x.XFlush(self.display)
