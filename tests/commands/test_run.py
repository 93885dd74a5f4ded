"""./dev run: a page's own script, at work."""

from __future__ import annotations

import shutil
import unittest

import own_checkout

REQUEST = "<AccountQueryRq "
RESPONSE = "<AccountQueryRs "


class Run(unittest.TestCase):
    @classmethod
    def setUpClass(cls) -> None:
        own_checkout.needs("x64")
        own_checkout.make()

    def run_script(self, text: str, *options: str) -> str:
        """What it prints; it has to succeed."""
        script = own_checkout.add("pages/page.js", text)
        status, output = own_checkout.run("run", str(script), *options)
        self.assertEqual(status, 0, output)
        return output

    def test_the_script_works_with_the_sample_company(self) -> None:
        output = self.run_script('WScript.Echo(WScript.FullName); WScript.Echo(paylodge.GetAccounts("Bank"));')
        self.assertIn("\\build\\x64\\refhost\\run.exe\n", output)
        self.assertIn("<AccountName>Riverside Checking</AccountName>", output)

    def test_arch_x86_runs_a_32_bit_program(self) -> None:
        own_checkout.needs("x86")
        script = 'WScript.Echo(WScript.FullName); WScript.Echo(paylodge.GetAccounts("Bank"));'
        output = self.run_script(script, "--arch", "x86")
        self.assertIn("\\build\\x86\\refhost\\run.exe\n", output)
        self.assertIn("<AccountName>Riverside Checking</AccountName>", output)

    def test_traffic_prints_each_request_and_response(self) -> None:
        script = 'paylodge.GetAccounts("Bank"); WScript.Echo("between"); paylodge.GetAccounts("CreditCard");'
        output = self.run_script(script, "--traffic")
        first, second = output.split("between\n")
        for part in (first, second):
            self.assertEqual((1, 1), (part.count(REQUEST), part.count(RESPONSE)), output)
            self.assertLess(part.index(REQUEST), part.index(RESPONSE))
        self.assertIn("<AccountType>CreditCard</AccountType>", second)

    def test_without_traffic_only_the_script_prints(self) -> None:
        output = self.run_script('paylodge.GetAccounts("Bank"); WScript.Echo("done");')
        self.assertTrue(output.endswith("done\n"), output)
        self.assertNotIn("AccountQuery", output)

    def test_a_company_file_keeps_what_the_script_recorded(self) -> None:
        self.run_script("")
        company = own_checkout.FOLDER / "pages" / "own company.lhcompany"
        shutil.copy(own_checkout.FOLDER / "build" / "riverside.lhcompany", company)
        self.run_script('paylodge.CreateAccount("Second Till", "Bank", "");', "--company", str(company))
        names = 'WScript.Echo(paylodge.GetAccounts("Bank"));'
        self.assertIn("<AccountName>Second Till</AccountName>", self.run_script(names, "--company", str(company)))
        self.assertNotIn("Second Till", self.run_script(names))

    def test_without_a_company_file_each_run_starts_with_a_fresh_one(self) -> None:
        self.run_script('paylodge.CreateAccount("Second Till", "Bank", "");')
        self.assertNotIn("Second Till", self.run_script('WScript.Echo(paylodge.GetAccounts("Bank"));'))

    def test_names_are_those_of_the_folder_in_which_it_is_called(self) -> None:
        own_checkout.add("pages/here.js", "WScript.Echo(WScript.Arguments(0)); WScript.Quit(7);")
        status, output = own_checkout.run("run", "here.js", "--", "one word", folder=own_checkout.FOLDER / "pages")
        self.assertEqual(status, 7, output)
        self.assertTrue(output.endswith("one word\n"), output)


if __name__ == "__main__":
    unittest.main()
