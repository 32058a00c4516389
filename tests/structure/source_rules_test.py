#!/usr/bin/env python3
"""Holds source_rules.py to small trees with and without a breach."""

import os
import tempfile
import unittest

import source_rules


class SourceRules(unittest.TestCase):
    def reasons(self, files):
        """Writes the files into a tree of their own and returns the breaches found there as "path:line"."""
        with tempfile.TemporaryDirectory() as root:
            for path, text in files.items():
                os.makedirs(os.path.join(root, os.path.dirname(path)), exist_ok=True)
                with open(os.path.join(root, path), "w", encoding="utf-8") as file:
                    file.write(text)
            return [f"{path}:{line}" for path, line, _ in source_rules.breaches(root)]

    def assert_breach(self, path, line):
        self.assertEqual(self.reasons({path: "// first line\n" + line + "\n"}), [path + ":2"], line)

    def assert_fine(self, path, line):
        self.assertEqual(self.reasons({path: line + "\n"}), [], line)

    def test_accepts_arrows_that_lead_down(self):
        for path, line in [
                ("api/a.cpp", "#include <KOVDoaHandle/imaging/b.h>"),
                ("api/a.cpp", "#include <KOVDoaHandle/foundation/b.h>"),
                ("imaging/a.cpp", "#include <KOVDoaHandle/imaging/b_p.h>"),
                ("imaging/a.cpp", "#include <KOVDoaHandle/runtime/b.h>"),
                ("imaging/a.cpp", "#include <KOVDoaHandle/foundation/engine/b.h>"),
                ("imaging/a.cpp", "#include <KOVDoaHandle/diagnostics/kovblas.h>"),
                ("result/a.cpp", "#include <KOVDoaHandle/imaging/engmapresult.h>"),
                ("KOVAudio/a.cpp", "#include <KOVDoaHandle/diagnostics/kovblas.h>"),
                ("runtime/a.cpp", "#include <KOVDoaHandle/foundation/b.h>"),
                ("foundation/a.cpp", "#include <KOVDoaHandle/foundation/engine/b.h>"),
                ("foundation/engine/a.cpp", "#include <cmath>"),
                ("runtime/a.cpp", "#include <QtCore/QThread>")]:
            self.assert_fine("KOVDoaHandle/" + path, line)

    def test_finds_arrows_that_lead_up_or_across(self):
        for path, line in [
                ("imaging/a.cpp", "#include <KOVDoaHandle/api/b.h>"),
                ("imaging/a.cpp", "#include <KOVDoaHandle/diagnostics/kovprpdprocess.h>"),
                ("imaging/a.h", "#  include <KOVDoaHandle/result/b.h>"),
                ("result/a.cpp", "#include <KOVDoaHandle/imaging/kovmapcolor.h>"),
                ("result/a.cpp", "#include <KOVDoaHandle/diagnostics/kovblas.h>"),
                ("diagnostics/a.cpp", "#include <KOVDoaHandle/KOVAudio/b.h>"),
                ("runtime/a.cpp", "#include <KOVDoaHandle/imaging/b.h>"),
                ("foundation/a.cpp", "#include <KOVDoaHandle/runtime/b.h>"),
                ("foundation/engine/a.cpp", "#include <KOVDoaHandle/foundation/b.h>"),
                ("imaging/a.cpp", "#include <KOVDoaHandle/KOVDoaHandle.h>"),
                ("elsewhere/a.cpp", "#include <KOVDoaHandle/foundation/b.h>")]:
            self.assert_breach("KOVDoaHandle/" + path, line)

    def test_finds_frameworks_in_the_engine(self):
        for header in ["QtCore/QString", "QString", "opencv2/core.hpp"]:
            self.assert_breach("KOVDoaHandle/foundation/engine/a.cpp", f"#include <{header}>")

    def test_finds_programs_and_tests_in_the_library(self):
        for header in ["tools/a.h", "tests/support/bits.h", "bench/a.h"]:
            self.assert_breach("KOVDoaHandle/api/a.cpp", f'#include "{header}"')

    def test_finds_headers_named_by_less_than_their_whole_path(self):
        for header in ['"b.h"', '"../imaging/b.h"', '"KOVDoaHandle/imaging/b.h"']:
            self.assert_breach("KOVDoaHandle/imaging/a.cpp", f"#include {header}")

    def test_accepts_only_plain_exports_in_the_umbrella(self):
        self.assert_fine("KOVDoaHandle/KOVDoaHandle.h", "#include <KOVDoaHandle/api/a.h>")
        self.assert_breach("KOVDoaHandle/KOVDoaHandle.h", "#include <KOVDoaHandle/imaging/a.h>")

    def test_finds_private_headers_in_programs(self):
        self.assert_breach("tools/a.cpp", "#include <KOVDoaHandle/imaging/palettes_p.h>")
        self.assert_breach("examples/a.c", "#include <KOVDoaHandle/imaging/palettes_p.h>")
        self.assert_fine("tools/a.cpp", "#include <KOVDoaHandle/imaging/engmapresult.h>")

    def test_lets_one_file_ask_for_windows(self):
        for line in ["#ifdef _WIN32", "#if defined(_WIN32)", "#  ifndef WIN32"]:
            self.assert_breach("KOVDoaHandle/result/kovmemorymap.cpp", line)
        self.assert_fine(source_rules.PLATFORM_FILE, "#ifdef _WIN32")

    def test_finds_what_prints_or_ends_the_process(self):
        for line in ['std::printf("x");', 'printf ("x");', "std::cerr << 1;", "exit(1);", "std::abort();", "::exit(1);",
                     "std::terminate();", "assert(x);", "fwrite(x, 1, 1, stdout);", 'qFatal("x");', "Q_ASSERT(x);"]:
            self.assert_breach("KOVDoaHandle/imaging/a.cpp", line)

    def test_accepts_what_only_looks_loud(self):
        for line in ["// exit(1)", "/* printf */", 'log("abort()");', "thread->exit(0);", "QThread::exit(0);",
                     "int exitCode = 0;", "static_assert(true);", "std::snprintf(x, 1, y);", "loop.exit();"]:
            self.assert_fine("KOVDoaHandle/imaging/a.cpp", line)

    def test_names_the_line_behind_a_comment_of_several_lines(self):
        text = "/* one\n two */\nabort();\n"
        self.assertEqual(self.reasons({"KOVDoaHandle/imaging/a.cpp": text}), ["KOVDoaHandle/imaging/a.cpp:3"])


if __name__ == "__main__":
    unittest.main()
