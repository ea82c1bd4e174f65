"""The emulators' own tests: each test class starts its emulator once, in a folder of its own,
on a port the system picks."""

import os
import subprocess
import sys
import tempfile
import unittest

HERE = os.path.dirname(os.path.abspath(__file__))


class EmulatorTestCase(unittest.TestCase):
    # The emulator's file in this folder, and its options beyond the folder and the port.
    script = None
    options = ()

    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.process = subprocess.Popen(
            [sys.executable, "-B", os.path.join(HERE, cls.script), "--folder", cls.folder.name, "--port", "0",
             *cls.options], stdout=subprocess.PIPE, text=True)
        cls.port = int(cls.process.stdout.readline().split()[1])

    @classmethod
    def tearDownClass(cls):
        cls.process.kill()
        cls.process.wait()
        cls.process.stdout.close()
        cls.folder.cleanup()
