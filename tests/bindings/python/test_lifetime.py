"""Objects live as long as somebody holds them and are given back once: by counting, by the collector, by close, at the end."""

import copy
import gc
import os
import pathlib
import pickle
import threading
import unittest

import package

package.use_library("tessaret_echo")

import tessaret
from tessaret import _library, _objects


class Lifetime(package.PackageTest):
    def test_an_object_goes_with_its_last_name(self):
        echo = package.new_echo()
        self.assertFalse(tessaret.can_unload())
        again = echo
        del echo
        self.assertFalse(tessaret.can_unload())
        del again
        self.assertTrue(tessaret.can_unload())

    def test_an_object_is_one_however_often_it_is_given(self):
        echo = package.new_echo()
        self.assertTrue(all(echo.Itself() is echo for _ in range(100)))
        self.assertEqual(len({echo, echo.Itself()}), 1)
        other = echo.Another()
        self.assertIsNot(other, echo)
        del echo, other
        self.assertTrue(tessaret.can_unload())

    def test_many_objects_come_and_go(self):
        for _ in range(1000):
            tessaret.create("Tessaret.DcmDictionary")
        kept = [package.new_echo() for _ in range(1000)]
        kept.clear()
        self.assertTrue(tessaret.can_unload())
        self.assertEqual(_objects._living, {})

    def test_an_object_that_another_one_holds_lives_on(self):
        echo, friend = package.new_echo(), package.new_echo()
        friend.Long = 42
        echo.Friend = friend
        del friend
        self.assertEqual(echo.Friend.Long, 42)
        echo.Friend = None
        del echo
        self.assertTrue(tessaret.can_unload())

    def test_a_property_with_arguments_keeps_its_object(self):
        cell = package.new_echo().Cell
        self.assertEqual(cell(1), "1,none,0=")
        method = package.new_echo().Outs
        self.assertEqual(method(1), (2, True))

    def test_a_cycle_is_collected(self):
        class Holder:
            pass
        holder = Holder()
        holder.echo, holder.itself = package.new_echo(), holder
        del holder
        self.assertFalse(tessaret.can_unload())
        gc.collect()
        self.assertTrue(tessaret.can_unload())

    def test_a_with_block_gives_the_object_back(self):
        with package.new_echo() as echo:
            cell = echo.Cell
            self.assertFalse(tessaret.can_unload())
        self.assertTrue(tessaret.can_unload())
        for use in (lambda: echo.Long, lambda: echo.Outs(1), lambda: cell(1), lambda: setattr(echo, "Long", 1), lambda: echo.Echo("x" * 9999),
                    lambda: cell.put(1, 2), lambda: echo.query("IEcho"), lambda: echo.on("OnNothing", print)):
            with self.assertRaisesRegex(tessaret.Closed, "the object was closed"):
                use()
        self.assertEqual(repr(echo), "<tessaret.IEcho closed>")
        echo.close()

    def test_a_closed_object_is_no_value(self):
        echo, closed = package.new_echo(), package.new_echo()
        closed.close()
        with self.assertRaisesRegex(ValueError, "<tessaret.IEcho closed> cannot be used any more"):
            echo.Echo(closed)
        echo.close()

    def test_a_closed_object_that_is_given_again_is_a_new_one(self):
        echo, friend = package.new_echo(), package.new_echo()
        echo.Friend = friend
        friend.close()
        self.assertIsNot(echo.Friend, friend)
        self.assertEqual(echo.Friend.Outs(1), (2, True))
        echo.close()

    def test_a_closed_object_does_not_take_a_new_one_with_it(self):
        echo, friend = package.new_echo(), package.new_echo()
        echo.Friend = friend
        friend.close()
        again = echo.Friend
        del friend
        self.assertIs(echo.Friend, again)
        del again
        echo.close()

    def test_a_function_hears_nothing_of_an_object_that_was_closed_though_it_lives_on(self):
        echo, friend, heard = package.new_echo(), package.new_echo(), []
        echo.Friend = friend
        connection = friend.on("OnNothing", lambda: heard.append(1))
        friend.close()
        self.assertFalse(connection.connected)
        echo.Friend.Tell(1, 2)
        self.assertEqual(heard, [])
        echo.close()

    def test_an_error_keeps_no_object(self):
        echo = package.new_echo()
        try:
            echo.Fail(-1, "words")
        except tessaret.Error as error:
            kept = error.with_traceback(None)
        del echo
        self.assertTrue(tessaret.can_unload())
        self.assertEqual(kept.status, 0xFFFFFFFF)

    def test_python_cannot_copy_an_object(self):
        with package.new_echo() as echo:
            for way in (copy.copy, copy.deepcopy, pickle.dumps):
                with self.subTest(way), self.assertRaisesRegex(TypeError, "IEcho cannot be copied or pickled by Python"):
                    way(echo)

    def test_errors_and_arrays_can_be_pickled(self):
        error = pickle.loads(pickle.dumps(tessaret.WrongType(0x80020005, "a", "b")))
        self.assertEqual((type(error), error.status, error.words), (tessaret.WrongType, 0x80020005, "b"))
        made = tessaret.Array([[1.5, 2]], lower=(1, 2))
        self.assertEqual(pickle.loads(pickle.dumps(made)), made)


class Memory(package.PackageTest):
    """What a call brings is freed: a hundred of them need no more memory than ten."""

    SIZE = 1 << 18

    @staticmethod
    def resident():
        pages = int(pathlib.Path("/proc/self/statm").read_text().split()[1])
        return pages * os.sysconf("SC_PAGE_SIZE")

    def assert_does_not_grow(self, function):
        for _ in range(10):
            function()
        gc.collect()
        before = self.resident()
        for _ in range(100):
            function()
        gc.collect()
        self.assertLess(self.resident() - before, 30 * self.SIZE)

    def test_values_are_freed(self):
        text, raw, numbers = "x" * self.SIZE, b"x" * self.SIZE, tessaret.Array(b"x" * self.SIZE, lower=(1,))
        with package.new_echo() as echo:
            def put_text():
                echo.Text = text
            put_text()
            for name, function in (("text", lambda: echo.Echo(text)), ("put", put_text), ("get", lambda: echo.Text),
                                   ("bytes", lambda: echo.Echo(raw)), ("array", lambda: echo.Echo(numbers)), ("cell", lambda: echo.Cell(1)),
                                   ("view", lambda: echo.Echo(numbers).memory)):
                with self.subTest(name):
                    self.assert_does_not_grow(function)

    def test_a_million_calls_leave_nothing(self):
        with package.new_echo() as echo:
            def call():
                for number in range(100_000):
                    echo.Outs(number)
            call()
            before = self.resident()
            for _ in range(10):
                call()
            # A byte a call would be a million.
            self.assertLess(self.resident() - before, 500_000)

    def test_arrays_without_entries_are_freed(self):
        empty = tessaret.Array([], "short")
        with package.new_echo() as echo:
            def call():
                for _ in range(5_000):
                    echo.Echo(empty)
            call()
            before = self.resident()
            for _ in range(4):
                call()
            # The description of an array has 32 bytes: kept each time, that would be more than 600,000.
            self.assertLess(self.resident() - before, 400_000)

    def test_values_of_events_are_freed(self):
        values = ["x" * self.SIZE, b"x" * self.SIZE, tessaret.Array(b"x" * self.SIZE, lower=(1,))]
        with package.new_echo() as echo:
            echo.on("OnTold", lambda number, value, source: None)
            for value in values:
                with self.subTest(type(value)):
                    self.assert_does_not_grow(lambda value=value: echo.Tell(1, value))

    def test_connections_and_objects_are_freed(self):
        raw = b"x" * self.SIZE

        def connect():
            echo = package.new_echo()
            echo.on("OnNothing", lambda: (echo, raw + b"y"))
            echo.Text = "x" * self.SIZE
            echo.Friend = echo.Another()
        self.assert_does_not_grow(lambda: (connect(), gc.collect()))


class Threads(package.PackageTest):
    def run_all(self, *works):
        failures = []

        def guarded(work):
            try:
                work()
            except BaseException as error:
                failures.append(error)
        threads = [threading.Thread(target=guarded, args=(work,)) for work in works]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        self.assertEqual(failures, [])

    def test_every_thread_uses_its_own_objects(self):
        def work():
            for number in range(300):
                with package.new_echo() as echo:
                    echo.Text = f"{threading.get_ident()} {number}"
                    assert echo.Mix(number, 1)[0] == number + 1
                    assert echo.Text == f"{threading.get_ident()} {number}"
                    assert echo.Itself() is echo
        self.run_all(*[work] * 8)

    def test_an_object_may_be_given_back_on_another_thread(self):
        held = [package.new_echo() for _ in range(100)]
        self.run_all(held.clear)
        self.assertTrue(tessaret.can_unload())

    def test_close_on_many_threads_gives_back_once(self):
        for _ in range(50):
            echo, other = package.new_echo(), package.new_echo()
            other.Friend = echo
            self.run_all(*[echo.close] * 4)
            self.assertEqual(other.Friend.Long, 0)
            other.close()

    def test_words_of_failures_belong_to_their_thread(self):
        def work():
            with package.new_echo() as echo:
                for number in range(100):
                    words = f"{threading.get_ident()} {number}"
                    try:
                        echo.Fail(0x80020009 - 2**32, words)
                    except tessaret.Error as error:
                        assert error.words == words, error.words
        self.run_all(*[work] * 4)


AT_EXIT = """
import package
package.use_library("tessaret_echo")
import tessaret
import atexit, gc, sys

# Registered before the package was used and after it was imported: it runs before the package gives all back.
atexit.register(lambda: print("alive", echo.Outs(1)))
from tessaret import _objects
atexit.unregister(_objects._give_all_back)
def last():
    _objects._give_all_back()
    print("given back", tessaret.can_unload())
gc.disable()
if sys.argv[1] == "hook":
    atexit._clear()
    atexit.register(last)
    atexit.register(lambda: print("alive", echo.Outs(1)))
echo = package.new_echo()
ring = [echo]
ring.append(ring)
echo.on("OnNothing", lambda: ring)
kept = package.new_echo().Cell
view = echo.Echo([1, 2]).memory
"""


class AtExit(unittest.TestCase):
    def test_what_still_lives_is_given_back_at_the_end(self):
        result = package.run_python(AT_EXIT, "hook")
        self.assertEqual((result.returncode, result.stdout, result.stderr), (0, "alive (2, True)\ngiven back True\n", ""))

    def test_without_the_hook_the_end_is_quiet_too(self):
        result = package.run_python(AT_EXIT, "none")
        self.assertEqual((result.returncode, result.stdout, result.stderr), (0, "alive (2, True)\n", ""))

    def test_a_fork_leaves_the_objects_of_its_parent_alone(self):
        result = package.run_python("""
import package, os
package.use_library("tessaret_echo")
import tessaret
echo = package.new_echo()
child = os.fork()
if child == 0:
    del echo
    os._exit(0 if tessaret.can_unload() else 1)
print(os.waitstatus_to_exitcode(os.waitpid(child, 0)[1]), echo.Outs(1))
""")
        self.assertEqual((result.stdout, result.stderr), ("0 (2, True)\n", ""))


UNLOAD = """
import _ctypes, ctypes, pathlib, struct, sys

LONG = 3

def takes(library, data_set, tag):
    values = b"".join(struct.pack("=HHIq", LONG, 0, 0, value) for value in (*tag, 1))
    return library.tessaret_put(data_set, b"VR", values, 3) == 0

# The tags whose elements a number can be put into.
tags = [(group, element) for group in (0x0018, 0x0040, 0x300A) for element in range(0x10000)]

def fill(library, data_set):
    global tags
    tags = [tag for tag in tags if takes(library, data_set, tag)]
    assert len(tags) > 1500

def load_and_unload():
    library = ctypes.CDLL(sys.argv[1])
    made = ctypes.c_void_p()
    assert library.tessaret_create(b"Tessaret.DCMObject", ctypes.byref(made)) == 0
    fill(library, made)
    assert library.tessaret_can_unload() == 0
    library.tessaret_release(made)
    assert library.tessaret_can_unload() == 1
    _ctypes.dlclose(library._handle)
    assert "libtessaret" not in pathlib.Path("/proc/self/maps").read_text()

def resident():
    return int(pathlib.Path("/proc/self/statm").read_text().split()[1]) * 4096

for _ in range(5): load_and_unload()
before = resident()
for _ in range(40): load_and_unload()
print((resident() - before) // 2**20)
"""


class Unloading(unittest.TestCase):
    def test_the_dictionaries_and_the_elements_go_with_the_library(self):
        # The dictionaries take more than half a megabyte, the elements 150 kB: kept each time, they would be 20 and 6 megabytes.
        result = package.run_python(UNLOAD, package.LIBRARY_FOLDER / "libtessaret.so")
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        self.assertLess(int(result.stdout), 4)


if __name__ == "__main__":
    unittest.main()
