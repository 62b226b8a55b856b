# SPDX-License-Identifier: GPL-2.0-or-later
"""type_into.py EXPECTED KEYS... -- PROGRAM ARGUMENT...

Runs a program on a terminal of its own, as a user does: waits until the screen shows EXPECTED, then types. Each KEYS is
typed once the terminal has taken in the one before and the program has drawn something after it; \\r, \\x1b and the like are
understood. Ends as the program ends, with what it has drawn on standard error where it does not end well.
"""

import fcntl
import os
import pty
import select
import struct
import sys
import termios

LIMIT_SECONDS = 60
SCREEN = struct.pack("HHHH", 24, 80, 0, 0)


def start(program):
    process, terminal = pty.fork()
    if process == 0:
        os.environ["TERM"] = "xterm"
        os.execvp(program[0], program)
    fcntl.ioctl(terminal, termios.TIOCSWINSZ, SCREEN)
    return process, terminal


def read_more(terminal):
    """What the program draws next; empty once it has ended."""
    if not select.select([terminal], [], [], LIMIT_SECONDS)[0]:
        raise TimeoutError
    try:
        return os.read(terminal, 65536)
    except OSError:  # The other end has gone.
        return b""


def main(arguments):
    end = arguments.index("--")
    expected, *keys = arguments[:end]
    process, terminal = start(arguments[end + 1:])
    drawn = b""
    try:
        while expected.encode() not in drawn:
            drawn += (more := read_more(terminal))
            if not more:
                break
        for text in keys:
            os.write(terminal, text.encode().decode("unicode_escape").encode("latin-1"))
            drawn += read_more(terminal)
        while more := read_more(terminal):
            drawn += more
    except TimeoutError:
        sys.stderr.write(f"{arguments[end + 1]} does not go on after:\n{drawn!r}\n")
        os.kill(process, 9)
    status = os.waitstatus_to_exitcode(os.waitpid(process, 0)[1])
    if status != 0:
        sys.stderr.write(f"{drawn!r}\n")
    return status


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
