#!/usr/bin/env python3
"""Checks the library link graph of a configured build against the drawing of the layout rules.

    .ci/check_link_graph.py <build dir>

Runs `cmake --graphviz` in the build directory and compares every edge between the project's
libraries (and the `vesk` executable) with DRAWN below. A drawn library that is not built yet is
tolerated, with its edges; a built library missing from the drawing, an edge not drawn, or a drawn
edge between two built libraries that is missing fails. Boost's headers may go to one target only.
Exit status 0 when the graph matches, 1 otherwise.
"""
import os
import re
import subprocess
import sys

# Each edge is the only way one folder may use another (direct edges; the rest is transitive).
DRAWN = {
    "stdalg_ds": {"base"},
    "stdalg_alg": {"stdalg_ds"},
    "model": {"stdalg_ds"},
    "vesk_core": {"model"},
    "seqpack": {"model"},
    "bic": {"vesk_core", "seqpack"},
    "seqpack_bicsearch": {"bic"},
    "hmm": {"stdalg_ds"},
    "ebn": {"stdalg_ds"},
    "vesk": {"vesk_core"},
    "base": set(),
}
# Libraries that serve the tests only; they may use any library.
TEST_ONLY = {"test_support"}

NODE = re.compile(r'^\s*"(node\d+)" \[ label = "([^"]+)", shape = (\w+) \];')
EDGE = re.compile(r'^\s*"(node\d+)" -> "(node\d+)"')


def read_graph(build):
    # One graph file, no per-target files, header checks left out.
    with open(os.path.join(build, "CMakeGraphVizOptions.cmake"), "w") as f:
        f.write('set(GRAPHVIZ_GENERATE_PER_TARGET FALSE)\nset(GRAPHVIZ_GENERATE_DEPENDERS FALSE)\n'
                'set(GRAPHVIZ_IGNORE_TARGETS "^hdr_")\n')
    dot = os.path.join(build, "link_graph.dot")
    subprocess.run(["cmake", "--graphviz=" + dot, "."], cwd=build, check=True, stdout=subprocess.DEVNULL)
    names, shapes, edges = {}, {}, set()
    with open(dot) as f:
        for line in f:
            m = NODE.match(line)
            if m:
                names[m.group(1)] = m.group(2)
                shapes[m.group(2)] = m.group(3)
                continue
            m = EDGE.match(line)
            if m and m.group(1) in names and m.group(2) in names:
                edges.add((names[m.group(1)], names[m.group(2)]))
    return shapes, edges


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    shapes, edges = read_graph(os.path.abspath(sys.argv[1]))
    # Imported libraries (GTest::gtest, ...) carry a namespace; the project's own do not.
    libs = {n for n, s in shapes.items() if s == "octagon" and "::" not in n} - TEST_ONLY
    present = libs | ({"vesk"} & set(shapes))
    errors = []
    for lib in sorted(libs - set(DRAWN)):
        errors.append("library %s is not in the drawing of design.md: add it there (and to DRAWN in %s) "
                      "with the one library it builds on" % (lib, sys.argv[0]))
    for a, b in sorted(edges):
        if a in present and b in libs and b not in DRAWN.get(a, set()):
            errors.append("%s links %s, an edge design.md does not draw: use what the drawing allows "
                          "(%s -> %s) and reach the rest through it, or change the drawing first"
                          % (a, b, a, ", ".join(sorted(DRAWN.get(a, set()))) or "nothing"))
    for a in sorted(present):
        for b in sorted(DRAWN.get(a, set()) & present):
            if (a, b) not in edges:
                errors.append("%s does not link %s although design.md draws %s -> %s: add "
                              "target_link_libraries(%s PUBLIC %s)" % (a, b, a, b, a, b))
    boost = sorted(a for a, b in edges if b == "Boost::headers")
    if len(boost) > 1:
        errors.append("Boost::headers is linked by %s: link it only to the one target whose sources "
                      "include Boost" % ", ".join(boost))
    for e in errors:
        print("link graph: " + e, file=sys.stderr)
    if not errors:
        print("link graph: %d libraries, edges as drawn" % len(present))
    return 1 if errors else 0


if __name__ == "__main__":
    sys.exit(main())
