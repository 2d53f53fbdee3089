#!/usr/bin/env python3
"""What the option --com is told where no component is registered. That it does what it should where one is,
two_systems.py sees.

usage: registered_component_test.py PROGRAM ROOT
"""
import unittest

from program_case import ProgramCase


class RegisteredComponent(ProgramCase):
    def refused(self, *arguments):
        code, out, err = self.run_program("--com", *arguments, "browse", "thunderbird://")
        self.assertEqual((code, out), (2, ""))
        return err

    def test_there_is_none_but_on_windows(self):
        self.assertEqual(self.refused(), "vorlent-mozilla: --com is for Windows, where components are registered\n")
        self.assertEqual(self.refused("--rules", "windows"), self.refused())
        self.assertIn("--com ist für Windows", self.refused("--language", "de"))

    def test_it_works_by_the_rules_of_windows_alone(self):
        self.assertEqual(self.refused("--rules", "today"),
                         "vorlent-mozilla: --com works by the rules of Windows, which --rules today isn't\n")


if __name__ == "__main__":
    unittest.main()
