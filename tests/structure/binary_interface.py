#!/usr/bin/env python3
"""Compares what crosses the boundary of the built libraries - exported functions, their parameters, the layout of every
type that a public header defines - with the description kept here.

    binary_interface.py check LIBRARY DESCRIPTION    fails when they differ, and says in what
    binary_interface.py accept [FOLDER]              describes the libraries in FOLDER (build/release/lib) anew, their
                                                     lists of exports included; for a commit of its own that says what
                                                     changed and why

What only the sources know may change freely. Needs abidw and abidiff of the abigail-tools, and libraries with debug
information.
"""

import pathlib
import subprocess
import sys

import library_symbols

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parent.parent
LIBRARIES = ("KOVDoa5", "KOVDoaHandle")


def describe(library, headers):
    """The description of a library as text, without anything of the machine it was built on. Types that no file in the
    folder of headers defines are private."""
    options = ["--drop-private-types", "--exported-interfaces-only", "--no-show-locs", "--no-corpus-path",
               "--no-comp-dir-path", "--no-elf-needed", "--type-id-style", "hash", "--headers-dir", str(headers)]
    return subprocess.run(["abidw", *options, str(library)], check=True, capture_output=True, text=True).stdout


def differences(library, description):
    """What differs, in words; empty when nothing does. The description holds private types by name only, and a type
    that is known by name on one side agrees with any of that name."""
    result = subprocess.run(["abidiff", "--exported-interfaces-only", "--no-show-locs", str(description), str(library)],
                            capture_output=True, text=True, check=False)
    if result.returncode == 0:
        return ""
    # The two lowest bits: the tool could not do its work.
    return (result.stdout + result.stderr).strip() or f"abidiff ended with {result.returncode}"


def accept(folder):
    for name in LIBRARIES:
        library = folder / f"lib{name}.so"
        (HERE / f"interface_{name}.abi").write_text(describe(library, ROOT / "KOVDoaHandle"), encoding="utf-8")
        library_symbols.refresh(library, HERE / f"exports_{name}.txt")


def main():
    if len(sys.argv) == 4 and sys.argv[1] == "check":
        found = differences(*sys.argv[2:])
        print(found or "the binary interface is as described")
        return 1 if found else 0
    if len(sys.argv) in (2, 3) and sys.argv[1] == "accept":
        accept(pathlib.Path(sys.argv[2]) if len(sys.argv) == 3 else ROOT / "build" / "release" / "lib")
        return 0
    sys.exit(__doc__)


if __name__ == "__main__":
    sys.exit(main())
