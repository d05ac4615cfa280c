#!/usr/bin/env python3
"""Asks a window to close the way a window manager does when the user clicks
its close button: a WM_DELETE_WINDOW client message. xdotool's windowclose
destroys the window instead, which no user can do.

    close-window.py WINDOW_ID
"""

import ctypes
import ctypes.util
import sys


class ClientMessage(ctypes.Structure):
    _fields_ = [("type", ctypes.c_int), ("serial", ctypes.c_ulong), ("send_event", ctypes.c_int),
                ("display", ctypes.c_void_p), ("window", ctypes.c_ulong), ("message_type", ctypes.c_ulong),
                ("format", ctypes.c_int), ("data", ctypes.c_long * 5)]


class Event(ctypes.Union):
    # XEvent is a union padded to 24 longs; XSendEvent reads that much.
    _fields_ = [("client", ClientMessage), ("pad", ctypes.c_long * 24)]


CLIENT_MESSAGE = 33
NO_EVENT_MASK = 0
CURRENT_TIME = 0


def main():
    window = int(sys.argv[1], 0)
    xlib = ctypes.CDLL(ctypes.util.find_library("X11"))
    xlib.XOpenDisplay.restype = ctypes.c_void_p
    xlib.XOpenDisplay.argtypes = [ctypes.c_char_p]
    xlib.XInternAtom.restype = ctypes.c_ulong
    xlib.XInternAtom.argtypes = [ctypes.c_void_p, ctypes.c_char_p, ctypes.c_int]
    xlib.XSendEvent.argtypes = [ctypes.c_void_p, ctypes.c_ulong, ctypes.c_int, ctypes.c_long,
                                ctypes.POINTER(Event)]
    xlib.XFlush.argtypes = [ctypes.c_void_p]
    xlib.XCloseDisplay.argtypes = [ctypes.c_void_p]

    display = xlib.XOpenDisplay(None)
    if not display:
        sys.exit("close-window.py: cannot open the display")
    event = Event()
    event.client.type = CLIENT_MESSAGE
    event.client.window = window
    event.client.message_type = xlib.XInternAtom(display, b"WM_PROTOCOLS", False)
    event.client.format = 32
    event.client.data[0] = xlib.XInternAtom(display, b"WM_DELETE_WINDOW", False)
    event.client.data[1] = CURRENT_TIME
    xlib.XSendEvent(display, window, False, NO_EVENT_MASK, ctypes.byref(event))
    xlib.XFlush(display)
    xlib.XCloseDisplay(display)


if __name__ == "__main__":
    main()
