#!/usr/bin/env python3
"""Checks the file layout rules that need no compiler.

    .ci/check_layout.py [--fix-guards] <build dir>

- header base names are unique across the tree;
- include guards are VESK_<path>_H (the header's path from the repository root, upper case, every
  character that is not a letter or digit as `_`; .tcc files end in _TCC);
- source lists in CMakeLists.txt files are sorted (case ignored) and written out (no GLOB);
- every library source has a <Name>Test.cpp under tests/ (base names compared without case) or an
  entry in .ci/untested.txt that says where it is tested or why it is not.
`--fix-guards` renames wrong include guards in place (VESK_ and the path) instead of reporting them.
The library sources come from `vesk_libraries.txt`, which configuring writes into the build directory.
Exit status 0 when all hold, 1 otherwise.
"""
import os
import re
import subprocess
import sys

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
ALLOW = os.path.join(".ci", "untested.txt")
TEST_ONLY_LIBS = {"test_support"}
# Headers whose guards are still to be renamed to the path style; an entry that already carries the
# right guard fails the check, so the list only shrinks.
GUARD_PENDING = set()


def tracked(*patterns):
    out = subprocess.run(["git", "ls-files", "--"] + list(patterns), cwd=ROOT, check=True,
                         capture_output=True, text=True).stdout
    return [p for p in out.splitlines() if os.path.exists(os.path.join(ROOT, p))]


def check_unique_headers(errors):
    seen = {}
    for path in tracked("*.h"):
        seen.setdefault(os.path.basename(path), []).append(path)
    for name, paths in sorted(seen.items()):
        if len(paths) > 1:
            errors.append("header base name %s is used by %s: rename all but one (header base names are "
                          "unique across the tree, so an include names one file)" % (name, ", ".join(paths)))


def expected_guard(path):
    return "VESK_" + re.sub(r"[^A-Z0-9]", "_", path.upper())


def check_guards(errors, fix=False):
    for path in tracked("*.h", "*.tcc"):
        want = expected_guard(path)
        with open(os.path.join(ROOT, path)) as f:
            text = f.read()
        m = re.search(r"^#ifndef (\w+)\n#define (\w+)$", text, re.M)
        if fix and m and m.group(1) == m.group(2) and m.group(1) != want:
            text = re.sub(r"\b%s\b" % m.group(1), want, text)
            with open(os.path.join(ROOT, path), "w") as f:
                f.write(text)
            print("layout: %s: guard %s renamed %s" % (path, m.group(1), want))
            continue
        if not m or m.group(1) != m.group(2):
            errors.append("%s: no include guard (#ifndef %s / #define %s at the top, #endif at the end)"
                          % (path, want, want))
        elif path in GUARD_PENDING:
            if m.group(1) == want:
                errors.append("%s has the path guard now: drop it from GUARD_PENDING in %s" % (path, sys.argv[0]))
        elif m.group(1) != want:
            errors.append("%s: include guard %s, expected %s (VESK_ and the path from the root; "
                          "--fix-guards renames them all)" % (path, m.group(1), want))


def check_source_lists(errors):
    for path in tracked("CMakeLists.txt", "*/CMakeLists.txt"):
        with open(os.path.join(ROOT, path)) as f:
            lines = f.read().splitlines()
        if any(re.match(r"\s*file\(GLOB", l) for l in lines):
            errors.append("%s: list the sources by name instead of file(GLOB ...)" % path)
        run = []
        for n, line in enumerate(lines + [""], 1):
            if re.fullmatch(r"\s+[\w/.+-]+\.(cpp|c)", line):
                run.append(line.strip())
                continue
            if run != sorted(run, key=str.lower):
                errors.append("%s:%d: source list not sorted; sort it by name, case ignored:\n    %s"
                              % (path, n - len(run), "\n    ".join(sorted(run, key=str.lower))))
            run = []


def check_tests(build, errors):
    with open(os.path.join(build, "vesk_libraries.txt")) as f:
        sources = []
        for line in f:
            words = line.split()
            if words and words[0] not in TEST_ONLY_LIBS:
                sources += words[1:]
    tests = {os.path.basename(p)[: -len("Test.cpp")].lower() for p in tracked("tests/*Test.cpp")}
    allowed = {}
    with open(os.path.join(ROOT, ALLOW)) as f:
        for n, line in enumerate(f, 1):
            if not line.strip() or line.startswith("#"):
                continue
            path, sep, reason = line.partition(":")
            if not sep or not reason.strip():
                errors.append("%s:%d: write <source path>: <where it is tested or why not>" % (ALLOW, n))
            allowed[path.strip()] = n
    for src in sorted(sources):
        has_test = os.path.splitext(os.path.basename(src))[0].lower() in tests
        if not has_test and src not in allowed:
            name = os.path.splitext(os.path.basename(src))[0]
            errors.append("%s has no test file: add tests/%s/%sTest.cpp to the library's test binary, or "
                          "list it in %s with the test that covers it" % (src, os.path.dirname(src),
                                                                         name[0].upper() + name[1:], ALLOW))
        elif has_test and src in allowed:
            errors.append("%s:%d: %s now has its own test file: drop the entry" % (ALLOW, allowed[src], src))
    for path, n in sorted(allowed.items()):
        if path not in sources:
            errors.append("%s:%d: %s is not a library source: drop the entry" % (ALLOW, n, path))


def main():
    fix = "--fix-guards" in sys.argv[1:]
    args = [a for a in sys.argv[1:] if a != "--fix-guards"]
    if len(args) != 1:
        sys.exit(__doc__)
    sys.argv[1:] = args
    errors = []
    check_unique_headers(errors)
    check_guards(errors, fix)
    check_source_lists(errors)
    check_tests(sys.argv[1], errors)
    for e in errors:
        print("layout: " + e, file=sys.stderr)
    if not errors:
        print("layout: header names, include guards, source lists and test files as the rules say")
    return 1 if errors else 0


if __name__ == "__main__":
    sys.exit(main())
