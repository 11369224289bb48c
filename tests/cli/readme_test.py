"""The documents show the programs that are tested, and name what there is."""

import glob
import os
import re
import unittest

from harness import SOURCE


def read(name):
    with open(os.path.join(SOURCE, name), encoding="utf-8") as file:
        return file.read()


class Readme(unittest.TestCase):
    def test_shows_the_example_as_it_is(self):
        self.assertIn("```c\n" + read("examples/record.c") + "```\n", read("README.md"))

    def test_the_guide_shows_pieces_of_the_examples(self):
        examples = "".join(read(os.path.relpath(path, SOURCE)) for path in glob.glob(SOURCE + "/examples/*.c"))
        pieces = re.findall(r"```c\n(.*?)```", read("docs/guide.md"), re.DOTALL)
        self.assertGreater(len(pieces), 10)
        for piece in pieces:
            self.assertIn(piece, examples)

    def test_links_lead_somewhere(self):
        for name in ["README.md"] + [os.path.relpath(path, SOURCE) for path in glob.glob(SOURCE + "/docs/*.md")]:
            for target in re.findall(r"\]\(([^)#:]+)(?:#[^)]*)?\)", read(name)):
                path = os.path.join(SOURCE, os.path.dirname(name), target)
                self.assertTrue(os.path.exists(path), f"{name} links to {target}")

    def test_documents_name_functions_that_are_declared(self):
        declared = "".join(read(os.path.relpath(path, SOURCE))
                           for path in glob.glob(SOURCE + "/include/**/*.h", recursive=True)) + read("src/dao/qdc.h")
        for name in ["README.md", "docs/guide.md", "docs/records.md", "docs/limits.md", "docs/cli.md"]:
            for function in set(re.findall(r"\b(?:ORMEL_|KPL_|db|qdc_)[A-Z][A-Za-z0-9]+\b", read(name))):
                self.assertRegex(declared, rf"\b{function}\b", f"{name} names {function}")


if __name__ == "__main__":
    unittest.main()
