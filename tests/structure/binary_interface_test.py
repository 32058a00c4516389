#!/usr/bin/env python3
"""Tests binary_interface.py on small libraries made for the purpose."""

import os
import pathlib
import subprocess
import tempfile
import unittest

import binary_interface

HEADER = """
struct Private;
struct Reading { int rows; float level; };
float levelOf(const Reading& reading);
Private* open(int channel);
"""
SOURCE = """
#include "reading.h"
struct Private { int state; };
float levelOf(const Reading& reading) { return reading.level; }
Private* open(int channel) { return new Private{channel}; }
"""


class BinaryInterface(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)
        self.place = pathlib.Path(self.folder.name)
        self.headers = self.place / "headers"
        self.headers.mkdir()
        self.library = self.build(HEADER, SOURCE)
        self.description = self.place / "library.abi"
        self.description.write_text(binary_interface.describe(self.library, self.headers), encoding="utf-8")

    def build(self, header, source):
        (self.headers / "reading.h").write_text(header, encoding="utf-8")
        (self.place / "reading.cpp").write_text(source, encoding="utf-8")
        library = self.place / "libreading.so"
        subprocess.run([os.environ.get("CXX", "c++"), "-g", "-shared", "-fPIC", "-I", str(self.headers),
                        str(self.place / "reading.cpp"), "-o", str(library)], check=True)
        return library

    def differences(self):
        return binary_interface.differences(self.library, self.description)

    def test_says_nothing_of_the_same_library(self):
        self.assertEqual(self.differences(), "")

    def test_finds_a_member_of_another_type(self):
        self.build(HEADER.replace("int rows", "long rows"), SOURCE)
        self.assertIn("Reading", self.differences())

    def test_finds_members_in_another_order(self):
        self.build(HEADER.replace("int rows; float level;", "float level; int rows;"), SOURCE)
        self.assertIn("Reading", self.differences())

    def test_finds_another_parameter(self):
        self.build(HEADER.replace("int channel", "long channel"), SOURCE.replace("int channel)", "long channel)")
                   .replace("{channel}", "{int(channel)}"))
        self.assertIn("open", self.differences())

    def test_finds_a_function_that_is_gone(self):
        self.build(HEADER, SOURCE.split("Private* open")[0])
        self.assertIn("open", self.differences())

    def test_leaves_alone_what_only_the_sources_know(self):
        self.build(HEADER, SOURCE.replace("int state;", "int state; double more;"))
        self.assertEqual(self.differences(), "")

    def test_does_not_take_a_missing_description_for_agreement(self):
        self.description.unlink()
        self.assertNotEqual(self.differences(), "")


if __name__ == "__main__":
    unittest.main()
