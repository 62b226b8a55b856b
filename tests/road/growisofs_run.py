# SPDX-License-Identifier: GPL-2.0-or-later
"""growisofs as the application runs it, for DVDs that the application itself refuses or prepares differently."""

import os

from road import LIBEXEC, run


def run_growisofs(environment, disc, option, tree, hide_list):
    """Adds the tree as a session: with "-Z" the first one, with "-M" a further one. Gives the lines of standard error; an
    error is a line that begins with ":-("."""
    environment = dict(environment, KELVANEFS_EMULATED_DRIVES=f"kv0={disc}", MKISOFS=os.path.join(LIBEXEC, "mkisofs"))
    return run(os.path.join(LIBEXEC, "growisofs"), "-overburn", option, "/dev/rkv0", "-hide-list", hide_list,
               "-hide-joliet-list", hide_list, "-joliet-long", "-D", "-J", "-r", "-input-charset", "utf-8",
               "-use-the-force-luke=tty", "-V", "SAMPLE", tree, check=False, env=environment).stderr.splitlines()
