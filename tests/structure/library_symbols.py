#!/usr/bin/env python3
"""Looks at the dynamic symbols of a built library.

    library_symbols.py silence LIBRARY           fails when the library could print, or end the process
    library_symbols.py exports LIBRARY LIST      fails when its exports are not exactly those in the file LIST

`binary_interface.py accept` writes the lists. Needs nm and c++filt of the binutils.
"""

import difflib
import re
import subprocess
import sys

# Imported functions and objects that write to the terminal or end the process. Two are left out on purpose:
#   std::terminate   GCC puts a call to it wherever a throwing function is inlined into one that is noexcept, a
#                    destructor for instance: an exception must not leave it, and nobody has decided to end anything.
#                    That no source calls it is checked by source_rules.py.
#   write, fwrite    how every file is written, too; they print only through stdout or stderr, which are on the list,
#                    or a number that a source would have to spell out.
LOUD = {
    "printf", "vprintf", "fprintf", "vfprintf", "dprintf", "vdprintf", "puts", "fputs", "putchar", "putc", "fputc",
    "perror", "psignal", "__printf_chk", "__vprintf_chk", "__fprintf_chk", "__vfprintf_chk", "__dprintf_chk", "stdout",
    "stderr", "std::cout", "std::cerr", "std::clog", "std::wcout", "std::wcerr", "std::wclog", "exit", "_exit", "_Exit",
    "quick_exit", "abort", "raise", "kill", "__assert_fail", "__assert", "__chk_fail", "error", "err", "errx", "warn",
    "warnx", "qt_assert", "qt_assert_x", "qt_check_pointer", "qTerminate", "QMessageLogger::fatal",
    "std::ios_base::Init::Init", "std::__glibcxx_assert_fail", "std::__throw_bad_exception", "cv::error",
}


# Mangled names of the standard library's namespaces and of the allocation functions: its templates, inline functions
# and their tables.
FROM_STANDARD_LIBRARY = re.compile(r"_Z(T[ISTV]|GV|Z)*(N?K?(St|S[absiod]|9__gnu_cxx)|n[wa]|d[la])")


def symbols(library, choice):
    """Names of the library's dynamic symbols as they stand in it, without versions."""
    output = subprocess.run(["nm", "-D", choice, library], check=True, capture_output=True, text=True).stdout
    return [line.split()[-1].split("@")[0] for line in output.splitlines()]


def demangled(names):
    if not names:
        return []
    return subprocess.run(["c++filt"], input="\n".join(names), check=True, capture_output=True,
                          text=True).stdout.splitlines()


def loud_imports(names):
    """Those of the imported names that are on the list; an overload's parameters do not matter."""
    return sorted({name for name in names if name.split("(")[0].split("[")[0] in LOUD})


def own_exports(names):
    """What the library offers its hosts: not the marks of the linker, nor templates and inline functions of the standard
    library of which every user has its own copy."""
    marks = ("_init", "_fini", "_edata", "_end", "__bss_start")
    return sorted(set(demangled([name for name in names if name not in marks and not FROM_STANDARD_LIBRARY.match(name)])))


def refresh(library, path):
    with open(path, "w", encoding="utf-8") as file:
        file.write("".join(name + "\n" for name in own_exports(symbols(library, "--defined-only"))))


def main():
    if len(sys.argv) == 3 and sys.argv[1] == "silence":
        names = demangled(symbols(sys.argv[2], "--undefined-only"))
        if not names:
            print("no imported symbol was found at all; is this a shared library?")
            return 1
        loud = loud_imports(names)
        for name in loud:
            print(f"imports {name}: the library neither prints nor ends the process")
        print(f"{len(names)} imported symbols looked at, {len(loud)} of them loud")
        return 1 if loud else 0
    if len(sys.argv) == 4 and sys.argv[1] == "exports":
        found = own_exports(symbols(sys.argv[2], "--defined-only"))
        with open(sys.argv[3], encoding="utf-8") as file:
            listed = file.read().splitlines()
        changes = list(difflib.unified_diff(listed, found, "listed", "exported", lineterm="", n=0))
        print("\n".join(changes) or f"{len(found)} exports, as listed")
        return 1 if changes else 0
    sys.exit(__doc__)


if __name__ == "__main__":
    sys.exit(main())
