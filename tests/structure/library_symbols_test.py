#!/usr/bin/env python3
"""Holds library_symbols.py to small libraries compiled for the purpose. CXX names the compiler."""

import os
import subprocess
import sys
import tempfile
import unittest

import library_symbols

SCRIPT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "library_symbols.py")


class LibrarySymbols(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)

    def library(self, source):
        """Compiles a C++ source into a shared library with hidden symbols; EXPORT marks the others."""
        path = os.path.join(self.folder.name, "lib.so")
        text = '#define EXPORT __attribute__((visibility("default")))\n' + source + "\n"
        subprocess.run([os.environ.get("CXX", "c++"), "-std=c++20", "-O0", "-shared", "-fPIC", "-fvisibility=hidden",
                        "-x", "c++", "-", "-o", path], input=text, text=True, check=True)
        return path

    def run_script(self, *arguments):
        result = subprocess.run([sys.executable, SCRIPT, *arguments], capture_output=True, text=True)
        return result.returncode, result.stdout

    def test_accepts_a_library_that_computes_only(self):
        library = self.library("#include <cmath>\nEXPORT double f(double x) { return std::pow(x, x); }")
        self.assertEqual(self.run_script("silence", library)[0], 0)

    def test_finds_what_prints_or_ends_the_process(self):
        for body in ['printf("%d", 1);', 'puts("x");', "std::cout << 1;", "std::cerr << 1;", 'fputs("x", stderr);',
                     "exit(1);", "std::abort();", "_exit(1);", "std::quick_exit(1);", "assert(x());", 'perror("x");']:
            library = self.library("#include <cassert>\n#include <cstdio>\n#include <cstdlib>\n#include <iostream>\n"
                                   "#include <unistd.h>\nint x();\nEXPORT void f() { " + body + " }")
            names = library_symbols.demangled(library_symbols.symbols(library, "--undefined-only"))
            # The stream header alone is on the list already; what the body adds must be found as well.
            self.assertNotIn(library_symbols.loud_imports(names), [[], ["std::ios_base::Init::Init()"]], body)
            self.assertEqual(self.run_script("silence", library)[0], 1, body)

    def test_does_not_call_a_file_without_dynamic_symbols_silent(self):
        path = os.path.join(self.folder.name, "object.o")
        subprocess.run([os.environ.get("CXX", "c++"), "-c", "-x", "c++", "-", "-o", path], input="void f() {}", text=True,
                       check=True)
        self.assertEqual(self.run_script("silence", path)[0], 1)

    def test_lists_what_is_exported_and_nothing_hidden(self):
        library = self.library("#include <vector>\nextern \"C\" EXPORT int plain(int) { return 1; }\n"
                               "namespace A { EXPORT int inside(int) { return 1; } int hidden(int) { return 1; } }\n"
                               "EXPORT std::vector<int> grow(std::vector<int> v) { v.push_back(1); return v; }")
        found = library_symbols.own_exports(library_symbols.symbols(library, "--defined-only"))
        self.assertEqual(found, ["A::inside(int)", "grow(std::vector<int, std::allocator<int> >)", "plain"])

    def test_compares_with_the_list(self):
        path = os.path.join(self.folder.name, "list.txt")
        both = "extern \"C\" { EXPORT int a() { return 1; } EXPORT int b() { return 1; } }"
        library_symbols.refresh(self.library(both), path)

        self.assertEqual(self.run_script("exports", self.library(both), path), (0, "2 exports, as listed\n"))
        status, output = self.run_script("exports", self.library(both.replace(" b(", " c(")), path)
        self.assertEqual(status, 1)
        self.assertIn("\n-b", output)
        self.assertIn("\n+c", output)


if __name__ == "__main__":
    unittest.main()
