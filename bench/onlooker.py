"""An X client that sees a window come up and its pixels change as soon as they do, with one request
and no process for each look."""

import ctypes
import ctypes.util
import select
import time

STRUCTURE_NOTIFY = 1 << 17
MAP_NOTIFY = 19
Z_PIXMAP = 2
ALL_PLANES = ctypes.c_ulong(-1)
LARGEST_EVENT = 24 * ctypes.sizeof(ctypes.c_long)


class Image(ctypes.Structure):
    """The first members of an XImage."""

    _fields_ = [("width", ctypes.c_int), ("height", ctypes.c_int), ("xoffset", ctypes.c_int),
                ("format", ctypes.c_int), ("data", ctypes.c_void_p), ("byte_order", ctypes.c_int),
                ("bitmap_unit", ctypes.c_int), ("bitmap_bit_order", ctypes.c_int),
                ("bitmap_pad", ctypes.c_int), ("depth", ctypes.c_int),
                ("bytes_per_line", ctypes.c_int)]


def _library():
    xlib = ctypes.CDLL(ctypes.util.find_library("X11") or "libX11.so.6")
    display, window, number = ctypes.c_void_p, ctypes.c_ulong, ctypes.c_int
    xlib.XOpenDisplay.argtypes, xlib.XOpenDisplay.restype = [ctypes.c_char_p], display
    xlib.XCloseDisplay.argtypes = [display]
    xlib.XSelectInput.argtypes = [display, window, ctypes.c_long]
    xlib.XSync.argtypes = [display, number]
    xlib.XPending.argtypes = [display]
    xlib.XNextEvent.argtypes = [display, ctypes.c_void_p]
    xlib.XConnectionNumber.argtypes = [display]
    xlib.XGetImage.argtypes = [display, window, number, number, ctypes.c_uint, ctypes.c_uint,
                               ctypes.c_ulong, number]
    xlib.XGetImage.restype = ctypes.POINTER(Image)
    xlib.XFree.argtypes = [ctypes.c_void_p]
    return xlib


class Onlooker:
    """Looks at one window of the display until it is closed; can be used from a with statement."""

    def __init__(self, display, window):
        self._xlib = _library()
        self._window = window
        self._display = self._xlib.XOpenDisplay(display.encode())
        if not self._display:
            raise RuntimeError(f"the display {display} can't be opened")
        self._xlib.XSelectInput(self._display, window, STRUCTURE_NOTIFY)
        self._xlib.XSync(self._display, 0)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()

    def close(self):
        """Lets go of the display; nothing can be seen after that."""
        self._xlib.XCloseDisplay(self._display)

    def wait_mapped(self, timeout):
        """The monotonic time at which the window was seen to be mapped."""
        event = ctypes.create_string_buffer(LARGEST_EVENT)
        end = time.monotonic() + timeout
        while time.monotonic() < end:
            if not self._xlib.XPending(self._display):
                select.select([self._xlib.XConnectionNumber(self._display)], [], [],
                              end - time.monotonic())
                continue
            self._xlib.XNextEvent(self._display, event)
            if ctypes.c_int.from_buffer(event).value == MAP_NOTIFY:
                return time.monotonic()
        raise RuntimeError("the window was not mapped in time")

    def pixels(self, x, y, width, height):
        """The bytes of a part of the window, which must be on the screen."""
        image = self._xlib.XGetImage(self._display, self._window, x, y, width, height, ALL_PLANES,
                                     Z_PIXMAP)
        if not image:
            raise RuntimeError("the window's pixels can't be had")
        size = image.contents.bytes_per_line * image.contents.height
        seen = ctypes.string_at(image.contents.data, size)
        self._xlib.XFree(image.contents.data)
        self._xlib.XFree(image)
        return seen

    def wait_changed(self, area, before, timeout):
        """The monotonic time at which an area (x, y, width, height) looked different."""
        end = time.monotonic() + timeout
        while self.pixels(*area) == before:
            if time.monotonic() >= end:
                raise RuntimeError("the pixels did not change in time")
            time.sleep(0.0005)
        return time.monotonic()

    def wait_equal(self, area, wanted, timeout):
        """The monotonic time at which an area looked as it is wanted to."""
        end = time.monotonic() + timeout
        while self.pixels(*area) != wanted:
            if time.monotonic() >= end:
                raise RuntimeError("the pixels did not come to look as expected in time")
            time.sleep(0.0005)
        return time.monotonic()
