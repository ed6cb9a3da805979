"""Events: who hears them, how long, on which thread, and what may happen meanwhile."""

import gc
import re
import sys
import threading
import traceback
import unittest
import weakref

import package

package.use_library("tessaret_echo")

import tessaret
from tessaret import _library


class Events(package.PackageTest):
    def setUp(self):
        super().setUp()
        self.echo = package.new_echo()
        self.addCleanup(self.echo.close)
        self.heard = []
        self.addCleanup(self.heard.clear)

    def hear(self, *values):
        self.heard.append(values)

    def test_a_function_hears_its_event_with_the_values(self):
        self.echo.on("OnTold", self.hear)
        self.echo.Tell(7, "text")
        self.assertEqual(self.heard, [(7, "text", self.echo)])
        self.assertIs(self.heard[0][2], self.echo)

    def test_functions_are_called_in_the_order_of_their_connecting(self):
        for name in ("first", "second", "third"):
            self.echo.on("OnNothing", lambda name=name: self.heard.append(name))
        self.echo.on("OnTold", lambda *values: self.heard.append("told"))
        self.echo.Tell(1, None)
        self.assertEqual(self.heard, ["first", "second", "third", "told"])

    def test_values_of_every_kind_arrive_and_outlive_the_event(self):
        other = package.new_echo()
        values = [None, True, -5, 0.5, "", "a\0\u00fc\udcff", b"", b"bytes", tessaret.Array([[1, 2], [3, 4]], "short", (1, 2)), other]
        self.echo.on("OnTold", self.hear)
        for value in values:
            self.echo.Tell(1, value)
        self.echo.Tell(1, "x" * 100_000)
        self.assertEqual([value for _, value, _ in self.heard[:-1]], values)

    def test_names_of_events_may_be_written_in_either_case(self):
        self.assertEqual(self.echo.on("onnothing", self.hear).event, "OnNothing")
        self.echo.Tell(1, None)
        self.assertEqual(self.heard, [()])

    def test_what_cannot_be_connected_is_refused(self):
        with self.assertRaisesRegex(AttributeError, "IEcho has no event 'OnSomething'"):
            self.echo.on("OnSomething", self.hear)
        with self.assertRaisesRegex(TypeError, "what hears OnTold has to be callable, which str is not"):
            self.echo.on("OnTold", "print")
        with self.assertRaisesRegex(TypeError, "the name of an event has to be text, not int"):
            self.echo.on(5, self.hear)
        with tessaret.create("Tessaret.DcmDictionary") as dictionary, self.assertRaises(AttributeError):
            dictionary.on("OnTold", self.hear)
        with tessaret.create("Tessaret.DCMOptions") as options, self.assertRaises(AttributeError):
            options.on("OnTold", self.hear)

    def test_a_connection_that_has_ended_hears_nothing(self):
        connection = self.echo.on("OnNothing", self.hear)
        self.assertTrue(connection.connected)
        self.assertNotEqual(connection.cookie, 0)
        connection.disconnect()
        connection.disconnect()
        self.assertFalse(connection.connected)
        self.echo.Tell(1, None)
        self.assertEqual(self.heard, [])
        with self.echo.on("OnNothing", self.hear) as connection:
            self.assertRegex(repr(connection), r"^<tessaret\.Connection \d+ for OnNothing>$")
            self.echo.Tell(1, None)
        self.echo.Tell(1, None)
        self.assertEqual(self.heard, [()])
        self.assertIn("ended", repr(connection))
        self.assertFalse(self.echo._handle.cookies or self.echo._connections, "something is kept of each connection")

    def test_a_function_may_end_its_own_connection_and_make_others(self):
        def once(*values):
            self.hear(*values)
            connection.disconnect()
            self.echo.on("OnTold", self.hear)
        connection = self.echo.on("OnTold", once)
        self.echo.Tell(1, None)
        self.echo.Tell(2, None)
        self.assertEqual([values[0] for values in self.heard], [1, 2])

    def test_a_function_may_close_its_object(self):
        echo = package.new_echo()
        echo.on("OnNothing", echo.close)
        echo.on("OnTold", self.hear)
        echo.Tell(1, None)
        self.assertEqual(self.heard, [])
        with self.assertRaises(tessaret.Closed):
            echo.Tell(1, None)

    def test_the_function_lives_as_long_as_the_connection(self):
        class Listener:
            def __call__(self):
                pass
        listener = Listener()
        watched = weakref.ref(listener)
        connection = self.echo.on("OnNothing", listener)
        del listener
        gc.collect()
        self.assertIsNotNone(watched())
        connection.disconnect()
        del connection
        self.assertIsNone(watched())
        self.echo.on("OnNothing", Listener())
        watched = weakref.ref(next(iter(self.echo._connections.values()))._function)
        self.echo.close()
        self.assertIsNone(watched())

    def test_a_function_that_holds_its_object_keeps_neither_alive(self):
        echo = package.new_echo()
        echo.on("OnNothing", lambda: echo.Tell(1, None))
        watched = weakref.ref(echo)
        del echo
        gc.collect()
        self.assertIsNone(watched())
        self.echo.close()
        self.assertTrue(tessaret.can_unload())

    def test_what_a_function_raises_goes_to_the_unraisable_hook(self):
        raised = []
        self.addCleanup(setattr, sys, "unraisablehook", sys.unraisablehook)

        def note(unraisable):
            where = traceback.extract_tb(unraisable.exc_traceback)[-1].name
            raised.append((unraisable.exc_type, str(unraisable.exc_value), where))
        sys.unraisablehook = note

        def fail(*_):
            raise KeyError("lost")

        def leave(*_):
            sys.exit(5)
        self.echo.on("OnTold", fail)
        self.echo.on("OnTold", leave)
        self.echo.on("OnTold", self.hear)
        self.echo.on("OnTold", lambda: None)
        self.assertIs(self.echo.Tell(1, None), True)
        self.assertEqual(raised[:2], [(KeyError, "'lost'", "fail"), (SystemExit, "5", "leave")])
        self.assertIs(raised[2][0], TypeError)
        self.assertEqual(len(self.heard), 1)

    def test_a_function_may_be_called_on_another_thread(self):
        threads = []
        self.echo.on("OnTold", lambda *values: threads.append((threading.get_ident(), values[:2])))
        self.echo.TellFromThread(5, "x")
        self.assertEqual(threads[0][1], (5, "x"))
        self.assertNotEqual(threads[0][0], threading.get_ident())


INTERRUPTED_CALLS = """
import ctypes, signal, sys, threading
import package
package.use_library("tessaret_echo")
import tessaret
from tessaret import _library

def interrupt(*_):
    signal.raise_signal(signal.SIGINT)

def tried(function, *arguments):
    try:
        print(function(*arguments))
    except KeyboardInterrupt as error:
        print("interrupted", error.__cause__)

heard = []
echo = package.new_echo()
# While the function runs; the others hear the event all the same, and nothing is left for the next call.
with echo.on("OnTold", interrupt), echo.on("OnTold", lambda number, *_: heard.append(number)):
    tried(echo.Tell, 1, "x")
    print(heard, echo.Outs(5))
    tried(echo.Tell, 2, "x")
# A call within a later function has it at once, though it fails itself, and so has the one around it.
with echo.on("OnTold", interrupt), echo.on("OnTold", lambda *_: echo.Fail(-1, None)):
    tried(echo.Tell, 3, "x")
    tried(echo.Outs, 5)
# Within a pump.
with echo.on("OnTold", interrupt):
    echo.TellWhenPumped(4, "x")
    tried(tessaret.pump, 30)
    tried(tessaret.pump, 0)
# While the library works: a function of C that hears the event first gives itself the signal, which its connection has as its number.
cookie = ctypes.c_uint32()
give_signal = ctypes.cast(getattr(ctypes.CDLL(None), "raise"), _library.EVENT_FUNCTION)
_library.advise(echo._handle, give_signal, int(signal.SIGINT), cookie)
with echo.on("OnTold", lambda number, *_: heard.append(number)):
    tried(echo.Tell, 5, "x")
    tried(echo.Outs, 5)
_library.unadvise(echo._handle, cookie)

# No call of a thread of the library would get it.
def fail(*_):
    raise KeyboardInterrupt("elsewhere")
with echo.on("OnTold", fail):
    tried(echo.TellFromThread, 6, "x")
    tried(echo.Outs, 5)
# A call of another thread that ends meanwhile does not get it either.
def call_elsewhere(*_):
    answers = []
    other = threading.Thread(target=lambda: answers.append(package.new_echo().Outs(5)))
    other.start()
    other.join()
    print("elsewhere", *answers)
with echo.on("OnTold", interrupt), echo.on("OnTold", call_elsewhere):
    tried(echo.Tell, 7, "x")
# What is no function that hears an event goes where it always goes.
class Dying:
    def __del__(self):
        raise KeyboardInterrupt("dying")
Dying()
tried(echo.Outs, 5)
# A program's own hook does not take it away from the call.
sys.unraisablehook = sys.__unraisablehook__
with echo.on("OnTold", interrupt):
    tried(echo.Tell, 8, "x")
echo.close()
print(tessaret.can_unload())
"""


class Interrupts(package.PackageTest):
    def test_an_interrupt_within_an_event_is_raised_when_the_call_has_come_to_its_end(self):
        result = package.run_python(INTERRUPTED_CALLS)
        self.assertEqual((result.returncode, result.stdout.splitlines()),
                         (0, ["interrupted None", "[1] (6, True)", "interrupted None",
                              "interrupted IEcho.Fail: it failed with status 0xFFFFFFFF", "(6, True)",
                              "interrupted None", "0",
                              "interrupted None", "(6, True)",
                              "True", "(6, True)", "elsewhere (6, True)", "interrupted None", "(6, True)", "interrupted None", "True"]),
                         result.stderr)
        self.assertEqual(re.findall("KeyboardInterrupt.*", result.stderr), ["KeyboardInterrupt: elsewhere", "KeyboardInterrupt: dying"])


INTERRUPTED = """
import os, signal, sys, threading, time
import tessaret
begin = time.monotonic()
threading.Timer(0.3, os.kill, (os.getpid(), signal.SIGINT)).start()
try:
    tessaret.pump(float(sys.argv[1]) if len(sys.argv) > 1 else None)
except KeyboardInterrupt:
    print("interrupted", time.monotonic() - begin < 10)
"""


class Pump(package.PackageTest):
    def test_without_events_it_tells_none_and_waits_as_long_as_asked(self):
        import time
        begin = time.monotonic()
        self.assertEqual(tessaret.pump(0), 0)
        self.assertLess(time.monotonic() - begin, 0.2)
        begin = time.monotonic()
        self.assertEqual(tessaret.pump(0.25), 0)
        self.assertGreaterEqual(time.monotonic() - begin, 0.2)
        begin = time.monotonic()
        self.assertEqual(tessaret.pump(-5), 0)
        self.assertLess(time.monotonic() - begin, 0.2)

    def test_what_a_worker_posts_is_told_by_the_pump_of_the_objects_thread_at_once(self):
        import select
        import time
        heard = []
        with package.new_echo() as echo:
            echo.on("OnTold", lambda number, value, _: heard.append((threading.get_ident(), number, value)))
            for timeout in (0, 60, None):
                echo.TellWhenPumped(1, "x")
                echo.TellWhenPumped(2, "y")
                self.assertEqual(heard, [])
                self.assertEqual(len(select.select([tessaret.events_descriptor()], [], [], 0)[0]), 1)
                begin = time.monotonic()
                self.assertEqual(tessaret.pump(timeout), 2)
                self.assertLess(time.monotonic() - begin, 30)
                self.assertEqual(heard, [(threading.get_ident(), 1, "x"), (threading.get_ident(), 2, "y")])
                heard.clear()
            echo.TellWhenPumped(3, "z")
        # What waits for an object that is gone is told to nobody.
        self.assertEqual(tessaret.pump(0), 0)
        self.assertEqual(heard, [])

    def test_a_long_wait_and_one_without_end_are_interrupted_from_the_keyboard(self):
        for arguments in ((), ("30",)):
            with self.subTest(arguments):
                result = package.run_python(INTERRUPTED, *arguments)
                self.assertEqual((result.returncode, result.stdout, result.stderr), (0, "interrupted True\n", ""))

    def test_the_descriptor_is_quiet_without_events(self):
        import select
        self.assertEqual(select.select([tessaret.events_descriptor()], [], [], 0)[0], [])


if __name__ == "__main__":
    unittest.main()
