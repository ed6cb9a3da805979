"""Ctrl-C while an event is heard. It cannot go up through the library: it is kept, and raised when the call that told the event has come to
its end."""

import sys
import threading

# At most one: what it interrupts has not yet ended.
kept = []


def _is_on_main_thread():
    return threading.get_ident() == threading.main_thread().ident


def keep(interrupt):
    """Whether it is kept. Only the main thread gets Ctrl-C, and calls that tell events there have a caller in Python."""
    if not _is_on_main_thread():
        return False
    kept[:] = [interrupt]
    return True


def raise_kept(failure=None):
    """Raises what is kept for the calling thread; `failure` is what the call raises otherwise."""
    if kept and _is_on_main_thread():
        interrupt = kept.pop()
        if failure is not None:
            interrupt.__cause__ = failure
        try:
            raise interrupt
        finally:
            del interrupt  # it has this frame


def keep_from_beginning_of(function):
    """Keeps what interrupts `function` before its first line as well, where no try of its own can see it: a signal that comes while the
    library works is met there. It goes to sys.unraisablehook, which is asked first from now on."""
    told_before = sys.unraisablehook

    def hook(unraisable):
        trace = unraisable.exc_traceback
        is_there = trace is not None and trace.tb_frame.f_code is function.__code__
        if not (is_there and issubclass(unraisable.exc_type, KeyboardInterrupt) and keep(unraisable.exc_value)):
            told_before(unraisable)
    sys.unraisablehook = hook
