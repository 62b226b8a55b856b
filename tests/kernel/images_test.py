# SPDX-License-Identifier: GPL-2.0-or-later
"""What is said of a guest that cannot be made, which needs none."""

import os
import subprocess
import sys
import tempfile
import unittest

HERE = os.path.dirname(os.path.abspath(__file__))


class Images(unittest.TestCase):
    def test_where_apt_knows_no_kernel_that_is_said_and_is_no_failure(self):
        with tempfile.TemporaryDirectory() as folder:
            configuration = os.path.join(folder, "apt.conf")
            with open(configuration, "w", encoding="ascii") as file:
                file.write("".join(f'{key} "{value}";\n' for key, value in {
                    "Dir::Etc::sourcelist": "/dev/null", "Dir::Etc::sourceparts": "/dev/null",
                    "Dir::State::lists": folder, "Dir::State::status": "/dev/null", "Dir::Cache": folder}.items()))
            made = subprocess.run([sys.executable, "-B", os.path.join(HERE, "make_images.py"), "short"],
                                  env=dict(os.environ, APT_CONFIG=configuration, KELVANE_KERNEL_RIG=os.path.join(folder, "rig")),
                                  stdout=subprocess.PIPE, stderr=subprocess.STDOUT, encoding="utf-8", check=False)
        self.assertEqual(made.returncode, 77, made.stdout)
        self.assertIn("apt-cache depends", made.stdout)


if __name__ == "__main__":
    unittest.main()
