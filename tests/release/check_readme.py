#!/usr/bin/env python3
"""Runs the README's console examples and compares their output.

Every fenced block marked `console` is a session: lines beginning with "$ "
are commands, run by sh in one scratch directory (shared by all blocks, in
order) with the built tool first on PATH; the lines up to the next command
are what the command prints (standard output and standard error together).
In the expected text "…" stands for any text within a line, and a line that
is only "…" for any number of lines: the README uses it where the output
differs between machines (addresses, host names, the current time).

  check_readme.py README.md TOOL_DIR SCRATCH_DIR
"""
import os
import re
import shutil
import subprocess
import sys


def sessions(markdown):
    """Yields (line number, command, expected lines) for each command."""
    block = None
    for number, line in enumerate(markdown.split("\n"), 1):
        if block is None:
            if line.strip() == "```console":
                block = []
            continue
        if line.strip() == "```":
            yield from commands(block)
            block = None
            continue
        block.append((number, line))
    if block is not None:
        raise SystemExit("README.md: a console block is not closed")


def commands(block):
    current = None
    for number, line in block:
        if line.startswith("$ "):
            if current:
                yield current
            current = (number, line[2:], [])
        elif current is None:
            raise SystemExit(f"README.md:{number}: output before the first command")
        else:
            current[2].append(line)
    if current:
        yield current


def pattern(expected):
    """A regular expression for the expected lines."""
    parts = []
    for line in expected:
        if line == "…":
            parts.append(r"(?:[^\n]*\n)*?")
        else:
            parts.append(".*".join(map(re.escape, line.split("…"))) + r"\n")
    return re.compile("".join(parts), re.DOTALL)


def main():
    readme, tool_dir, scratch = sys.argv[1:4]
    with open(readme, encoding="utf-8") as f:
        markdown = f.read()
    shutil.rmtree(scratch, ignore_errors=True)
    os.makedirs(scratch)
    # A fixed environment: no locale, UTC, only the tool and the system.
    env = {
        "PATH": os.path.abspath(tool_dir) + os.pathsep + "/usr/bin:/bin",
        "HOME": scratch,
        "TZ": "UTC",
        "TMPDIR": scratch,
    }
    failures = 0
    count = 0
    for number, command, expected in sessions(markdown):
        count += 1
        run = subprocess.run(["sh", "-c", command], cwd=scratch, env=env,
                             stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        output = run.stdout.decode("utf-8", errors="replace")
        if not pattern(expected).fullmatch(output):
            failures += 1
            print(f"README.md:{number}: $ {command}\n--- README\n" + "\n".join(expected) +
                  f"\n--- actual (exit status {run.returncode})\n{output}", file=sys.stderr)
    if count == 0:
        raise SystemExit("README.md has no console examples")
    print(f"{count} README commands run, {failures} with other output")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
