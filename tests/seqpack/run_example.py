#!/usr/bin/python3
"""Runs an example program on its bundled option file and compares its output tables with expected
files byte for byte. The option file's output keys are redirected to a temporary directory; the
program runs from the repository root, where the option file's input paths are relative to.

    run_example.py <program> <repository root> <option file> <Key>=<expected file> ...
"""
import filecmp
import os
import subprocess
import sys
import tempfile


def main():
    prog, root, opt = sys.argv[1:4]
    expected = dict(arg.split('=', 1) for arg in sys.argv[4:])
    with tempfile.TemporaryDirectory() as tmp:
        outputs = {}
        lines = []
        for line in open(os.path.join(root, opt)):
            key = line.split('=', 1)[0].strip()
            if key in expected:
                outputs[key] = os.path.join(tmp, key)
                line = '%s = %s\n' % (key, outputs[key])
            lines.append(line)
        run_opt = os.path.join(tmp, 'run.opt')
        with open(run_opt, 'w') as f:
            f.writelines(lines)
        res = subprocess.run([prog, run_opt], cwd=root, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        if res.returncode != 0:
            sys.stderr.write(res.stderr.decode(errors='replace')[-2000:])
            print('%s exited with %d' % (prog, res.returncode))
            return 1
        bad = 0
        for key, want in expected.items():
            if key not in outputs:
                print('key %s not in %s' % (key, opt))
                bad += 1
            elif not filecmp.cmp(outputs[key], os.path.join(root, want), shallow=False):
                print('%s differs from %s' % (key, want))
                subprocess.run(['diff', os.path.join(root, want), outputs[key]])
                bad += 1
            else:
                print('%s matches %s' % (key, want))
        return 1 if bad else 0


if __name__ == '__main__':
    sys.exit(main())
