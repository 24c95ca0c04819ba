# SPDX-License-Identifier: MIT
"""A program that makes files writes them, and sees those that it wouldn't write."""
import contextlib
import io
import pathlib
import tempfile
import unittest
import unittest.mock

from generated_files import write_or_check


class GeneratedFiles(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.files = {pathlib.Path(folder.name, "a.txt"): "first\n", pathlib.Path(folder.name, "b.ico"): b"\x00\xff"}

    def run_program(self, *arguments):
        """The exit code, and what it says on standard error."""
        said = io.StringIO()
        with unittest.mock.patch("sys.argv", ["folder/make_it.py", *arguments]), contextlib.redirect_stderr(said):
            return write_or_check(lambda: self.files), said.getvalue()

    def test_written_files_pass_the_check(self):
        self.assertEqual(self.run_program(), (0, ""))
        for path, content in self.files.items():
            self.assertEqual(path.read_bytes(), content.encode() if isinstance(content, str) else content)
        self.assertEqual(self.run_program("--check"), (0, ""))

    def test_check_sees_and_keeps_a_changed_and_a_missing_file(self):
        self.run_program()
        first, second = self.files
        first.write_bytes(b"first\r\n")
        self.assertEqual(self.run_program("--check"), (1, "a.txt isn't what make_it.py makes\n"))
        self.assertEqual(first.read_bytes(), b"first\r\n")
        second.unlink()
        self.assertEqual(self.run_program("--check")[1].count("make_it.py"), 2)
        self.assertFalse(second.exists())

    def test_other_arguments_write_nothing(self):
        for arguments in (["--chekc"], ["--check", "--check"]):
            with self.assertRaisesRegex(SystemExit, "A program that makes files"):
                self.run_program(*arguments)
        self.assertFalse(any(path.exists() for path in self.files))


if __name__ == "__main__":
    unittest.main()
