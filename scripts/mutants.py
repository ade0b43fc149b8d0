#!/usr/bin/env python3
"""Mutation check: plants one fault at a time in the source tree and runs a test command.

Usage (from the project root):
    scripts/mutants.py MUTANTS_FILE [--timeout S] -- TEST_COMMAND...

MUTANTS_FILE holds one mutant per block, blocks separated by a line '---':
    file: convert/common/fixed_point.cpp
    what: unsigned fields keep a negative value's bit pattern
    from: return value < 0 ? 0u - pattern : pattern;
    to:   return pattern;
'from' must occur exactly once in the file (otherwise the mutant is reported as stale and
skipped). Lines starting with '#' are comments.

For each mutant the file is changed, TEST_COMMAND runs (through bash -c when it is one
argument), and the file is restored, whatever happens. A mutant is killed when the command
exits non-zero or times out, and survives when it exits 0. Prints one line per mutant and
ends with "mutants: K killed, S survived, N stale". Exit status 0 when none survived.
Example test command: 'cmake --build build && ctest --test-dir build -j2 --timeout 120'.
"""
import os
import subprocess
import sys
import time


def parse(path):
    mutants, cur = [], {}
    for raw in open(path, encoding="utf-8"):
        line = raw.rstrip("\n")
        if line.startswith("#"):
            continue
        if line.strip() == "---":
            if cur:
                mutants.append(cur)
            cur = {}
            continue
        for key in ("file", "what", "from", "to"):
            if line.startswith(key + ":"):
                cur[key] = line[len(key) + 1:].strip() if key in ("file", "what") else line[len(key) + 1:].lstrip()
    if cur:
        mutants.append(cur)
    for m in mutants:
        for key in ("file", "from", "to"):
            if key not in m:
                sys.exit(f"mutants: a block lacks '{key}:' ({m})")
        m.setdefault("what", m["from"])
    return mutants


def main():
    args = sys.argv[1:]
    if "--" not in args or not args[0] or args[0] == "--":
        sys.exit(__doc__)
    split = args.index("--")
    opts, command = args[:split], args[split + 1:]
    timeout = 900
    if "--timeout" in opts:
        timeout = int(opts[opts.index("--timeout") + 1])
    mutants = parse(opts[0])
    if len(command) == 1:
        command = ["bash", "-c", command[0]]
    killed = survived = stale = 0
    for n, m in enumerate(mutants, 1):
        path = m["file"]
        try:
            original = open(path, encoding="utf-8").read()
        except OSError as e:
            print(f"{n:3} stale     {path}: {e.strerror}  [{m['what']}]", flush=True)
            stale += 1
            continue
        if original.count(m["from"]) != 1:
            print(f"{n:3} stale     {path}: text found {original.count(m['from'])} times  [{m['what']}]", flush=True)
            stale += 1
            continue
        t0 = time.time()
        try:
            with open(path, "w", encoding="utf-8") as f:
                f.write(original.replace(m["from"], m["to"]))
            try:
                r = subprocess.run(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, timeout=timeout)
                rc = r.returncode
            except subprocess.TimeoutExpired:
                rc = "timeout"
        finally:
            with open(path, "w", encoding="utf-8") as f:
                f.write(original)
            os.utime(path)
        state = "survived" if rc == 0 else "killed"
        if rc == 0:
            survived += 1
        else:
            killed += 1
        print(f"{n:3} {state:9} {path}  [{m['what']}]  ({time.time() - t0:.0f} s)", flush=True)
    print(f"mutants: {killed} killed, {survived} survived, {stale} stale")
    sys.exit(0 if survived == 0 else 1)


if __name__ == "__main__":
    main()
