#!/usr/bin/env python3
"""Reads the sources and says where they break a rule of the house.

    source_rules.py ROOT     prints one line for each breach; exit status 1 when there is one

Rules:
  arrows    a folder of the library includes only what lies below it; the engine knows neither Qt nor OpenCV; the
            umbrella header includes only the plain exports; nothing in the library includes programs or tests; programs
            and examples include public headers only
  paths     the library's headers are included by their whole path in angle brackets
  platform  Windows is asked for in one file only
  silence   the library neither prints nor ends the process
"""

import os
import re
import sys

SUFFIXES = (".h", ".c", ".cpp")

# What each folder of the library may include besides itself.
ALLOWED = {
    "api": ["imaging", "result", "KOVAudio", "diagnostics", "runtime", "foundation", "foundation/engine"],
    "imaging": ["runtime", "foundation", "foundation/engine"],
    "result": ["runtime", "foundation", "foundation/engine"],
    "KOVAudio": ["runtime", "foundation", "foundation/engine"],
    "diagnostics": ["runtime", "foundation", "foundation/engine"],
    "runtime": ["foundation", "foundation/engine"],
    "foundation": ["foundation/engine"],
    "foundation/engine": [],
}
# Single headers that a folder may include from one beside it.
ALLOWED_HEADERS = {
    ("imaging", "diagnostics/kovblas.h"),
    ("result", "imaging/engmapresult.h"),
    ("KOVAudio", "diagnostics/kovblas.h"),
}
PLATFORM_FILE = "KOVDoaHandle/result/filemapping_win32.cpp"

INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]')
PLATFORM = re.compile(r"^\s*#\s*(if|ifdef|ifndef|elif)\b.*\b_?WIN32\b")
# Called, named or streamed into: what writes to the terminal or ends the process. A word before "::" or "." belongs to
# another function, as in QProcess::exit, except std.
LOUD = re.compile(r"(?<![\w.:>])(std::|::)?(printf|fprintf|vprintf|vfprintf|puts|fputs|putchar|putc|perror|cout|cerr|clog|"
                  r"exit|_exit|_Exit|quick_exit|abort|terminate|assert|raise|stdout|stderr|qFatal|qCFatal|"
                  r"Q_ASSERT|Q_ASSERT_X|Q_CHECK_PTR)(?!\w)")
COMMENTS_AND_TEXTS = re.compile(r'//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\\n])*"', re.DOTALL)


def sources(root, folder):
    """Paths of the sources below root/folder, relative to root, in order."""
    found = []
    for directory, _, names in os.walk(os.path.join(root, folder)):
        found += [os.path.relpath(os.path.join(directory, name), root) for name in names if name.endswith(SUFFIXES)]
    return sorted(path.replace(os.sep, "/") for path in found)


def folder_of(path):
    """Folder of a file of the library, relative to KOVDoaHandle/; "" for the umbrella header."""
    return os.path.dirname(path)[len("KOVDoaHandle/"):] if path.count("/") > 1 else ""


def arrow_breach(path, brackets, target):
    """Why a file of the library may not include `target`; None when it may."""
    here = folder_of(path)
    if target.split("/")[0] in ("tools", "tests", "bench", "examples", "fuzz"):
        return "the library includes nothing from there"
    if here == "foundation/engine" and re.match(r"(Qt|Q[A-Z]|opencv)", target):
        return "the engine knows neither Qt nor OpenCV"
    if not target.startswith("KOVDoaHandle/"):
        own = brackets == '"' and not re.fullmatch(r"moc_\w+\.cpp|\w+\.moc", target)
        return "the library's headers are included by their whole path in angle brackets" if own else None
    if brackets == '"':
        return "the library's headers are included by their whole path in angle brackets"
    there, inside = folder_of(target), target[len("KOVDoaHandle/"):]
    if here == "":
        return None if there == "api" else "the umbrella includes only the plain exports"
    if here not in ALLOWED:
        return f"folder {here} is not on the list of folders"
    if there == here or there in ALLOWED[here] or (here, inside) in ALLOWED_HEADERS:
        return None
    return f"no arrow leads from {here} to {inside}"


def breaches(root):
    """Every breach below root as (path, line number, reason)."""
    found = []
    for path in sources(root, "KOVDoaHandle"):
        with open(os.path.join(root, path), encoding="utf-8") as file:
            text = file.read()
        for number, line in enumerate(text.splitlines(), 1):
            include = INCLUDE.match(line)
            reason = arrow_breach(path, *include.groups()) if include else None
            if reason:
                found.append((path, number, f"{include.group(2)}: {reason}"))
            if PLATFORM.match(line) and path != PLATFORM_FILE:
                found.append((path, number, f"Windows is asked for in {PLATFORM_FILE} only"))
        code = COMMENTS_AND_TEXTS.sub(lambda match: "\n" * match.group().count("\n"), text)
        for number, line in enumerate(code.splitlines(), 1):
            loud = None if line.lstrip().startswith("#") else LOUD.search(line)
            if loud:
                found.append((path, number, f"{loud.group()}: the library neither prints nor ends the process"))
    for path in sources(root, "tools") + sources(root, "examples"):
        with open(os.path.join(root, path), encoding="utf-8") as file:
            for number, line in enumerate(file, 1):
                include = INCLUDE.match(line)
                if include and include.group(2).startswith("KOVDoaHandle/") and include.group(2).endswith("_p.h"):
                    found.append((path, number, f"{include.group(2)}: programs use public headers only"))
    return found


def main():
    if len(sys.argv) != 2 or not os.path.isdir(os.path.join(sys.argv[1], "KOVDoaHandle")):
        sys.exit("usage: source_rules.py ROOT (the folder that holds KOVDoaHandle/)")
    found = breaches(sys.argv[1])
    for path, number, reason in found:
        print(f"{path}:{number}: {reason}")
    print(f"{len(sources(sys.argv[1], 'KOVDoaHandle'))} sources of the library read, {len(found)} breaches")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
