"""The program's command line: what is wrong is said in one sentence, with exit status 2."""

from __future__ import annotations

import subprocess
import unittest

from workbench_support import SCRATCH, Workbench, fresh_company, fresh_folder, needs, start_program, windows_path


class Program(unittest.TestCase):
    @classmethod
    def setUpClass(cls) -> None:
        needs("x64")

    def refusal(self, *words: str) -> str:
        """What the program says before it ends with status 2."""
        process = start_program(*words)
        try:
            output, errors = process.communicate(timeout=60)
        except subprocess.TimeoutExpired:
            process.kill()
            process.communicate()
            raise
        self.assertEqual((2, ""), (process.returncode, output), errors)
        self.assertEqual(1, errors.count("\n"), errors)
        self.assertTrue(errors.startswith("workbench: "), errors)
        return errors.removeprefix("workbench: ").strip()

    def test_a_wrong_option(self) -> None:
        self.assertEqual("there is no option '--prot'; --help lists them", self.refusal("--prot", "1"))
        self.assertEqual("--port takes a number from 0 to 65535, not '70000'", self.refusal("--port", "70000"))
        self.assertEqual("a company file is needed: --company FILE", self.refusal())

    def test_a_missing_company_file(self) -> None:
        missing = windows_path(SCRATCH / "missing.lhcompany")
        self.assertIn(missing, self.refusal("--company", missing, "--port", "0"))

    def test_a_file_that_is_no_company_file(self) -> None:
        file = fresh_folder("foreign") / "foreign.lhcompany"
        file.write_text("no database")
        self.assertIn("foreign.lhcompany", self.refusal("--company", windows_path(file), "--port", "0"))
        self.assertEqual("no database", file.read_text())

    def test_a_missing_page_folder(self) -> None:
        company = windows_path(fresh_company("no-page"))
        folder = windows_path(SCRATCH / "no-such-folder")
        self.assertEqual(f"there is no folder '{folder}'", self.refusal("--company", company, "--page", folder))
        self.assertIn("there is no folder", self.refusal("--company", company, "--page", company))

    def test_a_company_file_that_is_in_use_and_a_taken_port(self) -> None:
        company = fresh_company("in-use")
        workbench = Workbench(company)
        try:
            self.assertIn("riverside.lhcompany", self.refusal("--company", windows_path(company), "--port", "0"))
            other = windows_path(fresh_company("in-use-other"))
            self.assertEqual(f"port {workbench.port} is taken: end the program that has it, or choose another with --port",
                             self.refusal("--company", other, "--port", str(workbench.port)))
            self.assertEqual(200, workbench.get("/workbench/empty").status)
        finally:
            self.assertEqual(0, workbench.stop())

    def test_a_port_is_free_again_at_once(self) -> None:
        company = fresh_company("again")
        first = Workbench(company)
        self.assertEqual(200, first.get("/workbench/empty").status)
        port = first.port
        self.assertEqual(0, first.stop())
        second = Workbench(company, "--port", str(port))
        self.assertEqual(port, second.port)
        self.assertEqual(0, second.stop())

    def test_help(self) -> None:
        process = start_program("--help")
        output, errors = process.communicate(timeout=60)
        self.assertEqual((0, ""), (process.returncode, errors))
        self.assertIn("--company FILE", output)


if __name__ == "__main__":
    unittest.main()
