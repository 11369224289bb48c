"""What docs/cli.md shows happens."""

import os
import re
import subprocess
import unittest

from harness import ORMEL, SOURCE, HomeTest


class Manual(HomeTest):
    def shell(self, command):
        environment = {**os.environ, "PATH": os.path.dirname(ORMEL) + ":" + os.environ["PATH"]}
        return subprocess.run(command, shell=True, cwd=self.directory, env=environment, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, encoding="utf-8", timeout=200).stdout

    def test_its_examples(self):
        with open(os.path.join(SOURCE, "docs/cli.md"), encoding="utf-8") as file:
            manual = file.read()
        self.sql(re.search(r"^    (CREATE TABLE person .*)$", manual, re.MULTILINE).group(1))
        examples = "".join(re.findall(r"```console\n(.*?)```", manual, re.DOTALL))
        steps = examples.split("$ ")[1:]
        self.assertGreater(len(steps), 10)
        for step in steps:
            command, _, output = step.partition("\n")
            self.assertEqual(self.shell(command), output, command)


if __name__ == "__main__":
    unittest.main()
